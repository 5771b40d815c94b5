// The script that adds a product's own controls to the open and save dialogs: a list of
// calls such as `AddPushButton(11223, "Factory Presets");`, one for each method of a
// dialog's customisation interface. The product's resource `MWPresetLocations` adds the
// two buttons that jump to the factory and the user patches; the file dialog runs the
// script against its own controls.
#pragma once

#include <string>
#include <vector>

namespace tw {

// One call of the script: the function's name and its arguments as text (numbers as
// written, strings without their quotes).
struct FileDialogStatement {
    std::string name;
    std::vector<std::string> arguments;
};

// What a dialog offers a script; every method answers 0, or a negative number for a
// failure of the dialog itself. Ids are read as decimal numbers.
class FileDialogControls {
public:
    virtual int AddCheckButton(int id, const std::string& label) = 0;
    virtual int AddComboBox(int id) = 0;
    virtual int AddControlItem(int id, int item, const std::string& label) = 0;
    virtual int AddEditBox(int id, const std::string& text) = 0;
    virtual int AddMenu(int id, const std::string& label) = 0;
    virtual int AddPushButton(int id, const std::string& label) = 0;
    virtual int AddRadioButtonList(int id) = 0;
    virtual int AddSeparator(int id) = 0;
    virtual int AddText(int id, const std::string& text) = 0;
    virtual int EnableOpenDropDown(int id) = 0;
    virtual int EndVisualGroup() = 0;
    virtual int MakeProminent(int id) = 0;
    virtual int StartVisualGroup(int id, const std::string& label) = 0;

protected:
    ~FileDialogControls() = default;
};

// Reads the statements of a script. Comments run from "/*" to "*/". Faults raise
// FormatException "Invalid custom file dialog syntax (...)".
std::vector<FileDialogStatement> parseFileDialogScript(const std::string& text);

// Parses the script and calls each statement on `controls`, checking names, argument
// counts, ids and groups first, with the same family of messages. A negative answer of
// the dialog raises Exception "File dialog error <code>".
void runFileDialogScript(const std::string& text, FileDialogControls& controls);

}  // namespace tw
