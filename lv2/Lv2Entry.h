// The descriptors an LV2 host reads from the library (lv2_descriptor, lv2ui_descriptor),
// made for one product. The product's entry file defines the two exported functions with
// these.
#pragma once

#include <memory>

#include <lv2/core/lv2.h>
#include <lv2/ui/ui.h>

#include "editor/EditorFactory.h"
#include "patch/ModelFactory.h"

namespace tw::lv2 {

struct Product {
    const char* name;        // for what the entry points report
    const char* pluginUri;
    const char* uiUri;
    std::unique_ptr<ModelFactory> (*makeFactory)();
    const EditorFactory& (*editor)();
};

// `product` must live as long as the library (a static).
const LV2_Descriptor* pluginDescriptor(const Product& product);
const LV2UI_Descriptor* uiDescriptor(const Product& product);

class Lv2Plugin;
// The plug-in behind a handle that pluginDescriptor's instantiate made: what the UI gets
// through instance access.
Lv2Plugin& pluginOf(LV2_Handle handle);

}  // namespace tw::lv2
