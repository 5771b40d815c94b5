// Quoted strings of the spec language, both ways: every string value that a reader takes
// from a spec goes through unquote, and every text written into a spec or named in a
// message about one goes through quote.
#pragma once

#include <string>
#include <string_view>

namespace tw {

// The bytes that a raw value stands for. A value that does not start with a quote is
// returned as it is; otherwise the bytes behind the quote up to the matching one, with the
// escapes \b \f \n \r \t \v, \x and up to two hexadecimal digits, \ and a C integer literal
// (low 8 bits), and \ before any other byte for that byte.
std::string unquote(const std::string& raw);

// As unquote, as 16-bit text; adds \u with up to 4 and \l with up to 8 hexadecimal digits,
// and widens every other byte on its own. A value without a quote is read as UTF-8.
std::u16string unquoteWide(const std::string& raw);

// A double-quoted literal that unquote reads back to `text`. Control bytes, quotes and
// backslashes are escaped, and so is every byte outside printable ASCII.
std::string quote(std::string_view text);

// As quote for 16-bit text, with \uHHHH for values from 256 up; unquoteWide reads it back.
std::string quoteWide(std::u16string_view text);

// UTF-8 text as 16-bit text (a byte that starts no sequence gives U+FFFD), and back.
// Menu captions and the string table's translations cross between the two.
std::u16string fromUtf8(const std::string& text);
std::string toUtf8(std::u16string_view text);

}  // namespace tw
