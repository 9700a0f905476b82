#pragma once

// Handles are numbers into a table of live objects, never addresses: bits 63-60 are the kind, 59-32 the
// generation of the slot (from 1) and 31-0 the slot. A handle that is closed, released too often or made up
// is recognised and touches no freed memory.
//
// One atomic word of a slot holds its generation, the references that the user of the interface has, and the
// pins of the calls that run on the object. A call pins first and unpins at its end, so that the object
// outlives a close in another thread. Exactly one thread brings both counts to 0; it destroys the object,
// raises the generation and puts the slot at the end of the queue of free slots. Slots lie in chunks that are
// never freed or moved; a slot whose generations are used up is never taken again.
//
//     HandleTable<Thing> things(kind);
//     const std::uint64_t handle = things.add(std::make_shared<Thing>());
//     if (const auto thing = things.pin(handle)) { thing->work(); }
//     things.release(handle);

#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/detail/error_code.h"

namespace Quillmark::platform {

/// Generation, user references and pins in one word.
struct SlotState {
    static constexpr int kPinBits = 12;
    static constexpr int kReferenceBits = 24;
    static constexpr int kGenerationBits = 28;
    static constexpr std::uint64_t kOnePin = 1;
    static constexpr std::uint64_t kOneReference = kOnePin << kPinBits;
    static constexpr std::uint64_t kOneGeneration = kOneReference << kReferenceBits;
    static constexpr std::uint64_t kMaxPins = (1u << kPinBits) - 1;
    static constexpr std::uint64_t kMaxReferences = (1u << kReferenceBits) - 1;
    static constexpr std::uint64_t kMaxGeneration = (1u << kGenerationBits) - 1;

    std::uint64_t word;

    std::uint64_t pins() const { return word & kMaxPins; }
    std::uint64_t references() const { return word >> kPinBits & kMaxReferences; }
    std::uint64_t generation() const { return word >> (kPinBits + kReferenceBits); }
    bool is_live(std::uint64_t handle_generation) const {
        return generation() == handle_generation && references() > 0;
    }
    bool is_unused() const { return pins() == 0 && references() == 0; }
};

/// `last_generation` is less than what there is room for in tests alone, which then come to it.
template <typename Object, std::uint64_t last_generation = SlotState::kMaxGeneration>
class HandleTable {
    static_assert(last_generation > 0 && last_generation <= SlotState::kMaxGeneration);

    struct Slot {
        std::atomic<std::uint64_t> state{SlotState::kOneGeneration};
        std::uint32_t number = 0;
        Slot* next_free = nullptr;       // guarded by the table's mutex
        std::shared_ptr<Object> object;  // set and reset only by the one owner of a slot without references
    };

  public:
    /// Keeps the object of a handle alive while a call runs on it. False when the handle was invalid.
    class Pin {
      public:
        Pin() = default;
        Pin(HandleTable& table, Slot& slot) : table_(&table), slot_(&slot) {}
        Pin(const Pin&) = delete;
        Pin& operator=(const Pin&) = delete;
        ~Pin() {
            if (slot_ != nullptr) {
                table_->drop(*slot_, SlotState::kOnePin);
            }
        }

        explicit operator bool() const { return slot_ != nullptr; }
        Object* operator->() const { return slot_->object.get(); }
        const std::shared_ptr<Object>& shared() const { return slot_->object; }

      private:
        HandleTable* table_ = nullptr;
        Slot* slot_ = nullptr;
    };

    explicit constexpr HandleTable(std::uint64_t kind) noexcept : kind_(kind) {}
    HandleTable(const HandleTable&) = delete;
    HandleTable& operator=(const HandleTable&) = delete;
    // No destructor: static objects of the application may still close handles at the end of the process.

    /// A new handle with one user reference.
    std::uint64_t add(std::shared_ptr<Object> object) {
        Slot& slot = take_slot();
        slot.object = std::move(object);
        const SlotState state{slot.state.load(std::memory_order_relaxed)};
        slot.state.store(state.word | SlotState::kOneReference, std::memory_order_release);
        return kind_ << kKindShift | state.generation() << kSlotBits | slot.number;
    }

    Pin pin(std::uint64_t handle) {
        Slot* const slot = find(handle);
        if (slot == nullptr) {
            return {};
        }
        SlotState state{slot->state.load(std::memory_order_relaxed)};
        for (;;) {
            if (!state.is_live(generation_of(handle))) {
                return {};
            }
            if (state.pins() == SlotState::kMaxPins) {
                std::this_thread::yield();  // as many calls run on the object as can be counted
                state.word = slot->state.load(std::memory_order_relaxed);
                continue;
            }
            if (exchange(*slot, state, state.word + SlotState::kOnePin)) {
                return Pin(*this, *slot);
            }
        }
    }

    /// One more user reference.
    ErrorCode add_reference(std::uint64_t handle) {
        Slot* const slot = find(handle);
        if (slot == nullptr) {
            return ERROR_INVALID_HANDLE;
        }
        SlotState state{slot->state.load(std::memory_order_relaxed)};
        do {
            if (!state.is_live(generation_of(handle))) {
                return ERROR_INVALID_HANDLE;
            }
            if (state.references() == SlotState::kMaxReferences) {
                return E_OUTOFMEMORY;
            }
        } while (!exchange(*slot, state, state.word + SlotState::kOneReference));
        return ERROR_SUCCESS;
    }

    /// Takes one user reference away. The last one ends the handle, and the object with the last pin.
    ErrorCode release(std::uint64_t handle) {
        Slot* const slot = find(handle);
        if (slot == nullptr) {
            return ERROR_INVALID_HANDLE;
        }
        SlotState state{slot->state.load(std::memory_order_relaxed)};
        do {
            if (!state.is_live(generation_of(handle))) {
                return ERROR_INVALID_HANDLE;
            }
        } while (!exchange(*slot, state, state.word - SlotState::kOneReference));
        if (SlotState{state.word - SlotState::kOneReference}.is_unused()) {
            retire_object(*slot);
        }
        return ERROR_SUCCESS;
    }

  private:
    static constexpr int kSlotBits = 32;
    static constexpr int kKindShift = 60;
    // Chunk n holds 256 * 2^n slots, so a few chunks reach all slot numbers and none is ever moved.
    static constexpr int kFirstChunkBits = 8;
    static constexpr std::uint64_t kFirstChunkSlots = std::uint64_t{1} << kFirstChunkBits;
    static constexpr std::size_t kChunkCount = kSlotBits - kFirstChunkBits;

    struct Place {
        std::size_t chunk;
        std::uint64_t index;
    };

    static Place place_of(std::uint64_t number) {
        const std::uint64_t shifted = number + kFirstChunkSlots;
        const auto chunk = static_cast<std::size_t>(std::bit_width(shifted)) - 1 - kFirstChunkBits;
        return {chunk, shifted - (kFirstChunkSlots << chunk)};
    }

    static std::uint64_t generation_of(std::uint64_t handle) {
        return handle >> kSlotBits & SlotState::kMaxGeneration;
    }

    static bool exchange(Slot& slot, SlotState& expected, std::uint64_t wanted) {
        return slot.state.compare_exchange_weak(expected.word, wanted, std::memory_order_acq_rel,
                                                std::memory_order_relaxed);
    }

    Slot* find(std::uint64_t handle) const {
        if (handle >> kKindShift != kind_) {
            return nullptr;
        }
        const Place place = place_of(handle & 0xFFFFFFFFu);
        if (place.chunk >= kChunkCount) {
            return nullptr;
        }
        Slot* const slots = chunks_[place.chunk].load(std::memory_order_acquire);
        return slots == nullptr ? nullptr : slots + place.index;
    }

    Slot& take_slot() {
        const std::lock_guard lock(mutex_);
        if (first_free_ == nullptr) {
            return make_slot();
        }
        Slot& slot = *first_free_;
        first_free_ = slot.next_free;
        if (first_free_ == nullptr) {
            last_free_ = nullptr;
        }
        slot.next_free = nullptr;
        return slot;
    }

    Slot& make_slot() {
        const Place place = place_of(slot_count_);
        if (place.chunk >= kChunkCount) {
            throw std::bad_alloc();
        }
        if (place.index == 0) {
            chunks_[place.chunk].store(new Slot[kFirstChunkSlots << place.chunk], std::memory_order_release);
        }
        Slot& slot = chunks_[place.chunk].load(std::memory_order_relaxed)[place.index];
        slot.number = static_cast<std::uint32_t>(slot_count_++);
        return slot;
    }

    void drop(Slot& slot, std::uint64_t count) {
        const std::uint64_t before = slot.state.fetch_sub(count, std::memory_order_acq_rel);
        if (SlotState{before - count}.is_unused()) {
            retire_object(slot);
        }
    }

    // Called by the one thread that took the last count away.
    void retire_object(Slot& slot) {
        slot.object.reset();
        const std::uint64_t generation = SlotState{slot.state.load(std::memory_order_relaxed)}.generation();
        if (generation == last_generation) {
            return;
        }
        slot.state.store((generation + 1) * SlotState::kOneGeneration, std::memory_order_release);
        const std::lock_guard lock(mutex_);
        (last_free_ == nullptr ? first_free_ : last_free_->next_free) = &slot;
        last_free_ = &slot;
    }

    const std::uint64_t kind_;
    std::array<std::atomic<Slot*>, kChunkCount> chunks_{};
    std::mutex mutex_;
    std::uint64_t slot_count_ = 0;
    Slot* first_free_ = nullptr;
    Slot* last_free_ = nullptr;
};

}  // namespace Quillmark::platform
