// The vector paths of the engine give, bit for bit, what the plain order of operations
// gives: these plain versions are written lane by lane and compared over long runs.
#include "engine/DiffuserUnit.h"
#include "engine/EngineTables.h"
#include "engine/HilbertPair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

namespace tw {
namespace {

struct PlainHilbertPair {
    float outputs[4][8][4] = {};
    float inputs[4][8][4] = {};
    float delayRing[4][2] = {};
    uint32_t ringIndex = 0;

    static constexpr float kChainA[4] = {0.98279536f, 0.91543084f, 0.66452849f, 0.13199975f};
    static constexpr float kChainB[4] = {0.99520773f, 0.96030170f, 0.82685614f, 0.41205746f};

    void step(uint32_t ringSize, const float in[4], float out[4]) {
        uint32_t slot = ringIndex & (ringSize - 1);
        float* delayed = delayRing[slot & (ringSize / 2 - 1)];
        float x[4] = {in[0], in[1], delayed[0], delayed[1]};
        delayed[0] = in[2];
        delayed[1] = in[3];
        for (int s = 0; s < 4; ++s) {
            for (int lane = 0; lane < 4; ++lane) {
                float c = lane < 2 ? kChainA[s] : kChainB[s];
                float y = (x[lane] + outputs[s][slot][lane]) * c - inputs[s][slot][lane];
                inputs[s][slot][lane] = x[lane];
                outputs[s][slot][lane] = y;
                x[lane] = y;
            }
        }
        ringIndex = slot + 1;
        std::memcpy(out, x, sizeof(x));
    }
};

TEST(SimdEquality, HilbertPairMatchesThePlainOrderOfOperations) {
    std::mt19937 generator(11);
    std::uniform_real_distribution<float> signal(-1.0f, 1.0f);
    for (uint32_t ringSize : {2u, 4u, 8u}) {
        HilbertPair fast;
        fast.clear();
        PlainHilbertPair plain;
        for (int n = 0; n < 20000; ++n) {
            alignas(16) float in[4] = {signal(generator), signal(generator), signal(generator), signal(generator)};
            alignas(16) float expected[4];
            alignas(16) float got[4];
            plain.step(ringSize, in, expected);
            _mm_store_ps(got, fast.step(ringSize - 1, _mm_load_ps(in)));
            ASSERT_EQ(std::memcmp(expected, got, sizeof(got)), 0) << "ring " << ringSize << " sample " << n;
        }
    }
}

struct PlainDiffuserUnit {
    std::vector<float> ring = std::vector<float>(DiffuserUnit::kFrames * 4, 0.0f);
    float lengths[4] = {};
    float lastTaps[4] = {};

    void step(float& left, float& right, uint32_t w, uint32_t mask, float g, float smooth, bool first,
              const float targets[4]) {
        const float* table = engineTables().tap;
        if (first) {
            for (int c = 0; c < 4; ++c) {
                ring[mask * 4 + c] = 0.0f;
                lengths[c] = targets[c];
            }
        } else {
            for (int c = 0; c < 4; ++c) {
                float n = (targets[c] - lengths[c]) * smooth + lengths[c];
                if (std::fabs(n - lengths[c]) >= 1e-6f) lengths[c] = n;
            }
        }
        float t[4];
        for (int c = 0; c < 4; ++c) {
            int32_t fixed = std::max(static_cast<int32_t>(lengths[c] * 128.0f), 192);
            int32_t r = fixed & 127;
            int32_t j = r < 64 ? r + 128 : r;
            int32_t i = r < 64 ? (fixed - 128) >> 7 : fixed >> 7;
            int32_t p = static_cast<int32_t>(w) - i;
            float y = 0.0f;
            if (p >= 0) {
                y = (ring[(static_cast<uint32_t>(p) & mask) * 4 + c] - lastTaps[c]) * table[j] +
                    ring[(static_cast<uint32_t>(p - 1) & mask) * 4 + c];
            }
            lastTaps[c] = y;
            t[c] = y;
        }
        float u = t[0] * g + left;
        float v = t[2] * g + u;
        float ur = t[1] * g + right;
        float vr = t[3] * g + ur;
        float* frame = &ring[(w & mask) * 4];
        frame[2] = v;
        frame[3] = vr;
        frame[0] = t[2] - v * g;
        frame[1] = t[3] - vr * g;
        left = t[0] - u * g;
        right = t[1] - ur * g;
    }
};

TEST(SimdEquality, DiffuserUnitMatchesThePlainOrderOfOperations) {
    buildEngineTables();
    std::mt19937 generator(5);
    std::uniform_real_distribution<float> signal(-1.0f, 1.0f);
    std::uniform_real_distribution<float> length(0.0f, 2000.0f);
    const uint32_t mask = 4095;
    DiffuserUnit fast;
    fast.clear();
    PlainDiffuserUnit plain;
    uint32_t write = 0;
    for (int n = 0; n < 60000; ++n) {
        if (n % 3000 == 0) {
            for (float& t : fast.targets) t = length(generator);
        }
        bool first = n == 0 || n == 31000;
        if (n == 31000) write = 0;  // a wake restarts the write index
        float g = 0.25f + 0.7f * static_cast<float>(n % 1000) / 1000.0f;
        float l1 = signal(generator), r1 = signal(generator);
        float l2 = l1, r2 = r1;
        plain.step(l1, r1, write, mask, g, 0.0013f, first, fast.targets);
        fast.step(l2, r2, write, mask, g, 0.0013f, first);
        ASSERT_EQ(l1, l2) << n;
        ASSERT_EQ(r1, r2) << n;
        if (++write > 0xffff) write = 0x8000;
    }
    EXPECT_EQ(std::memcmp(plain.ring.data(), fast.ring(), (mask + 1) * 4 * sizeof(float)), 0);
    EXPECT_EQ(std::memcmp(plain.lengths, fast.lengths(), sizeof(plain.lengths)), 0);
}

}  // namespace
}  // namespace tw
