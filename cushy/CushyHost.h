// What Cushy needs of the plug-in: variables, actions it does not own, layouts, pictures,
// fonts, translation and error reporting. The model's controller implements it; tests and
// cushy-render use a host that serves variables from a map. Every operation but title
// gets the layout that asks, so that one host can serve several layouts.
#pragma once

#include <memory>
#include <string>

#include "cushy/NumberVariable.h"
#include "graphics/IntRect.h"
#include "speclang/SpecLanguage.h"

namespace tw {

class CushyView;
class Font;
class Image;
class View;

class CushyHost {
public:
    virtual ~CushyHost() = default;

    // The default title of an alert box: the product's name.
    virtual std::string title() = 0;
    // Shows the message in the plug-in's own way; false leaves it to a message box.
    virtual bool reportError(CushyView& view, const std::string& message) = 0;
    // Rereads the string table and loads the main layout again.
    virtual void reload(CushyView& view) = 0;
    // Takes a snapshot of the model and refreshes the root.
    virtual void update(CushyView& view) = 0;
    virtual std::string layoutSource(CushyView& view, const std::string& name) = 0;
    virtual std::shared_ptr<Image> image(CushyView& view, const std::string& spec) = 0;
    virtual std::shared_ptr<Font> font(CushyView& view, const std::string& spec) = 0;
    virtual std::string file(CushyView& view, const std::string& name) = 0;
    // The translation of `text`, or `text` itself when the table has none.
    virtual std::string translate(CushyView& view, const std::string& text) = 0;
    // A view of a type only the plug-in knows; null leaves the type to Cushy's factory.
    virtual std::shared_ptr<View> createView(CushyView& view, const IntRect& rect, const std::string& type,
                                             const SpecMap& spec) {
        (void)view, (void)rect, (void)type, (void)spec;
        return nullptr;
    }
    virtual bool isEnabled(CushyView& view, const std::string& action, const std::string& params) = 0;
    virtual bool isChecked(CushyView& view, const std::string& action, const std::string& params) = 0;
    virtual void perform(CushyView& view, const std::string& action, const std::string& params) = 0;
    // A variable's value; a name nobody has set reads as the empty string.
    virtual std::string getVariable(CushyView& view, const std::string& name) = 0;
    virtual bool isWritable(CushyView& view, const std::string& name) = 0;
    // The next change is an undo step of its own, even right after one of the same kind:
    // each press of a key is a step, where repeated clicks may make one.
    virtual void keepNextEditApart(CushyView& view) { (void)view; }
    // Brackets a continuous change of a variable (a drag, a typed value).
    virtual void beginEnd(CushyView& view, const std::string& name, bool beginning) = 0;
    virtual void setVariable(CushyView& view, const std::string& name, const std::string& value, bool continuous) = 0;
    // The variable as a number, for a control to hold from the moment its layout loads;
    // by default through the text interface above.
    virtual std::unique_ptr<NumberVariable> numberVariable(CushyView& view, const std::string& name) {
        return std::make_unique<TextNumberVariable>(*this, view, name);
    }
};

}  // namespace tw
