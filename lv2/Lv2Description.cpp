#include "lv2/Lv2Description.h"

#include <charconv>
#include <cstdint>

#include "lv2/Lv2Ports.h"

namespace tw::lv2 {

namespace {

// The shortest text that reads back as the same float, whatever the locale.
std::string number(float value) {
    char buffer[32];
    auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    std::string text(buffer, result.ptr);
    if (text.find_first_of(".e") == std::string::npos) text += ".0";
    return text;
}

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + '"';
}

std::string base64(const std::string& bytes) {
    static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    std::size_t i = 0;
    for (; i + 2 < bytes.size(); i += 3) {
        const std::uint32_t n = (std::uint8_t(bytes[i]) << 16) | (std::uint8_t(bytes[i + 1]) << 8) | std::uint8_t(bytes[i + 2]);
        out += {digits[n >> 18], digits[(n >> 12) & 63], digits[(n >> 6) & 63], digits[n & 63]};
    }
    if (i + 1 == bytes.size()) {
        const std::uint32_t n = std::uint8_t(bytes[i]) << 16;
        out += {digits[n >> 18], digits[(n >> 12) & 63], '=', '='};
    } else if (i + 2 == bytes.size()) {
        const std::uint32_t n = (std::uint8_t(bytes[i]) << 16) | (std::uint8_t(bytes[i + 1]) << 8);
        out += {digits[n >> 18], digits[(n >> 12) & 63], digits[(n >> 6) & 63], '='};
    }
    return out;
}

std::string presetUri(const Product& product, int program) {
    return std::string(product.pluginUri) + "#preset-" + (program < 9 ? "0" : "") + std::to_string(program + 1);
}

const char* prefixes =
    "@prefix atom: <http://lv2plug.in/ns/ext/atom#> .\n"
    "@prefix doap: <http://usefulinc.com/ns/doap#> .\n"
    "@prefix foaf: <http://xmlns.com/foaf/0.1/> .\n"
    "@prefix lv2: <http://lv2plug.in/ns/lv2core#> .\n"
    "@prefix midi: <http://lv2plug.in/ns/ext/midi#> .\n"
    "@prefix pset: <http://lv2plug.in/ns/ext/presets#> .\n"
    "@prefix rdfs: <http://www.w3.org/2000/01/rdf-schema#> .\n"
    "@prefix state: <http://lv2plug.in/ns/ext/state#> .\n"
    "@prefix time: <http://lv2plug.in/ns/ext/time#> .\n"
    "@prefix ui: <http://lv2plug.in/ns/extensions/ui#> .\n"
    "@prefix units: <http://lv2plug.in/ns/extensions/units#> .\n"
    "@prefix urid: <http://lv2plug.in/ns/ext/urid#> .\n"
    "@prefix xsd: <http://www.w3.org/2001/XMLSchema#> .\n\n";

// What a linear row's unit is in LV2's units.
std::string unitOf(const ParameterSpec& row) {
    if (row.unit == "degrees") return "units:degree";
    if (row.displayMin == -100.0f || row.displayMax == 100.0f) return "units:pc";
    return "";
}

std::string controlPort(const ParameterSpec& row, std::uint32_t index, float defaultValue) {
    const PortRange range = portRange(row);
    std::string s = "    [\n        a lv2:InputPort, lv2:ControlPort ;\n";
    s += "        lv2:index " + std::to_string(index) + " ;\n";
    s += "        lv2:symbol " + quoted(row.name) + " ;\n";
    s += "        lv2:name " + quoted(row.label) + " ;\n";
    s += "        lv2:default " + number(exactPort(row, defaultValue)) + " ;\n";
    s += "        lv2:minimum " + number(range.minimum) + " ;\n";
    s += "        lv2:maximum " + number(range.maximum);
    switch (range.kind) {
        case PortKind::toggle:
            s += " ;\n        lv2:portProperty lv2:toggled, lv2:integer";
            break;
        case PortKind::selector:
            s += " ;\n        lv2:portProperty lv2:integer, lv2:enumeration";
            for (std::size_t i = 0; i < row.labels.size(); ++i)
                s += " ;\n        lv2:scalePoint [ rdfs:label " + quoted(row.labels[i]) + " ; rdf:value " +
                     number(static_cast<float>(i)) + " ]";
            break;
        case PortKind::linear:
            if (!unitOf(row).empty()) s += " ;\n        units:unit " + unitOf(row);
            break;
        case PortKind::position:
            s += " ;\n        rdfs:comment \"The control's position from 0 to 1: its value depends on a curve or on "
                 "another parameter, and the editor shows it in words.\"";
            break;
    }
    return s + "\n    ]";
}

}  // namespace

BundleDescription describeBundle(const Product& product, Instance& instance, const std::string& binary) {
    const ModelDescriptor& d = instance.descriptor();
    const std::string plugin = "<" + std::string(product.pluginUri) + ">";
    const std::string ui = "<" + std::string(product.uiUri) + ">";
    const std::string stem = binary.substr(0, binary.rfind('.'));
    const int programs = d.programCount;
    const int parameters = instance.parameterCount();
    BundleDescription out;

    // The manifest: what a host reads first, without loading anything.
    out.manifest = prefixes;
    out.manifest += plugin + "\n    a lv2:Plugin ;\n    lv2:binary <" + binary + "> ;\n    rdfs:seeAlso <" + stem + ".ttl> .\n\n";
    out.manifest += ui + "\n    a ui:X11UI ;\n    ui:binary <" + binary + "> ;\n    rdfs:seeAlso <" + stem + ".ttl> .\n";
    for (int p = 0; p < programs; ++p) {
        char name[64];
        instance.getPatchName(p, sizeof name - 1, name);
        out.manifest += "\n<" + presetUri(product, p) + ">\n    a pset:Preset ;\n    lv2:appliesTo " + plugin +
                        " ;\n    rdfs:label " + quoted(name) + " ;\n    rdfs:seeAlso <presets.ttl> .\n";
    }

    // The plug-in and its UI.
    std::string& s = out.plugin;
    s = prefixes;
    s += "@prefix rdf: <http://www.w3.org/1999/02/22-rdf-syntax-ns#> .\n\n";
    s += plugin + "\n    a lv2:Plugin, lv2:DelayPlugin, doap:Project ;\n";
    s += "    doap:name " + quoted(d.publicName) + " ;\n";
    s += "    doap:maintainer [ foaf:name " + quoted(d.vendorName) + " ] ;\n";
    s += "    lv2:minorVersion 0 ;\n    lv2:microVersion 0 ;\n";
    s += "    rdfs:comment \"A frequency shifter inside a delay and feedback loop, so that every echo is shifted once "
         "more. The controls whose meaning depends on another parameter (the shift amount on the range, the delay time "
         "and LFO rate on their sync switches) or whose curve is not linear (the filters, the feedback, the smear, the "
         "LFO amount) are shown as their position from 0 to 1; the plug-in's own editor shows every value in words, "
         "and all 16 programs travel in the plug-in's state.\" ;\n";
    s += "    lv2:optionalFeature lv2:hardRTCapable, urid:map ;\n";
    s += "    lv2:extensionData state:interface ;\n";
    s += "    ui:ui " + ui + " ;\n";
    s += "    lv2:port [\n        a lv2:InputPort, lv2:AudioPort ;\n        lv2:index 0 ;\n        lv2:symbol \"in_l\" ;\n"
         "        lv2:name \"Input Left\"\n    ] , [\n        a lv2:InputPort, lv2:AudioPort ;\n        lv2:index 1 ;\n"
         "        lv2:symbol \"in_r\" ;\n        lv2:name \"Input Right\"\n    ] , [\n"
         "        a lv2:OutputPort, lv2:AudioPort ;\n        lv2:index 2 ;\n        lv2:symbol \"out_l\" ;\n"
         "        lv2:name \"Output Left\"\n    ] , [\n        a lv2:OutputPort, lv2:AudioPort ;\n        lv2:index 3 ;\n"
         "        lv2:symbol \"out_r\" ;\n        lv2:name \"Output Right\"\n    ] , [\n"
         "        a lv2:InputPort, atom:AtomPort ;\n        atom:bufferType atom:Sequence ;\n"
         "        atom:supports midi:MidiEvent, time:Position ;\n        lv2:designation lv2:control ;\n"
         "        lv2:portProperty lv2:connectionOptional ;\n        lv2:index 4 ;\n        lv2:symbol \"events\" ;\n"
         "        lv2:name \"MIDI and Transport\"\n    ] , [\n        a lv2:OutputPort, lv2:ControlPort ;\n"
         "        lv2:index 5 ;\n        lv2:symbol \"latency\" ;\n        lv2:name \"Latency\" ;\n"
         "        lv2:designation lv2:latency ;\n        lv2:portProperty lv2:reportsLatency, lv2:integer ;\n"
         "        lv2:minimum 0 ;\n        lv2:maximum 8192 ;\n        units:unit units:frame\n    ]";
    for (int i = 0; i < parameters; ++i) {
        const int id = instance.parameterId(i);
        const ParameterSpec& row = d.parameters[static_cast<std::size_t>(id)];
        s += " , " + controlPort(row, firstControl + static_cast<std::uint32_t>(i), instance.getParameter(0, id));
    }
    s += " .\n\n";
    // The keys of the plug-in's own state, as sessions and presets store them.
    s += "<" + std::string(product.pluginUri) + "#state>\n    a rdf:Property ;\n    rdfs:label \"bank\" ;\n"
         "    rdfs:comment \"Every program and the current one, as the plug-in's chunk.\" ;\n    rdfs:range atom:Chunk .\n\n";
    s += "<" + std::string(product.pluginUri) + "#currentProgram>\n    a rdf:Property ;\n"
         "    rdfs:label \"current program\" ;\n    rdfs:comment \"The number of the program in use, from 0.\" ;\n"
         "    rdfs:range atom:Int .\n\n";
    s += "<" + std::string(product.pluginUri) + "#program>\n    a rdf:Property ;\n    rdfs:label \"program\" ;\n"
         "    rdfs:comment \"One program, name and values, for the current one.\" ;\n    rdfs:range atom:Chunk .\n\n";
    s += ui + "\n    a ui:X11UI ;\n";
    s += "    lv2:requiredFeature ui:parent, ui:idleInterface, <http://lv2plug.in/ns/ext/instance-access> ;\n";
    s += "    lv2:optionalFeature ui:resize, ui:touch, ui:noUserResize ;\n";
    s += "    lv2:extensionData ui:idleInterface .\n";

    // The factory programs: each port's value, and the program itself (name and exact
    // values) as state.
    std::string& p = out.presets;
    p = prefixes;
    const int current = instance.getCurrentProgram();
    for (int program = 0; program < programs; ++program) {
        char name[64];
        instance.getPatchName(program, sizeof name - 1, name);
        instance.setCurrentProgram(program);
        p += "<" + presetUri(product, program) + ">\n    a pset:Preset ;\n    lv2:appliesTo " + plugin + " ;\n";
        p += "    rdfs:label " + quoted(name) + " ;\n    lv2:port";
        for (int i = 0; i < parameters; ++i) {
            const int id = instance.parameterId(i);
            const ParameterSpec& row = d.parameters[static_cast<std::size_t>(id)];
            p += std::string(i == 0 ? " " : " ,\n        ") + "[ lv2:symbol " + quoted(row.name) + " ; pset:value " +
                 number(exactPort(row, instance.getParameter(program, id))) + " ]";
        }
        p += " ;\n    state:state [ <" + std::string(product.pluginUri) + "#program> \"" +
             base64(instance.saveState(true)) + "\"^^xsd:base64Binary ] .\n\n";
    }
    instance.setCurrentProgram(current);
    return out;
}

}  // namespace tw::lv2
