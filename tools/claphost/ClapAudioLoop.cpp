#include "tools/claphost/ClapAudioLoop.h"

#include <algorithm>
#include <chrono>
#include <vector>

namespace tw {

ClapAudioLoop::ClapAudioLoop(HostedClap& plugin, AudioBuffer input, std::uint32_t blockSize)
    : plugin_(plugin), input_(std::move(input)), blockSize_(blockSize) {
    plugin_.activate(input_.sampleRate, blockSize_);
    plugin_.processingElsewhere = true;
    thread_ = std::thread([this] { play(); });
}

ClapAudioLoop::~ClapAudioLoop() {
    stop_ = true;
    thread_.join();
    plugin_.processingElsewhere = false;
    plugin_.deactivate();
}

void ClapAudioLoop::play() {
    const std::uint32_t ins = std::max<std::uint32_t>(plugin_.channels(true), 1);
    const std::uint32_t outs = std::max<std::uint32_t>(plugin_.channels(false), 1);
    std::vector<std::vector<float>> in(ins, std::vector<float>(blockSize_)), out(outs, std::vector<float>(blockSize_));
    std::vector<float*> inPointers, outPointers;
    for (auto& b : in) inPointers.push_back(b.data());
    for (auto& b : out) outPointers.push_back(b.data());
    const long frames = input_.frames();
    long position = 0;
    const auto period = std::chrono::nanoseconds(std::int64_t(1e9 * blockSize_ / input_.sampleRate));
    auto next = std::chrono::steady_clock::now();
    while (!stop_) {
        for (std::uint32_t c = 0; c < ins; ++c) {
            const int source = std::min(static_cast<int>(c), input_.channels - 1);
            for (std::uint32_t k = 0; k < blockSize_; ++k)
                in[c][k] = input_.samples[std::size_t(((position + k) % frames) * input_.channels + source)];
        }
        plugin_.process(inPointers.data(), outPointers.data(), blockSize_);
        position = (position + blockSize_) % frames;
        next += period;
        std::this_thread::sleep_until(next);
    }
}

}  // namespace tw
