// How views read the string value of a GUI variable, and what they keep to notice a change
// at refresh: there is no push from the model, so every watching view compares its last
// value with the one it reads now, and repaints only on a difference.
#pragma once

#include <cstdint>
#include <string>

namespace tw {

class CushyHost;
class CushyView;

// The leading decimal number of a value, or `defaultValue` when it has none.
double variableNumber(const std::string& value, double defaultValue);
// The leading integer, or 0.
std::int32_t variableInteger(const std::string& value);
// "true" or "false" in any case; anything else is false, so that a name nobody set hides.
bool variableBool(const std::string& value);
// Numbers that Cushy writes: "%.14g".
std::string formatVariableNumber(double value);

// A text of a view that may hold tags: expanded once at creation when it has no "[var]",
// else again at each renew. Captions, hints and a group's `views` with `varExpansion`
// watch their texts with it.
class WatchedText {
public:
    WatchedText() = default;
    // Expands the raw text once; throws what expansion throws.
    WatchedText(std::string raw, CushyHost& host, CushyView& view);

    const std::string& text() const { return text_; }
    bool watching() const { return watching_; }
    // Expands again; true when the text changed. A text without variables never does.
    bool renew(CushyHost& host, CushyView& view);

private:
    std::string raw_;
    std::string text_;
    // The variable's name when the whole text is "[var]name[/var]" with a plain name, as
    // most live captions are: their renewal is one read and one compare.
    std::string plainVariable_;
    bool watching_ = false;
};

// One variable that a view watches as a whole string: a paged view's index, a group's
// visibility or one of its offsets. renew reads it and answers whether it changed.
class WatchedVariable {
public:
    WatchedVariable() = default;
    explicit WatchedVariable(std::string name) : name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    const std::string& value() const { return value_; }
    // False without a name: a view without the key watches nothing.
    bool renew(CushyHost& host, CushyView& view);

private:
    std::string name_;
    std::string value_;
};

// A value control (knob, slider, cluster) as its layout syncs it: the layout reads the
// control's variable at each refresh and hands the number over unless the control is
// being dragged (holds the capture).
class ValueControl {
public:
    // The variable the control shows and writes.
    virtual const std::string& variableName() const = 0;
    // The value when the variable holds no number.
    virtual double defaultValue() const = 0;
    // Takes the number over, repainting if it changed.
    virtual void takeValue(double value) = 0;
    // Whether the host lets the control write: a control that may not takes no input.
    virtual void setWritable(bool writable) = 0;

protected:
    ~ValueControl() = default;
};

}  // namespace tw
