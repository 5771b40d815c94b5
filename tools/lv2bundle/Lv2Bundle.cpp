// Writes the LV2 bundle's description (manifest.ttl, Tidewake.ttl, presets.ttl) into a
// folder, at build time, from the product's own parameter rows and factory bank.
//
//   tidewake-lv2-bundle FOLDER
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <memory>
#include <string>

#include "core/Instance.h"
#include "lv2/Lv2Description.h"
#include "product/TidewakeLv2.h"

namespace {

// Nobody to tell: the generator only reads.
struct SilentHost final : tw::HostPort {
    void beginGesture(int) override {}
    void endGesture(int) override {}
    void automate(int, float) override {}
    void updateDisplay() override {}
};

void write(const std::string& path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    if (!out.flush()) throw std::runtime_error("can't write " + path);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: tidewake-lv2-bundle FOLDER\n");
        return 2;
    }
    // The factory programs only: no user's store may leak into the description.
    ::setenv("XDG_CONFIG_HOME", "/nonexistent/tidewake-lv2-bundle", 1);
    try {
        const tw::lv2::Product& product = tw::tidewakeLv2();
        SilentHost host;
        tw::Instance instance(host, product.makeFactory());
        const tw::lv2::BundleDescription d = tw::lv2::describeBundle(product, instance, "Tidewake.so");
        const std::string folder = argv[1];
        write(folder + "/manifest.ttl", d.manifest);
        write(folder + "/Tidewake.ttl", d.plugin);
        write(folder + "/presets.ttl", d.presets);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "tidewake-lv2-bundle: %s\n", e.what());
        return 1;
    }
    return 0;
}
