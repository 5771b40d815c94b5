// Reading a colour from a spec value: views read their fills, frames and text colours
// with it, and the Keel painter its colour arguments. Colours are premultiplied 0xAARRGGBB.
#pragma once

#include <cstdint>
#include <string>

namespace tw {

// An empty value gives `defaultColor`. A C integer literal is the premultiplied value
// itself; `{ r, g, b [, alpha] }` gives integer components (with `$` the component of the
// default) and an alpha fraction (default 1); anything else is one of the sixteen HTML
// colour names or "transparent". Throws FormatException.
std::uint32_t parseColor(const std::string& raw, std::uint32_t defaultColor);

}  // namespace tw
