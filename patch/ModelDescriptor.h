// The constant description of one product: everything the product-independent host
// boundary, model and editor need to know about the effect they serve.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "patch/ParameterSpec.h"

namespace tw {

struct ModelDescriptor {
    std::int32_t uniqueId;      // VST unique id and the fxID of banks and chunks
    std::string modelName;      // internal name: prefix of resource names and store keys
    std::string publicName;     // name shown to hosts and users
    std::string vendorName;     // the maker, as hosts show it
    std::uint32_t version;      // bytes from the low one: bugfix, minor, major, 0
    bool isSynth;
    bool receivesMidi;
    bool sendsMidi;
    std::int32_t frameSize;     // samples per processor call; not positive means "any"
    std::string identifier;     // patch file extension without the dot; empty turns patch files off
    std::int32_t modelCode;     // four-char type of patch files
    std::int32_t minFormat;     // oldest patch format read
    std::int32_t maxFormat;     // newest patch format read, and the one written
    std::int32_t programCount;
    std::uint32_t startupBankFormat;
    std::vector<ParameterSpec> parameters;  // in id order
    std::vector<std::int32_t> hostOrder;    // host index to parameter id
    std::vector<BusSpec> buses;
    std::vector<std::string> feedbacks;     // names of the values the audio side reports
    std::string factoryBankName;            // resource of type fxb loaded as the first bank
    // The licence gate's fields. This build has no licence gate: the key is empty and
    // the words are zero, which the model reads as "nothing to register".
    std::string licenceKey;
    std::array<std::uint32_t, 4> licenceWords;
    // The maker's address for the check for a newer build; empty turns the check off.
    std::string versionCheckUrl;
};

// A four-character code as a number whose big-endian bytes spell it.
constexpr std::int32_t fourCharCode(const char (&c)[5]) {
    return static_cast<std::int32_t>((std::uint32_t(std::uint8_t(c[0])) << 24) | (std::uint32_t(std::uint8_t(c[1])) << 16) |
                                     (std::uint32_t(std::uint8_t(c[2])) << 8) | std::uint32_t(std::uint8_t(c[3])));
}

}  // namespace tw
