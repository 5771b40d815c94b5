// A fixed table of names found by a perfect hash that the compiler computes: Ketch finds its
// built-in instructions and mathematical functions through it, and the painter its own
// instructions and colour names. A statement's dispatch costs one hash and one compare.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tw::Ketch {

template <typename T, std::size_t N>
class NameTable {
public:
    struct Entry {
        std::string_view name;
        T value;
    };

    // Tries seeds until every name lands in a slot of its own; duplicate names never do,
    // and the search then fails to compile.
    consteval explicit NameTable(const Entry (&entries)[N]) {
        for (std::size_t i = 0; i < N; ++i) {
            entries_[i] = entries[i];
            minLength_ = i == 0 || entries[i].name.size() < minLength_ ? entries[i].name.size() : minLength_;
            maxLength_ = entries[i].name.size() > maxLength_ ? entries[i].name.size() : maxLength_;
        }
        for (seed_ = 1; !tryLayout(); ++seed_) {
            if (seed_ > 100000) {
                throw "no perfect hash: are the names unique?";
            }
        }
    }

    // The value of this exact name, or nullptr.
    const T* find(std::string_view name) const {
        if (name.size() < minLength_ || name.size() > maxLength_) {
            return nullptr;
        }
        const std::uint8_t slot = slots_[hash(name, seed_) & (slotCount - 1)];
        if (slot == 0 || entries_[slot - 1].name != name) {
            return nullptr;
        }
        return &entries_[slot - 1].value;
    }

private:
    static_assert(N > 0 && N < 255);
    static constexpr std::size_t slotCount = std::bit_ceil(N * 4);

    static constexpr std::uint32_t hash(std::string_view name, std::uint32_t seed) {
        std::uint32_t h = seed * 0x9E3779B9u;
        for (char c : name) {
            h = (h ^ std::uint8_t(c)) * 16777619u;
        }
        return h ^ (h >> 16);
    }

    consteval bool tryLayout() {
        slots_ = {};
        for (std::size_t i = 0; i < N; ++i) {
            std::uint8_t& slot = slots_[hash(entries_[i].name, seed_) & (slotCount - 1)];
            if (slot != 0) {
                return false;
            }
            slot = std::uint8_t(i + 1);
        }
        return true;
    }

    std::array<Entry, N> entries_{};
    std::array<std::uint8_t, slotCount> slots_{};  // index + 1 into entries_, 0 for none
    std::uint32_t seed_ = 0;
    std::size_t minLength_ = 0;
    std::size_t maxLength_ = 0;
};

}  // namespace tw::Ketch
