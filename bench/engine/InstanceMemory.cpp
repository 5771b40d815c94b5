// Resident memory per instance: loads Tidewake.so, opens 50 instances at 48 kHz in this
// one process, and reads the process's resident size before, with the instances idle, and
// after each has run a few seconds of sound with every ring in use.
//
//   bench_instance_memory [path/to/Tidewake.so]
#include <cmath>
#include <cstdio>
#include <fstream>
#include <memory>
#include <vector>

#include "tools/vst2host/HostedPlugin.h"

namespace {

constexpr int kInstances = 50;
constexpr float kRate = 48000.0f;
constexpr int kBlock = 512;

double residentMiB() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return static_cast<double>(resident) * 4096.0 / (1024.0 * 1024.0);
}

}  // namespace

int main(int argc, char** argv) {
    const char* path = argc > 1 ? argv[1] : TIDEWAKE_PLUGIN;
    std::vector<float> in[2] = {std::vector<float>(kBlock), std::vector<float>(kBlock)};
    std::vector<float> out[2] = {std::vector<float>(kBlock), std::vector<float>(kBlock)};
    float* ins[2] = {in[0].data(), in[1].data()};
    float* outs[2] = {out[0].data(), out[1].data()};

    // One instance made and gone first, so the library and the process-wide tables count
    // in the baseline rather than against the instances.
    { tw::HostedPlugin warm(path); }
    tw::HostedPlugin library(path);
    double base = residentMiB();

    std::vector<std::unique_ptr<tw::HostedPlugin>> plugins;
    for (int i = 0; i < kInstances; ++i) {
        plugins.push_back(std::make_unique<tw::HostedPlugin>(path));
        tw::HostedPlugin& p = *plugins.back();
        p.open(kRate, kBlock);
        p.resume();
        p.process(ins, outs, kBlock);  // silent input: the engine rests
    }
    double idle = residentMiB();

    // Long delay, full smear, feedback: every ring is written through at least once.
    for (auto& plugin : plugins) {
        tw::HostedPlugin& p = *plugin;
        p.effect().setParameter(&p.effect(), p.findParameter("Delay Time"), 1.0f);
        p.effect().setParameter(&p.effect(), p.findParameter("Smear Amount"), 1.0f);
        p.effect().setParameter(&p.effect(), p.findParameter("Feedback Amount"), 0.5f);
        for (long at = 0; at < static_cast<long>(kRate * 3); at += kBlock) {
            for (int k = 0; k < kBlock; ++k) {
                float v = 0.3f * std::sin(0.05f * static_cast<float>(at + k));
                in[0][k] = in[1][k] = v;
            }
            p.process(ins, outs, kBlock);
        }
    }
    double active = residentMiB();

    std::printf("instances:            %d at %.0f Hz\n", kInstances, kRate);
    std::printf("baseline:             %.1f MiB\n", base);
    std::printf("per instance, idle:   %.3f MiB\n", (idle - base) / kInstances);
    std::printf("per instance, in use: %.3f MiB\n", (active - base) / kInstances);
    return 0;
}
