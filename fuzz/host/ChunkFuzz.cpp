// Chunks as a host hands them back: the first byte chooses a program chunk (odd) or a
// bank chunk (even), the rest is the chunk. The dispatcher must answer, never crash.
#include "fuzz/host/FuzzInstance.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    if (size == 0) return 0;
    vst2::AEffect* effect = tw::fuzz::instance();
    std::vector<unsigned char> chunk(data + 1, data + size);
    vst2::intptr answer = effect->dispatcher(effect, vst2::effSetChunk, data[0] & 1, static_cast<vst2::intptr>(chunk.size()),
                                             chunk.data(), 0);
    if (answer != 0 && answer != static_cast<vst2::intptr>(chunk.size())) __builtin_trap();
    void* out = nullptr;
    if (effect->dispatcher(effect, vst2::effGetChunk, data[0] & 1, 0, &out, 0) <= 0) __builtin_trap();
    return 0;
}
