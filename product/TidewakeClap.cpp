#include "product/TidewakeClap.h"

#include <string>

#include <clap/plugin-features.h>

#include "product/TidewakeDescriptor.h"
#include "product/TidewakeEditorFactory.h"
#include "product/TidewakeFactory.h"

namespace tw {

namespace {

// "major.minor.bugfix" from the descriptor's version word.
std::string versionText(std::uint32_t version) {
    return std::to_string((version >> 16) & 0xff) + "." + std::to_string((version >> 8) & 0xff) + "." +
           std::to_string(version & 0xff);
}

}  // namespace

const clap::Product& tidewakeClap() {
    static const ModelDescriptor& d = tidewakeDescriptor();
    static const std::string version = versionText(d.version);
    static const char* features[] = {CLAP_PLUGIN_FEATURE_AUDIO_EFFECT, CLAP_PLUGIN_FEATURE_DELAY,
                                     CLAP_PLUGIN_FEATURE_FREQUENCY_SHIFTER, CLAP_PLUGIN_FEATURE_STEREO, nullptr};
    static const clap::Product product{
        "Tidewake",
        {CLAP_VERSION_INIT, "com.marlinworks.tidewake", d.publicName.c_str(), d.vendorName.c_str(), "", "", "",
         version.c_str(), "A frequency-shifting delay", features},
        []() -> std::unique_ptr<ModelFactory> { return std::make_unique<TidewakeFactory>(); },
        []() -> const EditorFactory& { return tidewakeEditor(); }};
    return product;
}

}  // namespace tw
