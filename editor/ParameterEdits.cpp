// The controller's parameters: reading and writing them as the layouts' variables (plain
// or in words), as number handles for knobs and sliders, the gestures around them, and
// the changeParam action of buttons and segments.
#include "editor/ModelController.h"

#include "patch/ModelFactory.h"
#include "patch/Patch.h"
#include "platform/Exception.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecNumber.h"
#include "speclang/SpecQuote.h"

namespace tw {

namespace {

float clamp01(double value) { return static_cast<float>(value < 0.0 ? 0.0 : value > 1.0 ? 1.0 : value); }


}  // namespace

void ModelController::writeParameter(int index, float value) {
    if (cachedPatch_) cachedPatch_->storeParameter(index, value);
    services_.editParameter(currentProgram_, index, value);
}

std::string ModelController::readParam(int index, bool human) {
    const Patch& patch = cachedPatch();
    const float value = patch.getParameter(index);
    // A stepped parameter shows the step the engine takes from the value, however a host
    // rounded it (0.333333 for a third is the range's second step, not a value between).
    if (!human) return formatDouble(factory_.constrainValue(patch, index, value), 7);
    std::string text = factory_.valueToText(patch, index, value, false);
    if (!row(index).unit.empty()) text += " " + row(index).unit;
    return text;
}

void ModelController::writeParam(int index, bool human, const std::string& value, bool continuous) {
    if (!human) return writeParamNumber(index, leadingDouble(value, 0.0), continuous);
    markEdited(index, true, continuous);
    std::string_view text = value;
    const std::string& unit = row(index).unit;
    if (!unit.empty() && text.size() > unit.size() && text.ends_with(unit) && text[text.size() - unit.size() - 1] == ' ')
        text.remove_suffix(unit.size() + 1);
    float out = 0.0f;
    if (factory_.textToValue(cachedPatch(), index, text, out)) writeParameter(index, out);
}

void ModelController::markEdited(int index, bool human, bool continuous) {
    if (continuous && !editedBits_[static_cast<std::size_t>(index)]) {
        pushUndo(changeDescription(index), !human && !keepApart_);
        keepApart_ = false;
        editedBits_[static_cast<std::size_t>(index)] = true;
    }
}

void ModelController::writeParamNumber(int index, double value, bool continuous) {
    markEdited(index, false, continuous);
    writeParameter(index, factory_.constrainValue(cachedPatch(), index, static_cast<float>(value)));
}

namespace {

// A parameter's plain value as a knob or slider holds it: read and written as the model's
// float, with no text between.
class ParamVariable final : public NumberVariable {
public:
    ParamVariable(ModelController& controller, CushyView& view, int index, std::string name)
        : controller_(controller), view_(view), index_(index), name_(std::move(name)) {}
    double read(double) override { return controller_.paramNumber(index_); }
    void write(double value, bool continuous) override { controller_.writeParamNumber(index_, value, continuous); }
    void beginEnd(bool beginning) override { controller_.beginEnd(view_, name_, beginning); }
    double nudge(double value, double by) override { return controller_.nudgeParam(index_, value, by); }
    void keepApart() override { controller_.keepNextEditApart(view_); }

private:
    ModelController& controller_;
    CushyView& view_;
    int index_;
    std::string name_;
};

}  // namespace

double ModelController::paramNumber(int index) {
    const Patch& patch = cachedPatch();
    return factory_.constrainValue(patch, index, patch.getParameter(index));
}

double ModelController::nudgeParam(int index, double value, double by) {
    const Patch& patch = cachedPatch();
    const auto step = [&](double v) { return double(factory_.constrainValue(patch, index, clamp01(v))); };
    const double from = step(value);
    // A parameter kept to steps holds a small move on its step: go on by the same amount
    // until the next one. A range has at most a few hundred steps.
    for (int i = 1; i <= 1000; ++i) {
        const double v = value + by * i;
        const double to = step(v);
        if (to != from || v <= 0.0 || v >= 1.0) return to;
    }
    return from;
}

std::unique_ptr<NumberVariable> ModelController::numberVariable(CushyView& view, const std::string& name) {
    if (const ParamName param = paramName(name); param.index >= 0 && !param.human)
        return std::make_unique<ParamVariable>(*this, view, param.index, name);
    return CushyHost::numberVariable(view, name);
}

void ModelController::writePatchName(const std::string& value, bool continuous) {
    if (continuous) pushUndo("Change Patch Name", false);
    if (cachedPatch_) cachedPatch_->setName(value);
    if (services_.setPatchName(currentProgram_, value)) services_.updateDisplay();
}

// ---- changeParam ----

void ModelController::changeParam(const std::string& params) {
    const SpecMap map = parseMap(params);
    if (map.find("param") == map.end()) throw FormatException("Missing param for changeParam");
    const std::string name = unquote(lookup(map, "param"));
    const int index = parameterNumber(name);
    if (index < 0) throw FormatException("Unknown param for changeParam: " + quote(name));
    const float v = cachedPatch().getParameter(index);
    float value;
    if (map.count("toggle") != 0) {
        value = v < 0.5f ? 1.0f : 0.0f;
    } else if (map.count("to") != 0) {
        value = clamp01(evaluateDouble(lookup(map, "to"), v));
    } else if (map.count("by") != 0) {
        value = clamp01(evaluateDouble(lookup(map, "by"), 0.0) + v);
    } else {
        throw FormatException("Invalid action params for changeParam: " + quote(params));
    }
    pushUndo(changeDescription(index), !keepApart_);
    keepApart_ = false;
    value = factory_.constrainValue(cachedPatch(), index, value);
    services_.beginEnd(index, true);
    writeParameter(index, value);
    services_.beginEnd(index, false);
}

bool ModelController::changeParamState(const std::string& params, bool checked) {
    const SpecMap map = parseMap(params);
    const int index = parameterNumber(unquote(lookup(map, "param")));
    if (index < 0) return false;
    // Compared as steps, as the engine reads them: a host's rounding is no other value.
    const auto step = [&](float value) { return factory_.constrainValue(cachedPatch(), index, value); };
    const float v = step(cachedPatch().getParameter(index));
    const bool hasTo = map.count("to") != 0;
    const bool hasWhen = map.count("whenEqual") != 0;
    const std::string when = hasWhen ? unquote(lookup(map, "whenEqual")) : std::string();
    if (!checked) {
        if (hasWhen && when == "disabled" && hasTo) return v != step(clamp01(evaluateDouble(lookup(map, "to"), v)));
        return true;
    }
    if (map.count("toggle") != 0) return v >= 0.5f;
    if (hasTo && (!hasWhen || when == "checked")) return v == step(clamp01(evaluateDouble(lookup(map, "to"), v)));
    return false;
}



}  // namespace tw
