// The tag language of layout texts: "[var]name[/var]" takes in a variable's value,
// "[xlate]" translates, "[uppercase]" and "[lowercase]" change case, "[windows]" keeps and
// "[mac]" drops its text on this platform. Captions, hints, menus, alerts and the "execute"
// action expand their texts with it.
#pragma once

#include <string>
#include <string_view>

namespace tw {

class CushyHost;
class CushyView;

// The text with every tag resolved, reading variables and translations through `host` for
// `view`. A "[var]" inside an open quote lands quoted (without its outer quotes), so that a
// value can never break the string it lands in; \" \' and \\ lose one level of escaping.
// A text without '[' comes back unchanged. Throws FormatException "Unexpected meta tag: "
// for a closing tag that closes nothing open at its level.
std::string expand(std::string_view text, CushyHost& host, CushyView& view);

// Whether the text holds "[var]": only such texts are expanded again at each refresh.
bool hasVar(std::string_view text);

// Latin-1 case changes, byte by byte.
std::string toUpperLatin1(std::string text);
std::string toLowerLatin1(std::string text);

}  // namespace tw
