#include "cushy/CushyActions.h"

#include "cushy/CushyHost.h"
#include "cushy/CushyView.h"
#include "cushy/HelperLook.h"
#include "cushy/MessageBox.h"
#include "cushy/PopupMenu.h"
#include "cushy/TagExpansion.h"
#include "cushy/TextEntryDialog.h"
#include "platform/Exception.h"
#include "platform/Launcher.h"
#include "platform/QvxDebug.h"
#include "speclang/SpecExpression.h"
#include "speclang/SpecLanguage.h"
#include "speclang/SpecQuote.h"

#include <optional>

namespace tw {

namespace {

enum class Op { execute, enabled, checked };

enum class Builtin { nop, set, switchCase, batch, execute, alert, hint, popup, edit, launch, reload, assert };

struct BuiltinName {
    std::string_view name;
    Builtin action;
};

// A perfect hash over the twelve names: (second byte XOR length) AND 15 for lengths 3 to 7.
constexpr std::optional<BuiltinName> slots[16] = {
    BuiltinName{"edit", Builtin::edit},     BuiltinName{"switch", Builtin::switchCase},
    std::nullopt,                           BuiltinName{"reload", Builtin::reload},
    BuiltinName{"batch", Builtin::batch},   BuiltinName{"assert", Builtin::assert},
    BuiltinName{"set", Builtin::set},       BuiltinName{"launch", Builtin::launch},
    std::nullopt,                           BuiltinName{"alert", Builtin::alert},
    BuiltinName{"popup", Builtin::popup},   std::nullopt,
    BuiltinName{"nop", Builtin::nop},       BuiltinName{"hint", Builtin::hint},
    std::nullopt,                           BuiltinName{"execute", Builtin::execute},
};

std::optional<Builtin> findBuiltin(const std::string& name) {
    if (name.size() < 3 || name.size() > 7) return std::nullopt;
    const auto& slot = slots[(static_cast<unsigned char>(name[1]) ^ name.size()) & 15];
    if (!slot || slot->name != name) return std::nullopt;
    return slot->action;
}

bool run(CushyView& view, Op op, const std::string& action, const std::string& params) {
    switch (op) {
        case Op::execute: view.execute(action, params); return true;
        case Op::enabled: return view.isEnabled(action, params);
        case Op::checked: return view.isChecked(action, params);
    }
    return false;
}

// An action item `{ name, params }`; absent params are empty.
bool runItem(CushyView& view, Op op, const std::string& item) {
    SpecList parts = parseList(item);
    parts.resize(2);
    return run(view, op, unquote(parts[0]), parts[1]);
}

bool has(const SpecMap& map, std::string_view key) { return map.find(key) != map.end(); }

std::string variable(CushyView& view, const std::string& name) { return view.host().getVariable(view, name); }

bool setAction(CushyView& view, Op op, const std::string& params) {
    SpecList parts = parseList(params);
    parts.resize(2);
    const std::string name = unquote(parts[0]), value = unquote(parts[1]);
    switch (op) {
        case Op::execute: view.host().setVariable(view, name, value, false); return true;
        case Op::enabled: return view.host().isWritable(view, name);
        case Op::checked: return variable(view, name) == value;
    }
    return false;
}

bool switchAction(CushyView& view, Op op, const std::string& params) {
    const SpecMap map = parseMap(params);
    const std::string value = variable(view, unquote(lookup(map, "variable")));
    if (op == Op::checked) {
        if (!has(map, "checked")) return false;
        for (const std::string& item : parseList(lookup(map, "checked")))
            if (unquote(item) == value) return true;
        return false;
    }
    const SpecMap cases = parseMap(lookup(map, "cases"));
    const std::string* item = nullptr;
    if (const auto found = cases.find(value); found != cases.end()) item = &found->second;
    else if (const auto fallback = map.find("default"); fallback != map.end()) item = &fallback->second;
    if (item == nullptr) return false;
    return runItem(view, op, *item);
}

bool batchAction(CushyView& view, Op op, const std::string& params) {
    bool all = true;
    for (const std::string& item : parseList(params)) {
        if (op == Op::execute) runItem(view, op, item);
        else if (!runItem(view, op, item)) all = false;
    }
    return all;
}

bool executeActionOf(CushyView& view, Op op, const std::string& params) {
    const SpecMap map = parseMap(params);
    std::string action;
    if (has(map, "action")) action = expand(unquote(lookup(map, "action")), view.host(), view);
    else if (has(map, "actionVariable")) action = variable(view, unquote(lookup(map, "actionVariable")));
    else throw FormatException("Invalid execute params : " + quote(params));
    std::string actionParams;
    if (has(map, "params")) actionParams = expand(unquote(lookup(map, "params")), view.host(), view);
    else if (has(map, "paramsVariable")) actionParams = variable(view, unquote(lookup(map, "paramsVariable")));
    return run(view, op, action, actionParams);
}

template <class Enum, std::size_t N>
Enum readName(const std::string& value, const std::string_view (&names)[N], Enum fallback, const char* message) {
    if (value.empty()) return fallback;
    for (std::size_t i = 0; i < N; ++i)
        if (names[i] == value) return Enum(i);
    throw FormatException(message + quote(value));
}

void alertAction(CushyView& view, const std::string& params) {
    static constexpr std::string_view types[] = {"plain", "question", "warning", "info", "error"};
    static constexpr std::string_view sets[] = {"ok", "ok cancel", "retry cancel", "yes no", "yes no cancel",
                                                "abort retry ignore"};
    static constexpr std::string_view buttons[] = {"ok", "cancel", "retry", "yes", "no", "abort", "ignore"};
    const SpecMap map = parseMap(params);
    const AlertType type = readName(unquote(lookup(map, "type")), types, AlertType::plain, "Invalid alert type : ");
    const AlertButtons set = readName(unquote(lookup(map, "buttons")), sets, AlertButtons::ok, "Invalid alert buttons : ");
    const AlertButton defaultButton =
        readName(unquote(lookup(map, "default")), buttons, AlertButton::ok, "Invalid default button : ");
    const std::string title =
        has(map, "title") ? expand(unquote(lookup(map, "title")), view.host(), view) : view.host().title();
    const std::string text = expand(unquote(lookup(map, "text")), view.host(), view);
    const AlertButton pressed = showMessageBox(view, title, text, type, set, defaultButton);
    const SpecMap reactions = parseMap(lookup(map, "reactions"));
    if (const auto reaction = reactions.find(buttonName(pressed)); reaction != reactions.end())
        runItem(view, Op::execute, reaction->second);
}

// Where a "hint" or "popup" goes, in the window's coordinates: `position` in the layout's
// coordinates, else the last click plus `offset`.
ViewPoint placement(CushyView& view, const SpecMap& map, std::pair<std::int32_t, std::int32_t> defaultOffset) {
    // Actions are written for the layout at 100 %, like the layout itself.
    const Zoom& zoom = view.zoom();
    if (has(map, "position")) {
        const auto [x, y] = parseIntPair(lookup(map, "position"), {0, 0});
        return {view.screenFrame().left + zoom.length(x), view.screenFrame().top + zoom.length(y)};
    }
    const auto [dx, dy] = parseIntPair(lookup(map, "offset"), defaultOffset);
    return {view.lastClick().x + zoom.length(dx), view.lastClick().y + zoom.length(dy)};
}

void hintAction(CushyView& view, const std::string& params) {
    if (!view.hintWindow()) return;
    const SpecMap map = parseMap(params);
    const ViewPoint at = placement(view, map, {0, 22});
    view.showActionHint(expand(unquote(lookup(map, "text")), view.host(), view), at.x, at.y);
}

void popupAction(CushyView& view, const std::string& params) {
    const SpecMap map = parseMap(params);
    const ViewPoint at = placement(view, map, {0, 0});
    struct Entry {
        std::string action, params;
    };
    std::vector<MenuItem> items;
    std::vector<Entry> entries;
    for (const std::string& raw : parseList(expand(lookup(map, "items"), view.host(), view))) {
        if (raw == "-") {
            items.push_back(MenuItem{{}, true, false, false});
            entries.push_back({});
            continue;
        }
        SpecList parts = parseList(raw);
        parts.resize(3);
        Entry entry{unquote(parts[1]), parts[2]};
        items.push_back(MenuItem{unquote(parts[0]), false, view.isEnabled(entry.action, entry.params),
                                 view.isChecked(entry.action, entry.params)});
        entries.push_back(std::move(entry));
    }
    Window* window = view.window();
    if (window == nullptr) return;
    PopupMenu menu(HelperFonts::load(view.host(), view), std::move(items));
    const std::int32_t choice = menu.track(*window, at.x, at.y);
    if (choice < 0) return;
    const Entry& chosen = entries[std::size_t(choice)];
    if (const std::string store = unquote(lookup(map, "storeAction")); !store.empty())
        view.host().setVariable(view, store, chosen.action, false);
    if (const std::string store = unquote(lookup(map, "storeParams")); !store.empty())
        view.host().setVariable(view, store, chosen.params, false);
    view.execute(chosen.action, chosen.params);
}

bool editAction(CushyView& view, Op op, const std::string& params) {
    const SpecMap map = parseMap(params);
    const std::string name = unquote(lookup(map, "variable"));
    const bool writable = view.host().isWritable(view, name);
    if (op != Op::execute || !writable) return op == Op::enabled && writable;
    const std::string prompt = expand(unquote(lookup(map, "text")), view.host(), view);
    const std::string start =
        has(map, "default") ? expand(unquote(lookup(map, "default")), view.host(), view) : variable(view, name);
    Window* window = view.window();
    if (window == nullptr) return true;
    TextEntryDialog dialog(HelperFonts::load(view.host(), view), prompt, start);
    if (!dialog.run(*window, view.title())) return true;
    view.host().beginEnd(view, name, true);
    view.host().setVariable(view, name, dialog.value(), true);
    view.host().beginEnd(view, name, false);
    if (has(map, "reaction")) runItem(view, Op::execute, lookup(map, "reaction"));
    return true;
}

void launchAction(CushyView& view, const std::string& params) {
    std::string target = expand(unquote(params), view.host(), view);
    if (target.starts_with("http://") || target.starts_with("https://") || target.starts_with("telnet://")) {
        launchWithSystem(LaunchKind::url, target);
        return;
    }
    if (target.starts_with("file://")) target.erase(0, 7);
    launchWithSystem(LaunchKind::file, target);
}

bool assertAction(CushyView& view, const std::string& params) {
    const SpecMap map = parseMap(params);
    if (has(map, "variable")) {
        static constexpr std::string_view relations[] = {"is", "isNot", "sameAs", "differsFrom"};
        const std::string value = variable(view, unquote(lookup(map, "variable")));
        for (std::size_t i = 0; i < 4; ++i) {
            const auto found = map.find(relations[i]);
            if (found == map.end()) continue;
            const std::string expected = i < 2 ? unquote(found->second) : variable(view, unquote(found->second));
            const bool wantEqual = i == 0 || i == 2;
            if ((value == expected) != wantEqual)
                throw QvxDebug::Assert("Cushy assertion failed: " + quote(value) + " " + std::string(relations[i]) +
                                       ": " + quote(expected));
            return true;
        }
    } else if (has(map, "action")) {
        const std::string action = unquote(lookup(map, "action"));
        const std::string& actionParams = lookup(map, "params");
        bool checkedAny = false;
        const auto compare = [&](const char* key, bool actual, const char* is, const char* isNot) {
            const auto found = map.find(key);
            if (found == map.end()) return;
            checkedAny = true;
            if (toBool(found->second, false) != actual)
                throw QvxDebug::Assert("Cushy assertion failed: action " + quote(action) + " with params " +
                                       quote(actionParams) + (actual ? is : isNot));
        };
        if (has(map, "enabled")) compare("enabled", view.isEnabled(action, actionParams), " is enabled", " is not enabled");
        if (has(map, "checked")) compare("checked", view.isChecked(action, actionParams), " is checked", " is not checked");
        if (checkedAny) return true;
    }
    throw FormatException("Invalid assert params : " + quote(params));
}

bool dispatch(CushyView& view, Op op, const std::string& action, const std::string& params) {
    const std::optional<Builtin> builtin = findBuiltin(action);
    if (!builtin) {
        CushyHost& host = view.host();
        switch (op) {
            case Op::execute: host.perform(view, action, params); return true;
            case Op::enabled: return host.isEnabled(view, action, params);
            case Op::checked: return host.isChecked(view, action, params);
        }
    }
    switch (*builtin) {
        case Builtin::set: return setAction(view, op, params);
        case Builtin::switchCase: return switchAction(view, op, params);
        case Builtin::batch: return batchAction(view, op, params);
        case Builtin::execute: return executeActionOf(view, op, params);
        case Builtin::edit: return editAction(view, op, params);
        case Builtin::hint:
            if (op == Op::execute) hintAction(view, params);
            return op == Op::enabled && view.hintWindow() != nullptr;
        default: break;
    }
    // The rest are always enabled and never checked.
    if (op != Op::execute) return op == Op::enabled;
    switch (*builtin) {
        case Builtin::alert: alertAction(view, params); break;
        case Builtin::popup: popupAction(view, params); break;
        case Builtin::launch: launchAction(view, params); break;
        case Builtin::reload: view.postEvent(CushyView::reloadEvent); break;
        case Builtin::assert: assertAction(view, params); break;
        default: break;
    }
    return true;
}

}  // namespace

void executeAction(CushyView& view, const std::string& action, const std::string& params) {
    dispatch(view, Op::execute, action, params);
}

bool actionEnabled(CushyView& view, const std::string& action, const std::string& params) {
    return dispatch(view, Op::enabled, action, params);
}

bool actionChecked(CushyView& view, const std::string& action, const std::string& params) {
    return dispatch(view, Op::checked, action, params);
}

}  // namespace tw
