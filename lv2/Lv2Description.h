// The bundle's description in Turtle: the manifest, the plug-in with its ports and UI, and
// the factory programs as presets. Written at build time from the product itself (its
// parameter rows and its factory bank), so that the description never drifts from the code.
#pragma once

#include <string>

#include "core/Instance.h"
#include "lv2/Lv2Entry.h"

namespace tw::lv2 {

struct BundleDescription {
    std::string manifest;  // manifest.ttl
    std::string plugin;    // <binary stem>.ttl
    std::string presets;   // presets.ttl
};

// `instance` holds the factory programs (and nothing of a user's store); `binary` is the
// library's file name inside the bundle. The ports' defaults are the first program's values.
BundleDescription describeBundle(const Product& product, Instance& instance, const std::string& binary);

}  // namespace tw::lv2
