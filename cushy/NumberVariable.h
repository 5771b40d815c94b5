// A variable that a control reads and writes as a number, resolved once when its layout
// loads: a drag passes numbers from the control to the model, with no text on the way and
// no lookup by name on every mouse move. A host hands out its own for the variables it
// keeps as numbers; every other variable goes through the host's text interface.
#pragma once

#include <string>

namespace tw {

class CushyHost;
class CushyView;

class NumberVariable {
public:
    virtual ~NumberVariable() = default;
    // The value, or `otherwise` when the variable holds no number.
    virtual double read(double otherwise) = 0;
    // `continuous`: part of a gesture (a drag, a run of wheel notches).
    virtual void write(double value, bool continuous) = 0;
    // Brackets a gesture for the host.
    virtual void beginEnd(bool beginning) = 0;
    // The value a key step of `by` from `value` lands on as the model holds it: where the
    // model keeps the variable to steps and `by` would land on the same one, the next
    // step that way, so that every press moves. By default no steps: value plus by.
    virtual double nudge(double value, double by) { return value + by; }
    // The gesture about to begin is an undo step of its own, even right after one that
    // changed the same thing (a second run of keys is a second step).
    virtual void keepApart() {}
};

// Through the host's text interface, by name.
class TextNumberVariable final : public NumberVariable {
public:
    TextNumberVariable(CushyHost& host, CushyView& view, std::string name)
        : host_(host), view_(view), name_(std::move(name)) {}
    double read(double otherwise) override;
    void write(double value, bool continuous) override;
    void beginEnd(bool beginning) override;

private:
    CushyHost& host_;
    CushyView& view_;
    std::string name_;
};

}  // namespace tw
