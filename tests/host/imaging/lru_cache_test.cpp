// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The bounded cache: what it holds, what it forgets and when.
#include "imaging/lru_cache.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <random>
#include <string>

namespace {

using imaging::LruCache;

/// All values share one bucket unless a test says otherwise.
std::string* find(LruCache<std::string>& cache, std::string const& value, std::uint64_t hash = 1)
{
    return cache.find(hash, [&](std::string const& held) { return held == value; });
}

TEST(LruCache, FindsWhatWasInserted)
{
    LruCache<std::string> cache(4, 100);
    cache.insert(1, "a", 10);
    cache.insert(1, "b", 10);
    EXPECT_EQ(*find(cache, "a"), "a");
    EXPECT_EQ(*find(cache, "b"), "b");
    EXPECT_EQ(find(cache, "c"), nullptr);
    EXPECT_EQ(find(cache, "a", 2), nullptr);
    EXPECT_EQ(cache.size(), 2U);
    EXPECT_EQ(cache.bytes(), 20U);
}

TEST(LruCache, ForgetsTheLeastRecentlyUsedBeyondItsEntries)
{
    LruCache<std::string> cache(2, 100);
    cache.insert(1, "a", 1);
    cache.insert(1, "b", 1);
    find(cache, "a");
    cache.insert(1, "c", 1);
    EXPECT_NE(find(cache, "a"), nullptr);
    EXPECT_EQ(find(cache, "b"), nullptr);
    EXPECT_NE(find(cache, "c"), nullptr);
}

TEST(LruCache, NeverHoldsMoreBytesThanItsBound)
{
    LruCache<std::string> cache(10, 30);
    cache.insert(1, "a", 10);
    cache.insert(1, "b", 10);
    cache.insert(1, "c", 10);
    EXPECT_EQ(cache.bytes(), 30U);
    cache.insert(1, "d", 11);
    EXPECT_EQ(cache.bytes(), 21U);
    EXPECT_EQ(find(cache, "a"), nullptr);
    EXPECT_EQ(find(cache, "b"), nullptr);
}

TEST(LruCache, LendsAValueBeyondTheBoundWithoutHoldingIt)
{
    LruCache<std::string> cache(10, 30);
    cache.insert(1, "a", 10);
    EXPECT_EQ(cache.insert(1, "huge", 31), "huge");
    EXPECT_EQ(find(cache, "huge"), nullptr);
    EXPECT_NE(find(cache, "a"), nullptr);
    EXPECT_EQ(cache.size(), 1U);
    EXPECT_EQ(cache.bytes(), 10U);
    EXPECT_EQ(cache.insert(1, "all of it", 30), "all of it");
    EXPECT_EQ(find(cache, "a"), nullptr);
    EXPECT_EQ(cache.bytes(), 30U);
}

TEST(LruCache, LentValueIsFreedWhenToldAndByTheNextInsert)
{
    LruCache<std::shared_ptr<int>> cache(10, 30);
    auto const value = std::make_shared<int>(7);
    cache.insert(1, value, 31);
    EXPECT_EQ(value.use_count(), 2);
    cache.forgetLent();
    EXPECT_EQ(value.use_count(), 1);
    cache.insert(1, value, 31);
    cache.insert(2, nullptr, 1);
    EXPECT_EQ(value.use_count(), 1);
    cache.insert(1, value, 31);
    cache.clear();
    EXPECT_EQ(value.use_count(), 1);
}

TEST(LruCache, ClearForgetsEverything)
{
    LruCache<std::string> cache(10, 30);
    cache.insert(1, "a", 10);
    cache.clear();
    EXPECT_EQ(find(cache, "a"), nullptr);
    EXPECT_EQ(cache.bytes(), 0U);
    cache.insert(1, "a", 10);
    EXPECT_NE(find(cache, "a"), nullptr);
}

TEST(LruCache, BehavesLikeAListInOrderOfUse)
{
    constexpr std::size_t kEntries = 16;
    constexpr std::size_t kBytes = 100;
    LruCache<std::string> cache(kEntries, kBytes);
    std::list<std::pair<std::string, std::size_t>> model;  // newest first
    std::minstd_rand random(7);
    for (int step = 0; step < 20000; ++step) {
        auto const value = std::to_string(random() % 40);
        std::uint64_t const hash = value.size() == 1 ? 5 : std::stoull(value);
        auto const known =
            std::find_if(model.begin(), model.end(), [&](auto const& entry) { return entry.first == value; });
        ASSERT_EQ(find(cache, value, hash) != nullptr, known != model.end()) << "step " << step;
        if (known != model.end()) {
            model.splice(model.begin(), model, known);
            continue;
        }
        std::size_t const bytes = 1 + random() % 20;
        cache.insert(hash, value, bytes);
        model.emplace_front(value, bytes);
        std::size_t sum = 0;
        for (auto const& entry : model) {
            sum += entry.second;
        }
        while (sum > kBytes || model.size() > kEntries) {
            sum -= model.back().second;
            model.pop_back();
        }
        ASSERT_EQ(cache.bytes(), sum) << "step " << step;
        ASSERT_EQ(cache.size(), model.size()) << "step " << step;
    }
}

}  // namespace
