// Audio kept running through a hosted CLAP plug-in while its editor is open, so that meters
// move and the editor's gestures leave through process, as in a DAW that plays: a thread
// of its own plays the input round and round in real time and drops the output.
#pragma once

#include <atomic>
#include <thread>

#include "tools/claphost/HostedClap.h"

namespace tw {

class ClapAudioLoop {
public:
    // Activates the plug-in at the input's rate and starts playing `input`.
    ClapAudioLoop(HostedClap& plugin, AudioBuffer input, std::uint32_t blockSize);
    // Stops the thread, then deactivates the plug-in.
    ~ClapAudioLoop();
    ClapAudioLoop(const ClapAudioLoop&) = delete;
    ClapAudioLoop& operator=(const ClapAudioLoop&) = delete;

private:
    void play();

    HostedClap& plugin_;
    AudioBuffer input_;
    std::uint32_t blockSize_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

}  // namespace tw
