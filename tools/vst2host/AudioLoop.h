// Audio kept running through a hosted plug-in while its editor is open, so that meters
// and feedback move: a thread of its own plays the input round and round in real time,
// in blocks of the size the plug-in was opened with, and drops the output.
#pragma once

#include <atomic>
#include <thread>

#include "tools/common/AudioBuffer.h"
#include "tools/vst2host/HostedPlugin.h"

namespace tw {

class AudioLoop {
public:
    // Resumes the plug-in and starts playing `input` at its own sample rate.
    AudioLoop(HostedPlugin& plugin, AudioBuffer input, int blockSize);
    // Stops the thread, then suspends the plug-in.
    ~AudioLoop();
    AudioLoop(const AudioLoop&) = delete;
    AudioLoop& operator=(const AudioLoop&) = delete;

private:
    void play();

    HostedPlugin& plugin_;
    AudioBuffer input_;
    int blockSize_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

}  // namespace tw
