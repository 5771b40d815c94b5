#include "tools/vst2host/AudioLoop.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace tw {

AudioLoop::AudioLoop(HostedPlugin& plugin, AudioBuffer input, int blockSize)
    : plugin_(plugin), input_(std::move(input)), blockSize_(blockSize) {
    plugin_.resume();
    thread_ = std::thread([this] { play(); });
}

AudioLoop::~AudioLoop() {
    stop_ = true;
    thread_.join();
    plugin_.suspend();
}

void AudioLoop::play() {
    vst2::AEffect& e = plugin_.effect();
    const int ins = std::max(e.numInputs, 1), outs = std::max(e.numOutputs, 1);
    std::vector<std::vector<float>> in(static_cast<std::size_t>(ins), std::vector<float>(static_cast<std::size_t>(blockSize_)));
    std::vector<std::vector<float>> out(static_cast<std::size_t>(outs), std::vector<float>(static_cast<std::size_t>(blockSize_)));
    std::vector<float*> inPointers, outPointers;
    for (auto& b : in) inPointers.push_back(b.data());
    for (auto& b : out) outPointers.push_back(b.data());
    const long frames = input_.frames();
    long position = 0;
    const auto period = std::chrono::nanoseconds(std::int64_t(1e9 * blockSize_ / input_.sampleRate));
    auto next = std::chrono::steady_clock::now();
    while (!stop_) {
        for (int c = 0; c < ins; ++c) {
            const int source = std::min(c, input_.channels - 1);
            for (int k = 0; k < blockSize_; ++k)
                in[std::size_t(c)][std::size_t(k)] =
                    input_.samples[std::size_t(((position + k) % frames) * input_.channels + source)];
        }
        e.processReplacing(&e, inPointers.data(), outPointers.data(), blockSize_);
        position = (position + blockSize_) % frames;
        next += period;
        std::this_thread::sleep_until(next);
    }
}

}  // namespace tw
