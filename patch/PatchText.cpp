// The patch text: one spec map labelled "<modelName>Patch" whose block holds the format,
// the name, path and modified flag, and every parameter as its human-readable text. The
// same text serves patch files, the clipboard, chunks, banks and the startup bank.
#include "patch/ModelFactory.h"

#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"
#include "patch/PatchPath.h"
#include "platform/Exception.h"

#include <utility>
#include <vector>

namespace tw {

namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

// A label stands bare unless a byte in it would end or split it for the scanner.
std::string blockLabel(const std::string& label) {
    static const std::string_view special(" ,;=:}/\t\v\r\n\x1A", 12);
    return label.find_first_of(special) == std::string::npos ? label : quote(label);
}

// "label: {", then each pair on its own line one tab in, then "}". The values of nested
// blocks move one tab further in with every level. An empty label writes the block alone.
std::string blockText(const std::string& label, const Pairs& pairs) {
    std::string out = label.empty() ? std::string() : blockLabel(label) + ": ";
    out += "{\n";
    for (const auto& [name, value] : pairs) {
        out += '\t';
        out += blockLabel(name);
        out += ": ";
        for (char c : value) {
            out += c;
            if (c == '\n') out += '\t';
        }
        out += '\n';
    }
    out += '}';
    return out;
}

std::string patchLabel(const ModelDescriptor& descriptor) { return descriptor.modelName + "Patch"; }

// Steps 2 and 3 of reading: the block under the model's label and a format in range.
SpecMap headMap(const ModelDescriptor& descriptor, std::string_view text) {
    SpecMap outer = parseMap(std::string(text));
    auto found = outer.find(patchLabel(descriptor));
    if (found == outer.end()) throw FormatException("Invalid data format");
    SpecMap head = parseMap(found->second);
    std::int32_t format = toInt(lookup(head, "format"), 0);
    if (format < descriptor.minFormat) throw FormatException("Patch format is too old");
    if (format > descriptor.maxFormat) throw FormatException("Patch format is too new");
    return head;
}

bool endsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

}  // namespace

void ModelFactory::writePatchText(std::string& out, const Patch& patch, bool headerless) const {
    const ModelDescriptor& descriptor = getDescriptor();
    Pairs parameters;
    for (std::size_t id = 0; id < descriptor.parameters.size(); ++id) {
        const ParameterSpec& row = descriptor.parameters[id];
        int index = static_cast<int>(id);
        std::string text = valueToText(patch, index, patch.getParameter(index), true);
        if (!row.unit.empty()) text += " " + row.unit;
        parameters.emplace_back(row.name, quote(text));
    }

    Pairs head;
    head.emplace_back("format", std::to_string(descriptor.maxFormat));
    if (!headerless) {
        head.emplace_back("name", quote(patch.getName()));
        Path path = patch.getPath();
        if (!path.empty()) head.emplace_back("path", quote(storedPatchPath(descriptor, path)));
        head.emplace_back("modified", patch.isModified() ? "true" : "false");
    }
    head.emplace_back("parameters", blockText(std::string(), parameters));
    out += blockText(patchLabel(descriptor), head);
    out += '\n';
}

std::string ModelFactory::patchToText(const Patch& patch, bool headerless) const {
    std::string out;
    writePatchText(out, patch, headerless);
    return out;
}

std::unique_ptr<Patch> ModelFactory::patchFromText(std::string_view text) const {
    const ModelDescriptor& descriptor = getDescriptor();
    std::unique_ptr<Patch> patch = createInitPatch();
    SpecMap head = headMap(descriptor, text);

    // The path first, since it names the patch after its file; a stored name wins.
    if (auto path = head.find("path"); path != head.end())
        patch->setPath(interpretPatchPath(descriptor, unquote(path->second)));
    if (auto name = head.find("name"); name != head.end()) patch->setName(unquote(name->second));

    if (auto block = head.find("parameters"); block != head.end()) {
        SpecMap values = parseMap(block->second);
        for (std::size_t id = 0; id < descriptor.parameters.size(); ++id) {
            const ParameterSpec& row = descriptor.parameters[id];
            int index = static_cast<int>(id);
            float value = row.defaultValue;
            if (auto found = values.find(row.name); found != values.end()) {
                std::string valueText = unquote(found->second);
                if (!row.unit.empty() && endsWith(valueText, " " + row.unit))
                    valueText.resize(valueText.size() - row.unit.size() - 1);
                // Row-dependent text reads the rows before it, already in this patch.
                if (!textToValue(*patch, index, valueText, value)) value = row.defaultValue;
            }
            patch->storeParameter(index, value);
        }
    }

    patch->touch();
    if (!toBool(lookup(head, "modified"), false)) patch->markClean();
    return patch;
}

bool ModelFactory::isPatchText(std::string_view text) const {
    try {
        headMap(getDescriptor(), text);
        return true;
    } catch (const FormatException&) {
        return false;
    }
}

}  // namespace tw
