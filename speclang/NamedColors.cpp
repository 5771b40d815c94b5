#include "speclang/NamedColors.h"

namespace tw {

namespace {

struct NamedColor {
    std::string_view name;
    std::uint32_t value;
};

constexpr NamedColor namedColors[] = {
    {"aqua", 0xFF00FFFF},  {"black", 0xFF000000}, {"blue", 0xFF0000FF},   {"fuchsia", 0xFFFF00FF},
    {"gray", 0xFF808080},  {"green", 0xFF008000}, {"lime", 0xFF00FF00},   {"maroon", 0xFF800000},
    {"navy", 0xFF000080},  {"olive", 0xFF808000}, {"purple", 0xFF800080}, {"red", 0xFFFF0000},
    {"silver", 0xFFC0C0C0}, {"teal", 0xFF008080}, {"white", 0xFFFFFFFF},  {"yellow", 0xFFFFFF00},
};

}  // namespace

bool findNamedColor(std::string_view name, std::uint32_t& color) {
    for (const NamedColor& c : namedColors) {
        if (c.name == name) {
            color = c.value;
            return true;
        }
    }
    return false;
}

}  // namespace tw
