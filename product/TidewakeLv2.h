// Tidewake as an LV2 product: its URIs and factories, for the bundle's library and for the
// generator of the bundle's description.
#pragma once

#include "lv2/Lv2Entry.h"

namespace tw {

const lv2::Product& tidewakeLv2();

}  // namespace tw
