// Tidewake as a CLAP product: its descriptor and factories, for the plug-in's entry and
// for the tests that link the plug-in into their own program.
#pragma once

#include "clap/ClapEntry.h"

namespace tw {

const clap::Product& tidewakeClap();

}  // namespace tw
