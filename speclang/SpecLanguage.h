// The scanners of the Cushy spec language. A spec text is a nest of maps and lists that
// stays text: one level is parsed into labels and raw values, and each value is read only
// when its owner asks, with the reader that fits. Layouts, actions, patch texts, the string
// table, image specs and the version-check reply are all read this way.
//
// Texts end at NUL; the byte 0x1A ends every scan as well. The scanners never fail: a text
// that is wrong shows later, as a wrong number or a missing key.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tw {

// One level of a map: label (already unquoted) to raw value, ordered by plain byte
// comparison. When a label occurs twice, the first occurrence stays.
using SpecMap = std::map<std::string, std::string, std::less<>>;

// One level of a list: raw values in text order.
using SpecList = std::vector<std::string>;

// A raw value is the text of a value as scanned: a block with its braces, a quoted string
// with its quotes and escapes, or a bare value whose runs of blanks are one blank and whose
// trailing comment is gone. An absent value is the empty string, which every reader takes
// as a request for its default.

// The first position at or behind `p` that is neither white space nor a comment. Blank, tab
// and vertical tab are white space, and so are CR and LF unless `stopAtNewline` is set.
// "//" comments run to the line end, "/*" comments nest.
const char* skipWhite(const char* p, bool stopAtNewline);

// With `p` on a quote (either kind), the position behind the string. A string that is not
// closed ends before its line end.
const char* scanString(const char* p);

// With `p` on '{', the position behind the matching '}'. Strings and comments inside are
// passed whole, so their braces do not count.
const char* scanBlock(const char* p);

// Scans one raw value into `out`, and answers the position behind it and behind the white
// space that follows on the same line.
const char* scanValue(const char* p, std::string& out);

// Scans one label into `out`, unquoted, and answers the position behind it.
const char* scanLabel(const char* p, std::string& out);

// The items of a list, written with or without its outer braces. Commas and semicolons
// separate; a line end or a block also ends an item.
SpecList parseList(const std::string& text);

// The entries of a map, written with or without its outer braces. An entry is a label,
// then ':' or '=' and a value that starts on the same line, or the label alone.
SpecMap parseMap(const std::string& text);

// The raw value under `label`, or the empty string when the map has no such label.
const std::string& lookup(const SpecMap& map, std::string_view label);

// "true" or "false" in any case; anything else gives `defaultValue`.
bool toBool(const std::string& raw, bool defaultValue);

// The C integer literal at the start of `raw`, after white space and an optional sign, held
// to the 32-bit range; `defaultValue` when none is there.
std::int32_t toInt(const std::string& raw, std::int32_t defaultValue);

// A map written back as text, one "label: value" line each, which parseMap reads again.
// Labels must be bare words; values are raw values.
std::string formatMap(const SpecMap& map);

}  // namespace tw
