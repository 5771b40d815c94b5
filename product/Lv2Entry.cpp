// The two symbols the LV2 bundle's library exports: the plug-in and its UI, both in this
// one library so that the UI works on the plug-in's own instance.
#include "product/TidewakeLv2.h"

extern "C" __attribute__((visibility("default"))) const LV2_Descriptor* lv2_descriptor(uint32_t index) {
    return index == 0 ? tw::lv2::pluginDescriptor(tw::tidewakeLv2()) : nullptr;
}

extern "C" __attribute__((visibility("default"))) const LV2UI_Descriptor* lv2ui_descriptor(uint32_t index) {
    return index == 0 ? tw::lv2::uiDescriptor(tw::tidewakeLv2()) : nullptr;
}
