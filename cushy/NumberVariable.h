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
