// The object that stands for one product: it makes the product's processor, patches and
// feedback sink, and owns the product's parameter text. The product class derives from
// it; the instance core, the formats and the editor only ever talk to this interface.
// What the product's editor is comes from its own factory, one layer up (EditorFactory).
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "patch/FeedbackSink.h"
#include "patch/ModelDescriptor.h"
#include "patch/Patch.h"
#include "patch/Processor.h"

namespace tw {

class ModelFactory {
public:
    virtual ~ModelFactory() = default;

    virtual const ModelDescriptor& getDescriptor() const = 0;
    virtual std::unique_ptr<Processor> createProcessor(int instanceNumber) const = 0;
    // Every value at its table default, name empty, saved.
    virtual std::unique_ptr<Patch> createInitPatch() const;
    virtual std::unique_ptr<FeedbackSink> createFeedbackSink() const;

    // Text of a parameter value: the display form, or with `precise` the full form that
    // reads back to the same value. Rows may depend on other values of `patch`.
    virtual std::string valueToText(const Patch& patch, int id, float value, bool precise) const;
    // Answers false, leaving `out` alone, when the text does not read.
    virtual bool textToValue(const Patch& patch, int id, std::string_view text, float& out) const;
    // The nearest value the row allows.
    virtual float constrainValue(const Patch& patch, int id, float value) const;

    // The patch text (see PatchText.cpp). `headerless` leaves out name, path and the
    // modified flag, as patch files do.
    virtual bool isPatchText(std::string_view text) const;
    std::string patchToText(const Patch& patch, bool headerless) const;
    // A new patch; FormatException or EOFException when the text is none of ours.
    virtual std::unique_ptr<Patch> patchFromText(std::string_view text) const;
    virtual void writePatchText(std::string& out, const Patch& patch, bool headerless) const;
};

}  // namespace tw
