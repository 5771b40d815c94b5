// What the plug-in instance offers the model and the editor: its programs, the current
// program, parameter writes that reach the host as automation, gestures, feedback and
// tempo. Everything here is safe to call beside the audio thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "patch/FeedbackSink.h"
#include "patch/Patch.h"
#include "platform/SlotCell.h"

namespace tw {

class ModelFactory;

using PatchCell = OwningSlotCell<Patch>;
// A hold on the patch in a program's cell: it keeps that patch alive while in use. The
// patch's values are atomic words, so a holder reads and writes them in place; a
// changed name, path or set of values as a whole is published as a new patch instead.
using PatchHandle = PatchCell::Reader;

class ModelServices {
public:
    virtual ~ModelServices() = default;

    virtual ModelFactory& getFactory() = 0;
    virtual int getCurrentProgram() = 0;
    virtual void setCurrentProgram(int program) = 0;
    virtual std::uint32_t getPatchStamp(int program) = 0;
    virtual std::unique_ptr<Patch> clonePatch(int program) = 0;
    // Publishes a clone of `patch` into the program's cell.
    virtual void setPatch(int program, const Patch& patch) = 0;
    virtual PatchHandle acquirePatch(int program) = 0;
    virtual void getPatchName(int program, std::size_t maxLength, char* buffer) = 0;
    virtual bool setPatchName(int program, std::string_view text) = 0;
    // Starts or ends the user's gesture on a parameter (by id).
    virtual void beginEnd(int parameter, bool beginning) = 0;
    virtual float getParameter(int program, int parameter) = 0;
    // The editor's write: stores the value and, when it is the current program inside a
    // gesture, tells the host, which records it as automation.
    virtual void editParameter(int program, int parameter, float value) = 0;
    virtual FeedbackSink::Snapshot getFeedback() = 0;
    // Audio is running and the effect is not bypassed.
    virtual bool isEnabled() = 0;
    virtual double getTempo() = 0;
    // A patch that overrides the current program while present; null clears it.
    virtual void setEditPatch(const Patch* patch) = 0;
    // Tells the host that names or programs changed.
    virtual void updateDisplay() = 0;
};

}  // namespace tw
