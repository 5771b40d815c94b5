// One sound setting: a name, the file it came from, change stamps, and one value from
// 0 to 1 per parameter. Values are written in place with atomic word accesses, so the
// audio thread reads a live patch without locks; the name and path sit together in an
// immutable record behind a published cell, so no reader sees a torn name.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Path.h"
#include "platform/SlotCell.h"

namespace tw {

class Patch {
public:
    static constexpr std::size_t maxNameLength = 255;

    explicit Patch(int parameterCount);
    Patch(const Patch&) = delete;
    Patch& operator=(const Patch&) = delete;

    // A new patch with a copy of every field, stamps included.
    std::unique_ptr<Patch> clone() const;

    // Stores the path; a non-empty path also names the patch after the file's stem.
    void setPath(const Path& path);
    Path getPath() const;

    // Stores the name cut to 255 bytes; answers false, touching nothing, when it is the same.
    bool setName(std::string_view text);
    std::string getName() const;
    // Copies at most maxLength bytes and always writes a NUL behind them.
    void getName(std::size_t maxLength, char* buffer) const;

    void touch();
    void markClean();
    bool isModified() const { return changeStamp_.load() != savedStamp_.load(); }
    std::uint32_t getChangeStamp() const { return changeStamp_.load(); }

    int getParameterCount() const { return count_; }
    float getParameter(int index) const { return values_[index].load(std::memory_order_relaxed); }
    void getParameters(int first, int count, float* out) const;
    // The patch's store: swaps the value in; touches the patch and answers true when it
    // differed. Nobody is told; the host's write and the editor's write both end here.
    bool storeParameter(int index, float value);
    bool setParameters(int first, int count, const float* values);

private:
    struct NameRecord {
        char name[maxNameLength + 1] = {};
        Path path;
    };
    static NameRecord makeRecord(std::string_view name, Path path);

    int count_;
    std::unique_ptr<std::atomic<float>[]> values_;
    std::atomic<std::uint32_t> changeStamp_{0};
    std::atomic<std::uint32_t> savedStamp_{0};
    mutable SlotCell<NameRecord> names_;
};

// A fresh value of the process-wide change counter; no two patches share a stamp.
std::uint32_t nextPatchStamp();

}  // namespace tw
