#include "clap/ClapState.h"

#include <cstdint>

namespace tw::clap {

std::string saveClapState(Instance& instance) {
    std::string bytes = instance.saveState(false);
    bytes.append(programRecordMagic);
    const auto program = static_cast<std::uint32_t>(instance.getCurrentProgram());
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>((program >> shift) & 0xff));
    return bytes;
}

void loadClapState(Instance& instance, std::string_view bytes) {
    int program = -1;
    if (bytes.size() > programRecordSize) {
        const std::string_view record = bytes.substr(bytes.size() - programRecordSize);
        if (record.substr(0, programRecordMagic.size()) == programRecordMagic) {
            std::uint32_t n = 0;
            for (int i = 3; i >= 0; --i) n = (n << 8) | static_cast<std::uint8_t>(record[4 + static_cast<std::size_t>(i)]);
            if (n < static_cast<std::uint32_t>(instance.descriptor().programCount)) program = static_cast<int>(n);
        }
    }
    const std::string before = instance.saveState(false);
    try {
        instance.loadState(bytes, false);
    } catch (...) {
        instance.loadState(before, false);
        throw;
    }
    if (program >= 0) instance.setCurrentProgram(program);
}

}  // namespace tw::clap
