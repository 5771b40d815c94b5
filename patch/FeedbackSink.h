// Values flowing from the audio thread to the editor: the product's feedback values
// (LFO output, input level, the LFO needle, the MIDI lamp, the LFO lamp) and a short
// history of needle positions. The audio thread writes; the editor takes snapshots.
#pragma once

#include <array>
#include <atomic>

#include "platform/SlotCell.h"

namespace tw {

class FeedbackSink {
public:
    static constexpr int valueCount = 5;
    static constexpr int historyLength = 10;  // needle positions at 50 Hz, index 0 the newest

    using NeedleHistory = std::array<float, historyLength>;

    struct Snapshot {
        std::array<float, valueCount> values;
        NeedleHistory needles;
    };

    FeedbackSink();

    // Writes `count` values starting at `first`.
    void write(const float* values, int first, int count);
    void set(int index, float value);
    float get(int index) const { return values_[index].load(std::memory_order_relaxed); }

    void publishNeedles(const NeedleHistory& history) { needles_.publish(history); }
    NeedleHistory needles() { return needles_.read(); }

    Snapshot snapshot();

    // When audio stops: the needle history rests at its newest value.
    void restNeedles();

private:
    std::array<std::atomic<float>, valueCount> values_;
    // Three slots: the audio thread publishes while the editor may hold one slot, so a
    // free slot always remains and the audio thread never waits.
    SlotCell<NeedleHistory, Retire::Plain, 3> needles_;
};

}  // namespace tw
