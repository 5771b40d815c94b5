#include "product/ShifterProcessor.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tw;

TEST(ShifterProcessor, NeedleHistoryAdvancesAt50Hz) {
    ShifterProcessor processor;
    FeedbackSink sink;
    processor.reset(48000.0f, 1);
    int pushes = 0;
    float last = 0;
    for (int frame = 0; frame < 6000; ++frame) {  // one second at 48 kHz
        ShifterProcessor::Meters m;
        m.needle = float(frame);
        processor.report(m, 0.5f, sink);
        FeedbackSink::NeedleHistory h = sink.needles();
        if (h[0] != last) {
            ++pushes;
            EXPECT_EQ(h[1], last) << "entries shift along, newest first";
            last = h[0];
        }
    }
    EXPECT_NEAR(pushes, 50, 1);
}

TEST(ShifterProcessor, LevelIsShownInDecibelsFromMinus60) {
    ShifterProcessor processor;
    FeedbackSink sink;
    processor.reset(44100.0f, 1);
    auto shown = [&](float level) {
        ShifterProcessor::Meters m;
        m.level = level;
        processor.report(m, 0.5f, sink);
        return sink.get(Feedback::measuredInputLevel);
    };
    EXPECT_FLOAT_EQ(shown(1.0f), 1.0f);
    EXPECT_FLOAT_EQ(shown(2.0f), 1.0f);
    EXPECT_NEAR(shown(0.1f), 40.0f / 60.0f, 1e-5f);
    EXPECT_NEAR(shown(0.0f), (20.0f * std::log10(0.004f) + 60.0f) / 60.0f, 1e-5f) << "limited to 0.004 first";
}

TEST(ShifterProcessor, LfoLampLightsOnePercentFromTheCentre) {
    ShifterProcessor processor;
    FeedbackSink sink;
    processor.reset(44100.0f, 1);
    ShifterProcessor::Meters m;
    processor.report(m, 0.5f, sink);
    EXPECT_EQ(sink.get(Feedback::lfoActive), 0.0f);
    processor.report(m, 0.5025f, sink);
    EXPECT_NEAR(sink.get(Feedback::lfoActive), 0.5f, 1e-3f);
    processor.report(m, 0.0f, sink);
    EXPECT_EQ(sink.get(Feedback::lfoActive), 1.0f);
}

TEST(FeedbackSink, SuspendRestsTheNeedleAndDarkensTheLamps) {
    FeedbackSink sink;
    FeedbackSink::NeedleHistory h{};
    for (int i = 0; i < 10; ++i) h[static_cast<std::size_t>(i)] = float(i + 1);
    sink.publishNeedles(h);
    const float values[5] = {0.1f, 0.2f, 0.3f, 0.4f, 0.5f};
    sink.write(values, 0, 5);
    ShifterProcessor().suspend(sink);
    FeedbackSink::Snapshot s = sink.snapshot();
    for (float n : s.needles) EXPECT_EQ(n, 1.0f);
    EXPECT_EQ(s.values[Feedback::measuredInputLevel], 0.0f);
    EXPECT_EQ(s.values[Feedback::midiActivity], 0.0f);
    EXPECT_EQ(s.values[Feedback::lfoOutputLevel], 0.1f);
    EXPECT_EQ(s.values[Feedback::lfoActive], 0.5f);
}
