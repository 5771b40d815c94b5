// A VST 2.4 plug-in loaded into the command-line host: the shared library, its effect
// record, and the host side of the interface (the callback, time information, events).
// It works with any VST 2.4 plug-in for Linux, not only ours.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "vst2/Vst2.h"
#include "tools/common/AudioBuffer.h"

namespace tw {

class HostedPlugin {
public:
    struct Transport {
        bool timeInfo = true;  // false: answer the plug-in's time request with nothing
        bool playing = true;
        double tempo = 120.0;
    };

    using EntryPoint = vst2::AEffect* (*)(vst2::HostCallback);

    // Loads the library and creates an instance; throws std::runtime_error on failure.
    explicit HostedPlugin(const std::string& libraryPath);
    // An instance of a plug-in linked into the program itself.
    explicit HostedPlugin(EntryPoint entry);
    ~HostedPlugin();
    HostedPlugin(const HostedPlugin&) = delete;
    HostedPlugin& operator=(const HostedPlugin&) = delete;

    vst2::AEffect& effect() { return *effect_; }
    vst2::intptr dispatch(vst2::int32 opcode, vst2::int32 index = 0, vst2::intptr value = 0, void* ptr = nullptr,
                          float opt = 0.0f);

    // Opens the instance at a sample rate and block size, ready for resume.
    void open(float sampleRate, int blockSize);
    void resume();
    void suspend();

    std::string effectName();
    std::string vendor();
    std::string product();
    std::string parameterName(int index);
    std::string parameterLabel(int index);
    std::string parameterDisplay(int index);
    std::string programName(int index);
    std::string currentProgramName();
    // A parameter's host index from its number, its name as the plug-in shows it, or a
    // camel-case key whose words begin the name's words ("lfoRate" for "LFO Rate",
    // "freqShiftAmount" for "Frequency Shift Amount"); -1 when none or several match.
    int findParameter(const std::string& key);

    // Whether the plug-in speaks the vendor protocol of Tidewake's family (the sHi! probe).
    bool speaksVendorProtocol();
    // The plug-in's reading of a parameter's human text through sS2V; false when it
    // cannot read it.
    bool textToValue(int index, const std::string& text, float& value);

    // A parameter set from the command line: a value from 0 to 1, or, with `text`, words
    // for the plug-in to read through the vendor protocol ("250 ms").
    struct Setting {
        std::string key, value;
        bool text;
    };
    using ParameterLookup = std::function<int(HostedPlugin&, const std::string&)>;
    // Selects the program (unless negative), applies the settings in order with their keys
    // found by `lookup` (-1: none), then bypass. Throws std::runtime_error with the reason.
    void apply(int program, const std::vector<Setting>& settings, bool bypass, const ParameterLookup& lookup);

    std::vector<unsigned char> getChunk(bool program);
    bool setChunk(const std::vector<unsigned char>& data, bool program);

    Transport transport;
    // MIDI events for the next process call only, as (offset, status, data 1, data 2).
    void queueMidi(int offset, unsigned char status, unsigned char data1, unsigned char data2);
    // Sends the queued events, then runs one block.
    void process(float** inputs, float** outputs, int frames);
    double samplePosition() const { return samplePosition_; }

    struct RenderSettings {
        int note = -1;              // a MIDI note held for the length of the input
        double tail = 3.0;          // seconds rendered after the input ends
        bool keepLatency = false;   // false: the output is moved back by the plug-in's latency
        std::string progressLabel;  // shown on a terminal's standard error while rendering
    };
    // Runs the whole input through the plug-in, opened and set up by the caller, in blocks
    // of the size given to open: resumes, renders input and tail, suspends.
    AudioBuffer render(const AudioBuffer& input, const RenderSettings& settings);

    // The calls of the plug-in's editor that a host acts on (begin and end of a gesture,
    // automation, a display update), recorded when `recordEditorCalls` is set, in order.
    struct EditorCall {
        vst2::int32 opcode;
        vst2::int32 index;
        float value;
    };
    bool recordEditorCalls = false;
    // The host's side of audioMasterSizeWindow (width, height): whether the window took the
    // size. Unset, the call is not known and answers 0.
    std::function<bool(int width, int height)> sizeWindow;
    // The calls recorded since the last take.
    std::vector<EditorCall> takeEditorCalls();

private:
    static vst2::intptr callback(vst2::AEffect* effect, vst2::int32 opcode, vst2::int32 index, vst2::intptr value,
                                 void* ptr, float opt);
    vst2::intptr answer(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr, float opt);
    std::string text(vst2::int32 opcode, vst2::int32 index);
    void create(EntryPoint entry);

    void* library_ = nullptr;
    vst2::AEffect* effect_ = nullptr;
    float sampleRate_ = 44100.0f;
    int blockSize_ = 512;
    double samplePosition_ = 0.0;
    vst2::VstTimeInfo time_{};
    std::vector<vst2::VstMidiEvent> midi_;
    std::vector<unsigned char> eventList_;
    std::mutex editorCallsLock_;  // a plug-in may automate from its audio thread too
    std::vector<EditorCall> editorCalls_;
};

}  // namespace tw
