// The product's resources and string table as the built library embeds them, loaded once
// per test program, for the tests that open the editor's controller.
#pragma once

#include <string>

#include "cushy/StringTable.h"
#include "graphics/ResourceManager.h"

namespace tw::test {

inline ResourceManager& resources() {
    static ResourceManager manager("Tidewake", std::string(TIDEWAKE_BINARY_DIR) + "/");
    return manager;
}

inline StringTable& strings() {
    static StringTable table;
    static const bool loaded = (table.load(resources(), "Tidewake"), true);
    (void)loaded;
    return table;
}

}  // namespace tw::test
