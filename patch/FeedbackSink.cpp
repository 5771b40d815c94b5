#include "patch/FeedbackSink.h"

namespace tw {

FeedbackSink::FeedbackSink() : needles_(NeedleHistory{}) {
    for (auto& v : values_) v.store(0.0f);
}

void FeedbackSink::write(const float* values, int first, int count) {
    for (int i = 0; i < count; ++i) values_[first + i].store(values[i], std::memory_order_relaxed);
}

void FeedbackSink::set(int index, float value) { values_[index].store(value, std::memory_order_relaxed); }

FeedbackSink::Snapshot FeedbackSink::snapshot() {
    Snapshot s;
    for (int i = 0; i < valueCount; ++i) s.values[i] = get(i);
    s.needles = needles();
    return s;
}

void FeedbackSink::restNeedles() {
    NeedleHistory h = needles();
    h.fill(h[0]);
    needles_.publish(h);
}

}  // namespace tw
