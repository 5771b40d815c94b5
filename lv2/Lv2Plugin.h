// The LV2 face of one instance: the ports the host connects, the run call, the state
// interface, and the link to the plug-in's own UI in the same process (through the
// instance-access feature). Everything a plug-in is whatever the format lives in the
// instance core; this class only translates.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <lv2/atom/atom.h>
#include <lv2/core/lv2.h>
#include <lv2/state/state.h>
#include <lv2/urid/urid.h>

#include "core/Instance.h"
#include "lv2/Lv2Ports.h"

namespace tw::lv2 {

// What the plug-in's UI offers the plug-in: the host's side of the user's gestures. Called
// on the UI thread, from inside the editor's own calls.
class UiLink {
public:
    virtual ~UiLink() = default;
    virtual void touch(std::uint32_t port, bool grabbed) = 0;
    virtual void write(std::uint32_t port, float value) = 0;
    // Programs or several values changed at once: the UI sends the host every port that
    // no longer shows its parameter.
    virtual void portsChanged() = 0;
};

// URIs mapped once at instantiation.
struct Uris {
    LV2_URID atomChunk, atomSequence, atomObject, atomBlank, atomFloat, atomDouble, atomInt, atomLong;
    LV2_URID midiEvent, timePosition, timeSpeed, timeBar, timeBarBeat, timeBeatsPerBar, timeBeatUnit,
        timeBeatsPerMinute;
    // The plug-in's own keys: a session's state is the bank (the VST build's chunk) and
    // the current program's number; a preset's is one program.
    LV2_URID bankKey, currentProgramKey, programKey;
    Uris(const LV2_URID_Map* map, const std::string& pluginUri);
};

class Lv2Plugin final : private HostPort {
public:
    // Main thread. Raises when the host gives a rate the engine refuses.
    Lv2Plugin(const std::string& pluginUri, double sampleRate, const LV2_Feature* const* features,
              std::unique_ptr<ModelFactory> factory);
    ~Lv2Plugin() override;

    Instance& instance() { return instance_; }
    // The control port of a parameter id, and back (-1 when the port is none).
    std::uint32_t portOf(int id) const { return firstControl + static_cast<std::uint32_t>(instance_.hostIndex(id)); }
    int idOf(std::uint32_t port) const;

    // Audio thread (class "instantiation" for connect, as LV2 has it: never during run).
    void connect(std::uint32_t port, void* data);
    // Main thread.
    void activate();
    void deactivate();
    // Audio thread.
    void run(std::uint32_t frames);

    // Main thread, never during run.
    LV2_State_Status save(LV2_State_Store_Function store, LV2_State_Handle handle);
    LV2_State_Status restore(LV2_State_Retrieve_Function retrieve, LV2_State_Handle handle);

    // UI thread: the plug-in's UI attaches while it is open.
    void attachUi(UiLink* link) { ui_ = link; }

private:
    void beginGesture(int id) override;
    void endGesture(int id) override;
    void automate(int id, float value) override;
    void updateDisplay() override;

    void readEvents();
    void readPosition(const LV2_Atom_Object* position);
    void applyControls();
    // Counts the parameters' present values as what the ports last showed, so that a
    // port changes a parameter only when the host sets it to something else.
    void seeParameters();

    Instance instance_;
    Uris uris_;
    const int parameterCount_;
    float* audio_[4] = {};
    const LV2_Atom_Sequence* events_ = nullptr;
    float* latency_ = nullptr;
    std::vector<const float*> controls_;
    std::vector<float> seen_;  // each control's value at the last run
    // The host's transport, kept between the position updates it sends on change only.
    Transport transport_;
    double beatsPerBar_ = 4.0, beatUnit_ = 4.0, speed_ = 0.0;
    bool positionKnown_ = false;
    UiLink* ui_ = nullptr;
};

}  // namespace tw::lv2
