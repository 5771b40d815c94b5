// The lock-free published value cell through which the host's threads, the editor and
// the audio thread share patches, names, the tempo and feedback values. A reader pins
// the current slot with a counted reference; a writer fills a free slot and swaps it in.
// The audio thread only ever reads or publishes plain values, so it never waits for the
// editor: the only waiting is done by writers of owning cells, on the editor's side.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>

namespace tw {

// How a superseded value leaves its slot. Plain cells free it when its last reader
// lets go, on whatever thread that is. Owning cells hold objects that must be deleted by
// the writer, never by the audio thread: the writer waits for the readers to leave.
enum class Retire { Plain, Owning };

// Slot states: 0 free, 1 reserved by a writer, 2 or more published with (state - 2) readers.
template <typename T, Retire retire = Retire::Plain, int slotCount = 2>
class SlotCell {
    static_assert(slotCount >= 2, "a cell needs a slot to publish into beside the current one");

public:
    // A read handle. It pins the slot, not a copy, until it is released or destroyed.
    class Reader {
    public:
        Reader() = default;
        Reader(Reader&& other) noexcept : cell_(other.cell_), slot_(other.slot_) { other.cell_ = nullptr; }
        Reader& operator=(Reader&& other) noexcept {
            if (this != &other) {
                release();
                cell_ = other.cell_;
                slot_ = other.slot_;
                other.cell_ = nullptr;
            }
            return *this;
        }
        ~Reader() { release(); }
        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;

        const T& operator*() const { return *cell_->values_[slot_]; }
        const T* operator->() const { return &*cell_->values_[slot_]; }
        explicit operator bool() const { return cell_ != nullptr; }
        void release() {
            if (cell_) cell_->release(slot_);
            cell_ = nullptr;
        }

    private:
        friend class SlotCell;
        Reader(SlotCell* cell, int slot) : cell_(cell), slot_(slot) {}
        SlotCell* cell_ = nullptr;
        int slot_ = 0;
    };

    explicit SlotCell(T initial) {
        for (auto& s : states_) s.store(0);
        values_[0].emplace(std::move(initial));
        states_[0].store(2);
        current_.store(0);
    }
    ~SlotCell() = default;
    SlotCell(const SlotCell&) = delete;
    SlotCell& operator=(const SlotCell&) = delete;

    Reader acquire() {
        for (;;) {
            int slot = current_.load();
            int state = states_[slot].load();
            if (state < 2) continue;  // just replaced: look at the new current slot
            if (states_[slot].compare_exchange_strong(state, state + 1)) return Reader(this, slot);
        }
    }

    // A copy of the current value, for plain cells of small values such as the tempo.
    T read() {
        Reader r = acquire();
        return *r;
    }

    void publish(T value) {
        int slot = reserveFreeSlot();
        nextFree_.store(slot, std::memory_order_relaxed);
        values_[slot].emplace(std::move(value));
        states_[slot].store(2);
        int old = current_.exchange(slot);
        if constexpr (retire == Retire::Plain) {
            if (states_[old].fetch_sub(1) - 1 == 1) free(old);
        } else {
            int published = 2;
            while (!states_[old].compare_exchange_strong(published, 1)) {
                published = 2;
                std::this_thread::yield();
            }
            free(old);
        }
    }

private:
    void release(int slot) {
        if (states_[slot].fetch_sub(1) - 1 == 1) free(slot);
    }

    void free(int slot) {
        values_[slot].reset();
        states_[slot].store(0);
    }

    int reserveFreeSlot() {
        int start = nextFree_.load(std::memory_order_relaxed) + 2;
        if (start >= slotCount) start = 0;
        for (;;) {
            for (int n = 0, slot = start; n < slotCount; ++n, slot = (slot + 1) % slotCount) {
                int expected = 0;
                if (states_[slot].compare_exchange_strong(expected, 1)) return slot;
            }
            std::this_thread::yield();
        }
    }

    std::optional<T> values_[slotCount];
    std::atomic<std::int32_t> states_[slotCount];
    std::atomic<std::int32_t> current_{0};
    std::atomic<int> nextFree_{0};  // only a hint where to look: relaxed is enough
};

// The owning form holds heap objects: readers see the object, the writer deletes it.
template <typename T, int slotCount = 2>
using OwningSlotCell = SlotCell<std::unique_ptr<T>, Retire::Owning, slotCount>;

}  // namespace tw
