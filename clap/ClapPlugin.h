// The CLAP face of one instance: the plug-in the host holds, its audio call with the
// host's events, parameters, state, latency and ports, and the host's extensions behind
// `HostPort`. Everything a plug-in is whatever the format lives in the instance core; this
// class only translates.
//
// Threads, as the format fixes them by the call (a host that breaks them is not served):
// the main thread makes and ends the plug-in and calls activate, deactivate, the parameters'
// info, values and texts, state, latency, ports and the editor; the audio thread calls
// start and stop processing, reset and process, and `flush` while active (the main thread
// calls it while inactive). The two never overlap in `flush` and `process`, so the queue
// of gestures has one reader at a time.
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include <clap/ext/audio-ports.h>
#include <clap/ext/note-ports.h>
#include <clap/ext/params.h>
#include <clap/ext/state.h>
#include <clap/host.h>
#include <clap/plugin.h>

#include "clap/ClapEntry.h"
#include "clap/GestureQueue.h"
#include "core/Instance.h"

namespace tw::clap {

class ClapGui;

class ClapPlugin final : private HostPort {
public:
    // In the factory's create_plugin: no host call yet. `calls` holds the format's entry
    // points; the plug-in's own record is a copy with its descriptor and data set.
    ClapPlugin(const clap_host_t* host, const Product& product, const clap_plugin_t& calls);
    ~ClapPlugin() override;
    ClapPlugin(const ClapPlugin&) = delete;
    ClapPlugin& operator=(const ClapPlugin&) = delete;

    const clap_plugin_t* plugin() const { return &plugin_; }
    static ClapPlugin* of(const clap_plugin_t* plugin) { return static_cast<ClapPlugin*>(plugin->plugin_data); }
    const Product& product() const { return product_; }
    Instance& instance() { return *instance_; }
    ClapGui* gui() { return gui_.get(); }

    // Main thread.
    void init();
    bool activate(double sampleRate, std::uint32_t minFrames, std::uint32_t maxFrames);
    void deactivate();
    // Audio thread.
    bool startProcessing();
    void stopProcessing();
    void reset();
    clap_process_status process(const clap_process_t* process);

    // Parameters, in the product's host order; ids are the product's parameter ids.
    std::uint32_t parameterCount() const;
    bool parameterInfo(std::uint32_t index, clap_param_info_t* info);
    bool parameterValue(clap_id id, double* value);
    bool valueToText(clap_id id, double value, char* display, std::uint32_t size);
    bool textToValue(clap_id id, const char* display, double* value);
    void flush(const clap_input_events_t* in, const clap_output_events_t* out);
    // Main thread: asks the host for a flush when gestures wait and nothing processes.
    void flushWaitingGestures();

    // State: the VST build's bank chunk and the current program (clap/ClapState.h).
    bool saveState(const clap_ostream_t* stream);
    bool loadState(const clap_istream_t* stream);

    std::uint32_t latency() const { return static_cast<std::uint32_t>(instance_->latency()); }
    std::uint32_t audioPortCount(bool isInput) const;
    bool audioPortInfo(std::uint32_t index, bool isInput, clap_audio_port_info_t* info) const;
    std::uint32_t notePortCount(bool isInput) const;
    bool notePortInfo(std::uint32_t index, bool isInput, clap_note_port_info_t* info) const;

private:
    // HostPort: on the main thread, from the editor and the patch operations.
    void beginGesture(int id) override;
    void endGesture(int id) override;
    void automate(int id, float value) override;
    void updateDisplay() override;

    void queueGesture(const Gesture& gesture);
    // Applies one event of the host's (a parameter, a note, MIDI); `offset` counts from
    // the start of the audio the instance takes next.
    void applyEvent(const clap_event_header_t* event, int offset);
    void sendGestures(const clap_output_events_t* out);
    // The position to run from for the host's transport `now`.
    double continuedPosition(const Transport& now) const;
    const ParameterSpec* row(clap_id id) const;
    template <typename T>
    const T* hostExtension(const char* id) const {
        return host_->get_extension ? static_cast<const T*>(host_->get_extension(host_, id)) : nullptr;
    }

    const clap_host_t* host_;
    const Product& product_;
    clap_plugin_t plugin_{};
    const clap_host_params_t* hostParams_ = nullptr;
    const clap_host_state_t* hostState_ = nullptr;
    std::unique_ptr<Instance> instance_;
    GestureQueue gestures_;
    std::atomic<bool> processing_{false};
    // The transport where the last block (or transport event) left it, position running on.
    Transport transport_;
    // Last, so that the editor's window goes before everything it shows.
    std::unique_ptr<ClapGui> gui_;
};

}  // namespace tw::clap
