// The file dialog's script: any text runs against a dialog that accepts everything, and
// every fault is a FormatException with the script's own message.
#include "platform/Exception.h"
#include "platform/FileDialogScript.h"

#include <cstdlib>
#include <string>

namespace {

struct AcceptingDialog final : tw::FileDialogControls {
    int AddCheckButton(int, const std::string&) override { return 0; }
    int AddComboBox(int) override { return 0; }
    int AddControlItem(int, int, const std::string&) override { return 0; }
    int AddEditBox(int, const std::string&) override { return 0; }
    int AddMenu(int, const std::string&) override { return 0; }
    int AddPushButton(int, const std::string&) override { return 0; }
    int AddRadioButtonList(int) override { return 0; }
    int AddSeparator(int) override { return 0; }
    int AddText(int, const std::string&) override { return 0; }
    int EnableOpenDropDown(int) override { return 0; }
    int EndVisualGroup() override { return 0; }
    int MakeProminent(int) override { return 0; }
    int StartVisualGroup(int, const std::string&) override { return 0; }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    AcceptingDialog dialog;
    try {
        tw::runFileDialogScript(text, dialog);
    } catch (const tw::FormatException& e) {
        if (e.message().rfind("Invalid custom file dialog syntax (", 0) != 0) std::abort();
    }
    return 0;
}
