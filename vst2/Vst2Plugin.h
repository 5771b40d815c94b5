// The VST 2.4 face of one instance: the effect record the host holds, its dispatcher and
// audio entry points, and the host callback behind `HostPort`. Everything a plug-in is
// whatever the format lives in the instance core; this class only translates.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/Editor.h"
#include "core/Instance.h"
#include "editor/EditorFactory.h"
#include "patch/ModelFactory.h"
#include "platform/Mutex.h"
#include "vst2/Vst2.h"
#include "vst2/Vst2Keys.h"

namespace tw {

class Vst2Plugin final : private HostPort {
public:
    // Main thread, inside VSTPluginMain.
    Vst2Plugin(vst2::HostCallback host, std::unique_ptr<ModelFactory> factory, const EditorFactory* editor);
    ~Vst2Plugin() override;

    vst2::AEffect* effect() { return &effect_; }
    static Vst2Plugin* of(vst2::AEffect* effect) { return static_cast<Vst2Plugin*>(effect->object); }
    Instance& instance() { return instance_; }
    // The editor, when the product has one (for tests and measurements).
    Editor* editor() { return editor_.get(); }

    // The host's calls, each on the thread the VST 2.4 convention gives it: the dispatcher
    // on the main thread except effProcessEvents, effSetParameter and effGetParameter from
    // any thread, processing on the audio thread.
    vst2::intptr dispatch(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, void* ptr, float opt);
    void processBlock(float** inputs, float** outputs, int frames, bool accumulate);
    void setHostParameter(int hostIndex, float value) { instance_.setParameterFromHost(instance_.parameterId(hostIndex), value); }
    float getHostParameter(int hostIndex);

private:
    // HostPort: the instance's gestures and writes as the host's automation calls.
    void beginGesture(int id) override { hostCall(vst2::audioMasterBeginEdit, instance_.hostIndex(id)); }
    void endGesture(int id) override { hostCall(vst2::audioMasterEndEdit, instance_.hostIndex(id)); }
    void automate(int id, float value) override {
        hostCall(vst2::audioMasterAutomate, instance_.hostIndex(id), 0, nullptr, value);
    }
    void updateDisplay() override { hostCall(vst2::audioMasterUpdateDisplay); }

    vst2::intptr hostCall(vst2::int32 opcode, vst2::int32 index = 0, vst2::intptr value = 0, void* ptr = nullptr,
                          float opt = 0.0f) const;
    void open();
    void setSampleRate(float rate);
    void resume();
    int processEvents(const vst2::VstEvents* events);
    int canDo(std::string_view question) const;
    vst2::intptr vendorSpecific(vst2::int32 code, vst2::intptr argument, void* ptr, float opt);
    vst2::intptr editorCall(vst2::int32 opcode, void* ptr);
    // A key the host offers the editor: 1 when the editor used it, 0 to leave it to the host.
    vst2::intptr editorKey(vst2::int32 opcode, vst2::int32 index, vst2::intptr value, float opt);
    // The host's chunk: the buffer is ours and stays valid until the next call; size 0 on
    // failure. Setting answers `size`, or 0 when the chunk was refused.
    vst2::intptr getChunk(void** data, bool isPreset);
    vst2::intptr setChunk(const void* data, vst2::intptr size, bool isPreset);

    vst2::AEffect effect_{};
    vst2::HostCallback host_;
    Instance instance_;
    Mutex chunkMutex_;
    std::string chunkBuffer_;
    vst2::ERect rect_{};
    Vst2HeldKeys heldKeys_;
    // Last, so that the editor's window goes before everything it shows.
    std::unique_ptr<Editor> editor_;
};

}  // namespace tw
