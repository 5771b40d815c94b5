#include "platform/FileDialogScript.h"

#include "platform/Exception.h"
#include "tests/Failure.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace tw {
namespace {

using test::formatFailure;

// Records each call as "Name(arguments)"; answers `answer` to all of them.
struct RecordingDialog final : FileDialogControls {
    std::vector<std::string> calls;
    int answer = 0;
    int note(std::string call) {
        calls.push_back(std::move(call));
        return answer;
    }
    static std::string n(int v) { return std::to_string(v); }
    int AddCheckButton(int id, const std::string& l) override { return note("AddCheckButton(" + n(id) + "," + l + ")"); }
    int AddComboBox(int id) override { return note("AddComboBox(" + n(id) + ")"); }
    int AddControlItem(int id, int item, const std::string& l) override {
        return note("AddControlItem(" + n(id) + "," + n(item) + "," + l + ")");
    }
    int AddEditBox(int id, const std::string& t) override { return note("AddEditBox(" + n(id) + "," + t + ")"); }
    int AddMenu(int id, const std::string& l) override { return note("AddMenu(" + n(id) + "," + l + ")"); }
    int AddPushButton(int id, const std::string& l) override { return note("AddPushButton(" + n(id) + "," + l + ")"); }
    int AddRadioButtonList(int id) override { return note("AddRadioButtonList(" + n(id) + ")"); }
    int AddSeparator(int id) override { return note("AddSeparator(" + n(id) + ")"); }
    int AddText(int id, const std::string& t) override { return note("AddText(" + n(id) + "," + t + ")"); }
    int EnableOpenDropDown(int id) override { return note("EnableOpenDropDown(" + n(id) + ")"); }
    int EndVisualGroup() override { return note("EndVisualGroup()"); }
    int MakeProminent(int id) override { return note("MakeProminent(" + n(id) + ")"); }
    int StartVisualGroup(int id, const std::string& l) override {
        return note("StartVisualGroup(" + n(id) + "," + l + ")");
    }
};

std::string runFailure(const std::string& script) {
    RecordingDialog dialog;
    return formatFailure([&] { runFileDialogScript(script, dialog); });
}

TEST(FileDialogScript, TheProductsScriptAddsItsTwoButtons) {
    std::ifstream file(TIDEWAKE_TEST_DATA "/../../resources/MWPresetLocations.cfdlg", std::ios::binary);
    ASSERT_TRUE(file);
    RecordingDialog dialog;
    runFileDialogScript(std::string(std::istreambuf_iterator<char>(file), {}), dialog);
    EXPECT_EQ(dialog.calls, (std::vector<std::string>{"AddPushButton(11223,Factory Presets)", "AddPushButton(11224,User Presets)"}));
}

TEST(FileDialogScript, StatementsCommentsAndStrings) {
    RecordingDialog dialog;
    runFileDialogScript("/* a comment\n before */ AddComboBox( 7 )\nAddControlItem(7, 1, \"He said \"\"hi\"\"\");"
                        "StartVisualGroup(8, \"\") AddCheckButton(9,\"x, y\") EndVisualGroup ( ) ;"
                        "MakeProminent(9); EnableOpenDropDown(7)/* trailing */",
                        dialog);
    EXPECT_EQ(dialog.calls, (std::vector<std::string>{"AddComboBox(7)", "AddControlItem(7,1,He said \"hi\")",
                                                      "StartVisualGroup(8,)", "AddCheckButton(9,x, y)", "EndVisualGroup()",
                                                      "MakeProminent(9)", "EnableOpenDropDown(7)"}));
    RecordingDialog none;
    runFileDialogScript("  /* nothing */ \n", none);
    EXPECT_TRUE(none.calls.empty());
}

TEST(FileDialogScript, EveryFaultHasItsMessage) {
    const std::string prefix = "Invalid custom file dialog syntax (";
    const std::pair<const char*, std::string> cases[] = {
        {"/* open", "missing '*/')"},
        {"AddComboBox 1", "expected '(')"},
        {"(1)", "expected '(')"},
        {"AddComboBox(,1)", "expected arguments or ')')"},
        {"AddText(1, \"no end)", "missing '\"')"},
        {"AddText(1, \"line\nend\")", "missing '\"')"},
        {"AddText(1,)", "expected argument)"},
        {"AddText(1 \"x\")", "expected ',' or ')')"},
        {"AddButton(1, \"x\")", "unknown function: AddButton)"},
        {"AddPushButton(1)", "expected 2 arguments for function \"AddPushButton\")"},
        {"EndVisualGroup(1)", "expected 0 arguments for function \"EndVisualGroup\")"},
        {"AddPushButton(1, \"a\") AddText(1, \"b\")", "control id 1 already defined)"},
        {"AddControlItem(5, 1, \"a\")", "control id 5 not defined)"},
        {"AddComboBox(5) AddControlItem(5, 1, \"a\") AddControlItem(5, 1, \"b\")", "item id 1 already defined)"},
        {"MakeProminent(3)", "control id 3 not defined)"},
        {"EnableOpenDropDown(3)", "control id 3 not defined)"},
        {"StartVisualGroup(1, \"a\") StartVisualGroup(2, \"b\")", "unexpected \"StartVisualGroup\")"},
        {"EndVisualGroup()", "unexpected \"EndVisualGroup\")"},
    };
    for (const auto& [script, message] : cases) EXPECT_EQ(runFailure(script), prefix + message) << script;

    // A dialog that fails stops the run there.
    RecordingDialog failing;
    failing.answer = -2;
    EXPECT_EQ(test::failure([&] { runFileDialogScript("AddSeparator(1) AddSeparator(2)", failing); }), "File dialog error -2");
    EXPECT_EQ(failing.calls.size(), 1u);
}

}  // namespace
}  // namespace tw
