// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A cache bounded in bytes and entries that forgets what was not used for longest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace imaging {

/// Values are found by a 64-bit hash and a predicate, so that a search needs no key object. Pointers to values
/// stay good until the next `insert`. Neither finding nor missing allocates.
template <class Value>
class LruCache {
public:
    /// Holds at most `maxEntries` (at least 1) values of together at most `maxBytes` as told to `insert`.
    LruCache(std::size_t maxEntries, std::size_t maxBytes) : maxEntries_(maxEntries), maxBytes_(maxBytes)
    {
        std::size_t buckets = 1;
        while (buckets < maxEntries) {
            buckets *= 2;
        }
        heads_.assign(buckets, kNone);
        slots_.reserve(maxEntries);
    }

    /// The value with this hash for which `equal(value)` holds, now the most recently used; null when absent.
    template <class Equal>
    Value* find(std::uint64_t hash, Equal const& equal)
    {
        for (std::uint32_t i = heads_[bucketOf(hash)]; i != kNone; i = slots_[i].nextInBucket) {
            if (slots_[i].hash == hash && equal(slots_[i].value)) {
                if (i != newest_) {
                    unlink(i);
                    linkAsNewest(i);
                }
                return &slots_[i].value;
            }
        }
        return nullptr;
    }

    /// Adds a value that is not there yet and occupies `bytes`; older ones make room. A value larger than the
    /// whole bound is only lent: it is not found again, and gone with the next `insert` or `forgetLent`.
    Value& insert(std::uint64_t hash, Value value, std::size_t bytes)
    {
        if (bytes > maxBytes_) {
            isLending_ = true;
            lent_ = std::move(value);
            return lent_;
        }
        forgetLent();
        while (count_ > 0 && (count_ == maxEntries_ || bytes_ + bytes > maxBytes_)) {
            evictOldest();
        }
        std::uint32_t const i = takeSlot();
        auto& slot = slots_[i];
        slot.value = std::move(value);
        slot.hash = hash;
        slot.bytes = bytes;
        slot.nextInBucket = std::exchange(heads_[bucketOf(hash)], i);
        linkAsNewest(i);
        bytes_ += bytes;
        ++count_;
        return slot.value;
    }

    void forgetLent()
    {
        if (std::exchange(isLending_, false)) {
            lent_ = Value();
        }
    }

    void clear()
    {
        forgetLent();
        while (count_ > 0) {
            evictOldest();
        }
    }

    std::size_t bytes() const { return bytes_; }
    std::size_t size() const { return count_; }

private:
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    struct Slot {
        Value value;
        std::uint64_t hash = 0;
        std::size_t bytes = 0;
        std::uint32_t nextInBucket = kNone;  ///< in the free list: the next free slot
        std::uint32_t older = kNone;
        std::uint32_t newer = kNone;
    };

    std::size_t bucketOf(std::uint64_t hash) const { return (hash ^ (hash >> 32)) & (heads_.size() - 1); }

    void unlink(std::uint32_t i)
    {
        auto const& slot = slots_[i];
        (slot.older == kNone ? oldest_ : slots_[slot.older].newer) = slot.newer;
        (slot.newer == kNone ? newest_ : slots_[slot.newer].older) = slot.older;
    }

    void linkAsNewest(std::uint32_t i)
    {
        slots_[i].older = newest_;
        slots_[i].newer = kNone;
        (newest_ == kNone ? oldest_ : slots_[newest_].newer) = i;
        newest_ = i;
    }

    std::uint32_t takeSlot()
    {
        if (free_ != kNone) {
            return std::exchange(free_, slots_[free_].nextInBucket);
        }
        slots_.emplace_back();
        return static_cast<std::uint32_t>(slots_.size() - 1);
    }

    void evictOldest()
    {
        std::uint32_t const i = oldest_;
        auto& slot = slots_[i];
        std::uint32_t* link = &heads_[bucketOf(slot.hash)];
        while (*link != i) {
            link = &slots_[*link].nextInBucket;
        }
        *link = slot.nextInBucket;
        unlink(i);
        bytes_ -= slot.bytes;
        --count_;
        slot.value = Value();
        slot.nextInBucket = std::exchange(free_, i);
    }

    std::size_t maxEntries_;
    std::size_t maxBytes_;
    std::size_t bytes_ = 0;
    std::size_t count_ = 0;
    std::uint32_t newest_ = kNone;
    std::uint32_t oldest_ = kNone;
    std::uint32_t free_ = kNone;
    std::vector<std::uint32_t> heads_;
    std::vector<Slot> slots_;
    Value lent_;
    bool isLending_ = false;
};

/// Scatters `value` over 64 bits and joins it with what was hashed before.
constexpr std::uint64_t joinHash(std::uint64_t before, std::uint64_t value)
{
    std::uint64_t h = (before ^ value) * 0x9E3779B97F4A7C15U;
    return h ^ (h >> 29);
}

}  // namespace imaging
