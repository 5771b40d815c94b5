#include "cushy/Cursor.h"

#include "speclang/SpecQuote.h"
#include "platform/Exception.h"

#include <string_view>

namespace tw {

namespace {

struct CursorName {
    std::string_view name;
    Cursor cursor;
};

// The length plus 13 times the last byte, modulo 32, differs for every name, so one slot
// and one comparison decide.
constexpr std::size_t slotOf(std::string_view word) {
    return (word.size() + 13 * static_cast<unsigned char>(word.back())) & 31;
}

struct CursorTable {
    CursorName slots[32] = {};

    constexpr CursorTable() {
        constexpr CursorName names[] = {
            {"arrow", Cursor::arrow},     {"iBeam", Cursor::iBeam},     {"wait", Cursor::wait},
            {"cross", Cursor::cross},     {"upArrow", Cursor::upArrow}, {"sizeAll", Cursor::sizeAll},
            {"sizeNWSE", Cursor::sizeNWSE}, {"sizeNESW", Cursor::sizeNESW}, {"sizeWE", Cursor::sizeWE},
            {"sizeNS", Cursor::sizeNS},   {"no", Cursor::no},           {"hand", Cursor::hand},
            {"appStarting", Cursor::appStarting}, {"help", Cursor::help},
        };
        for (const CursorName& n : names) {
            if (!slots[slotOf(n.name)].name.empty()) throw "two cursor names share a slot";
            slots[slotOf(n.name)] = n;
        }
    }
};

constexpr CursorTable table;  // a collision fails the build here

}  // namespace

Cursor parseCursor(const std::string& raw, Cursor defaultValue) {
    if (raw.empty()) return defaultValue;
    const std::string word = unquote(raw);
    if (!word.empty()) {
        const CursorName& entry = table.slots[slotOf(word)];
        if (entry.name == word) return entry.cursor;
    }
    throw FormatException("Unrecognized cursor: " + quote(word));
}

}  // namespace tw
