#include "engine/EngineTables.h"

#include "engine/EngineRandom.h"

#include <algorithm>
#include <mutex>

namespace tw {

namespace {

EngineTables tables;

void buildNoise() {
    EngineRandom random;
    random.seed(0xbc614e, 0x159a55e5);
    double sum = 0.0;
    for (float& n : tables.noise) {
        n = (random.next() * 2.0f - 1.0f) * 1e-9f;
        sum += n;
    }
    float mean = static_cast<float>(sum / EngineTables::kNoiseSize);
    for (float& n : tables.noise) n -= mean;
}

void buildSmear() {
    const float left[8] = {23, 31, 41, 47, 59, 67, 73, 83};
    const float right[8] = {29, 37, 43, 53, 61, 71, 79, 89};
    // K makes the right chain's total length equal the left's.
    float leftSum = 0.0f;
    float rightSum = 0.0f;
    for (int k = 0; k < 4; ++k) {
        leftSum += 1.0f / left[k];
        rightSum += 1.0f / right[k];
    }
    float scale = leftSum / rightSum;
    for (int k = 0; k < 4; ++k) {
        tables.t2[k] = 1.0f / left[k];
        tables.t3[k] = 1.0f / left[k + 4];
        tables.t0[k] = scale / right[k];
        tables.t1[k] = scale / right[k + 4];
    }
    for (int j = 0; j < EngineTables::kTapSize; ++j) {
        float f = std::max(static_cast<float>(j) * 0.0078125f, 0.0001f);
        tables.tap[j] = (1.0f - f) / (f + 1.0f);
    }
}

}  // namespace

void buildEngineTables() {
    static std::once_flag once;
    std::call_once(once, [] {
        buildNoise();
        buildSmear();
    });
}

const EngineTables& engineTables() { return tables; }

}  // namespace tw
