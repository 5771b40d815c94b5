// A CLAP plug-in loaded into the command-line host: the library and its entry, one plug-in
// instance, and the host's side of the format (the host record and the extensions a
// plug-in asks for, event lists, transport, timers, state streams). It works with any CLAP
// plug-in for Linux that takes 32-bit stereo or mono audio, not only ours.
//
// Threads: the program's main thread is the host's main thread; `process` may run on
// another (the editor's audio loop), which makes it the audio thread while it runs.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <clap/entry.h>
#include <clap/ext/audio-ports.h>
#include <clap/ext/gui.h>
#include <clap/ext/latency.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/ext/timer-support.h>
#include <clap/plugin-factory.h>

#include "tools/common/AudioBuffer.h"

namespace tw {

class HostedClap {
public:
    struct Transport {
        bool timeInfo = true;  // false: process without transport
        bool playing = true;
        double tempo = 120.0;
    };

    // Loads the library, reads its factory and creates the plug-in `id` (the first one when
    // empty), then initialises it; throws std::runtime_error with the reason.
    HostedClap(const std::string& libraryPath, const std::string& id);
    ~HostedClap();
    HostedClap(const HostedClap&) = delete;
    HostedClap& operator=(const HostedClap&) = delete;

    const clap_plugin_descriptor_t& descriptor() const { return *plugin_->desc; }
    const clap_plugin_t& plugin() const { return *plugin_; }
    // The plug-in's extensions; null when it offers none.
    const clap_plugin_params_t* params() const { return params_; }
    const clap_plugin_state_t* state() const { return state_; }
    const clap_plugin_latency_t* latency() const { return latency_; }
    const clap_plugin_audio_ports_t* audioPorts() const { return audioPorts_; }
    const clap_plugin_note_ports_t* notePorts() const { return notePorts_; }
    const clap_plugin_gui_t* gui() const { return gui_; }
    const clap_plugin_timer_support_t* timerSupport() const { return timerSupport_; }
    // The ids of the extensions the plug-in answers among those this host knows.
    std::vector<std::string> extensionNames() const;

    // Parameters in the plug-in's order.
    std::vector<clap_param_info_t> parameters() const;
    double value(clap_id id) const;
    std::string text(clap_id id, double value) const;
    std::string currentText(clap_id id) const { return text(id, value(id)); }
    bool fromText(clap_id id, const std::string& text, double& value) const;
    // A parameter's id from its id's number, its name, or a camel-case key whose words
    // begin the name's words ("lfoRate" for "LFO Rate"); -1 when none or several match.
    long findParameter(const std::string& key) const;

    // A parameter set from the command line: a plain value in the parameter's range, or,
    // with `text`, words for the plug-in to read ("250 ms").
    struct Setting {
        std::string key, value;
        bool text;
    };
    // Applies the settings in order, each through the parameters' flush (the plug-in
    // inactive) or as the next block's events (active: texts are then read against the
    // values before the block). Throws std::runtime_error with the reason.
    void apply(const std::vector<Setting>& settings);

    // State through streams that move at most `step` bytes per call (0: as many as asked).
    std::vector<unsigned char> saveState(std::size_t step = 0);
    bool loadState(const std::vector<unsigned char>& bytes, std::size_t step = 0);

    void activate(double sampleRate, std::uint32_t blockSize);
    void deactivate();
    bool active() const { return active_; }
    double sampleRate() const { return sampleRate_; }
    std::uint32_t blockSize() const { return blockSize_; }
    std::uint32_t latencyFrames() const;
    std::uint32_t channels(bool isInput) const;

    Transport transport;
    // A note for the next block, as a CLAP note event or, with `midi`, as MIDI bytes.
    void queueNote(std::uint32_t offset, bool on, int key, bool midi);
    // Runs one block on the calling thread (the audio thread while it runs); the plug-in
    // must be active. Its output events are heard as below.
    void process(float** inputs, float** outputs, std::uint32_t frames);

    struct RenderSettings {
        int note = -1;              // a note held for the length of the input
        bool midiNote = false;      // sent as MIDI instead of a CLAP note event
        double tail = 3.0;          // seconds rendered after the input ends
        bool keepLatency = false;   // false: the output is moved back by the plug-in's latency
        std::string progressLabel;  // shown on a terminal's standard error while rendering
    };
    // Activates, runs the whole input and the tail in blocks of the active size, and
    // deactivates.
    AudioBuffer render(const AudioBuffer& input, double sampleRate, std::uint32_t blockSize, const RenderSettings& settings);

    // What the plug-in told the host: its gestures and values (from process or flush), and
    // its calls of the host (flush and rescan requests, the state marked dirty), in order.
    struct Heard {
        enum class Kind { begin, value, end, requestFlush, rescan, dirty, resize } kind;
        clap_id id;    // the parameter, for begin, value, end
        double value;  // for value; the rescan's flags
        bool viaFlush;  // the event left through flush rather than process
    };
    // The host's side of the editor's request_resize: whether its window took the size.
    // Unset, every request is refused.
    std::function<bool(std::uint32_t width, std::uint32_t height)> resizeWindow;
    // Whether the plug-in's calls are kept for `takeHeard`.
    std::atomic<bool> recordHeard{false};
    std::vector<Heard> takeHeard();

    // The host's main-thread duties between events: a flush the plug-in asked for (while
    // nothing processes), and the plug-in's timers that are due. Answers the milliseconds
    // until the next timer is due (-1: no timer).
    int serviceMainThread();
    // Whether some thread runs `process` now: then flush is left to the blocks.
    std::atomic<bool> processingElsewhere{false};

private:
    // Instances of each loaded library, so that its entry starts once and ends with the last.
    static std::map<void*, int>& entryUsers();
    void releaseEntry();
    static const void* hostExtension(const clap_host_t* host, const char* id);
    static HostedClap& of(const clap_host_t* host) { return *static_cast<HostedClap*>(host->host_data); }
    void hear(const Heard& heard);
    void hearEvent(const clap_event_header_t* event, bool viaFlush);
    void flushParameters(const std::vector<std::vector<unsigned char>>& events);

    struct Timer {
        clap_id id;
        std::uint32_t periodMs;
        double dueMs;
    };

    void* library_ = nullptr;
    const clap_plugin_entry_t* entry_ = nullptr;
    clap_host_t host_{};
    const clap_plugin_t* plugin_ = nullptr;
    const clap_plugin_params_t* params_ = nullptr;
    const clap_plugin_state_t* state_ = nullptr;
    const clap_plugin_latency_t* latency_ = nullptr;
    const clap_plugin_audio_ports_t* audioPorts_ = nullptr;
    const clap_plugin_note_ports_t* notePorts_ = nullptr;
    const clap_plugin_gui_t* gui_ = nullptr;
    const clap_plugin_timer_support_t* timerSupport_ = nullptr;
    bool active_ = false;
    double sampleRate_ = 48000.0;
    std::uint32_t blockSize_ = 512;
    double samplePosition_ = 0.0;
    std::atomic<bool> flushRequested_{false};
    std::vector<Timer> timers_;
    clap_id nextTimer_ = 1;
    // Events for the next block: each an event's bytes.
    std::vector<std::vector<unsigned char>> pending_;
    std::vector<std::vector<unsigned char>> blockEvents_;
    std::mutex heardLock_;
    std::vector<Heard> heard_;
};

}  // namespace tw
