// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Copy on write of a frame's picture, alone and from several threads.
#include "LazyDetachedPicture.h"

#include "recording_imaging.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using zelvo::ZelvoPicture;
using zelvo::ZelvoPicturePool;

/// Far longer than anything here takes; reached only when a test fails.
constexpr std::chrono::seconds kLongEnough{20};
constexpr int kThreads = 8;

std::shared_ptr<ZelvoPicture const> somePicture()
{
    return std::make_shared<ZelvoPicture>(16U, 8U);
}

std::string failureOf(LazyDetachedPicture& picture)
{
    try {
        picture.ensureWritablePicShared();
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "no exception";
}

/// Lets a number of threads go on only once all of them have arrived.
class Meeting {
public:
    explicit Meeting(int expected) : expected_(expected) {}
    bool arriveAndWait()
    {
        std::unique_lock<std::mutex> hold(lock_);
        ++arrived_;
        allHere_.notify_all();
        return allHere_.wait_for(hold, kLongEnough, [this] { return arrived_ >= expected_; });
    }

private:
    std::mutex lock_;
    std::condition_variable allHere_;
    int expected_;
    int arrived_ = 0;
};

/// Calls ensureWritablePicShared from all threads and gives the distinct results.
std::set<ZelvoPicture*> resultsOfAllThreads(LazyDetachedPicture& picture)
{
    std::vector<std::shared_ptr<ZelvoPicture>> results(kThreads);
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (auto& result : results) {
        threads.emplace_back([&result, &picture] { result = picture.ensureWritablePicShared(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<ZelvoPicture*> distinct;
    for (auto const& result : results) {
        distinct.insert(result.get());
    }
    return distinct;
}

}  // namespace

TEST(LazyPicture, StartsEmpty)
{
    LazyDetachedPicture picture;
    EXPECT_FALSE(picture.hasSource());
    EXPECT_EQ(picture.readablePicShared(), nullptr);
    EXPECT_EQ(failureOf(picture), "LazyDetachedPicture has no source picture");
}

TEST(LazyPicture, ReadsTheSourceUntilThereIsACopy)
{
    auto const source = somePicture();
    LazyDetachedPicture picture("/a", 1, source, std::make_shared<ZelvoPicturePool>(), {});
    EXPECT_TRUE(picture.hasSource());
    EXPECT_EQ(picture.readablePicShared(), source);
    auto const copy = picture.ensureWritablePicShared();
    EXPECT_NE(std::shared_ptr<ZelvoPicture const>(copy), source);
    EXPECT_EQ(picture.readablePicShared(), copy);
    EXPECT_TRUE(picture.hasSource());
}

TEST(LazyPicture, SecondCallGivesTheSamePictureWithoutCopyingAgain)
{
    auto const pool = std::make_shared<ZelvoPicturePool>();
    LazyDetachedPicture picture("/a", 1, somePicture(), pool, {});
    auto const copy = picture.ensureWritablePicShared();
    EXPECT_EQ(picture.ensureWritablePicShared(), copy);
    EXPECT_EQ(recording::controls(*pool).clones, 1);
}

TEST(LazyPicture, WithoutPoolAndClonerTheCopyFails)
{
    LazyDetachedPicture picture("/a", 1, somePicture(), nullptr, {});
    EXPECT_EQ(failureOf(picture), "LazyDetachedPicture cloneDetached failed");
}

TEST(LazyPicture, WithoutIdTheCallFailsBeforeAnyCopy)
{
    auto const pool = std::make_shared<ZelvoPicturePool>();
    int clonerCalls = 0;
    LazyDetachedPicture picture("/a", 0, somePicture(), pool, [&clonerCalls](std::string const&, std::uint64_t) {
        ++clonerCalls;
        return std::make_shared<ZelvoPicture>(1U, 1U);
    });
    EXPECT_EQ(failureOf(picture), "LazyDetachedPicture has no source picture id");
    EXPECT_EQ(recording::controls(*pool).clones, 0);
    EXPECT_EQ(clonerCalls, 0);
}

TEST(LazyPicture, TheClonerGetsNamespaceAndId)
{
    struct Row {
        char const* name;
        char const* sourceNamespace;
        char const* expected;
    };
    for (Row const& row : {Row{"given", "/cameras/left", "/cameras/left"}, Row{"empty", "", "/"}}) {
        SCOPED_TRACE(row.name);
        std::string seen;
        LazyDetachedPicture picture(row.sourceNamespace, 42, somePicture(), nullptr,
                                    [&seen](std::string const& sourceNamespace, std::uint64_t id) {
                                        seen = sourceNamespace + " " + std::to_string(id);
                                        return std::make_shared<ZelvoPicture>(1U, 1U);
                                    });
        picture.ensureWritablePicShared();
        EXPECT_EQ(seen, std::string(row.expected) + " 42");
    }
}

TEST(LazyPicture, TheClonerComesOnlyAfterThePoolGaveNothing)
{
    auto const pool = std::make_shared<ZelvoPicturePool>();
    std::shared_ptr<ZelvoPicture> fromCloner = std::make_shared<ZelvoPicture>(1U, 1U);
    auto const cloner = [&fromCloner](std::string const&, std::uint64_t) { return fromCloner; };
    LazyDetachedPicture byPool("/a", 1, somePicture(), pool, cloner);
    EXPECT_NE(byPool.ensureWritablePicShared(), fromCloner);
    recording::controls(*pool).givesNothing = true;
    LazyDetachedPicture byCloner("/a", 1, somePicture(), pool, cloner);
    EXPECT_EQ(byCloner.ensureWritablePicShared(), fromCloner);
    EXPECT_EQ(recording::controls(*pool).clones, 2);
}

TEST(LazyPicture, AFailedAttemptStoresNothingAndTheNextTriesAgain)
{
    int attempt = 0;
    auto const source = somePicture();
    LazyDetachedPicture picture("/a", 1, source, nullptr,
                                [&attempt](std::string const&, std::uint64_t) -> std::shared_ptr<ZelvoPicture> {
                                    ++attempt;
                                    if (attempt == 1) {
                                        throw std::logic_error("cloner");
                                    }
                                    return attempt == 2 ? nullptr : std::make_shared<ZelvoPicture>(1U, 1U);
                                });
    EXPECT_THROW(picture.ensureWritablePicShared(), std::logic_error);
    EXPECT_EQ(picture.readablePicShared(), source);
    EXPECT_EQ(failureOf(picture), "LazyDetachedPicture cloneDetached failed");
    EXPECT_EQ(picture.readablePicShared(), source);
    EXPECT_NE(picture.ensureWritablePicShared(), nullptr);
    EXPECT_EQ(attempt, 3);
}

TEST(LazyPicture, ResetDropsTheCopy)
{
    LazyDetachedPicture picture("/a", 1, somePicture(), std::make_shared<ZelvoPicturePool>(), {});
    picture.ensureWritablePicShared();
    auto const next = somePicture();
    picture.reset("/a", 2, next, std::make_shared<ZelvoPicturePool>(), {});
    EXPECT_EQ(picture.readablePicShared(), next);
}

TEST(LazyPicture, ResetTakesNamespaceAndIdForTheCloner)
{
    LazyDetachedPicture picture("/a", 1, somePicture(), nullptr, {});
    std::string asked;
    picture.reset("/b", 2, somePicture(), nullptr, [&asked](std::string const& sourceNamespace, std::uint64_t id) {
        asked = sourceNamespace + " " + std::to_string(id);
        return std::make_shared<ZelvoPicture>(16U, 8U);
    });
    picture.ensureWritablePicShared();
    EXPECT_EQ(asked, "/b 2");
}

TEST(LazyPicture, ResetLetsGoWithoutTheLock)
{
    LazyDetachedPicture picture;
    int answers = 0;
    auto const asking = [&](unsigned width) {
        return std::shared_ptr<ZelvoPicture>(new ZelvoPicture(width, 1U), [&](ZelvoPicture* ending) {
            auto answer = std::async(std::launch::async, [&picture] { return picture.hasSource(); });
            answers += answer.wait_for(kLongEnough) == std::future_status::ready ? 1 : 0;
            delete ending;
        });
    };
    picture.reset("/a", 1, asking(1), nullptr, [&](std::string const&, std::uint64_t) { return asking(2); });
    picture.ensureWritablePicShared();
    picture.reset("", 0, nullptr, nullptr, {});
    EXPECT_EQ(answers, 2);
}

TEST(LazyPicture, ThePoolCopiesWithoutTheLock)
{
    auto const pool = std::make_shared<ZelvoPicturePool>();
    LazyDetachedPicture picture("/a", 1, somePicture(), pool, {});
    bool answered = false;
    recording::controls(*pool).duringClone = [&] {
        auto answer = std::async(std::launch::async, [&picture] { return picture.hasSource(); });
        answered = answer.wait_for(kLongEnough) == std::future_status::ready;
    };
    picture.ensureWritablePicShared();
    EXPECT_TRUE(answered);
}

TEST(LazyPicture, TheClonerRunsWithoutTheLock)
{
    bool answered = false;
    LazyDetachedPicture picture;
    picture.reset("/a", 1, somePicture(), nullptr, [&](std::string const&, std::uint64_t) {
        auto answer = std::async(std::launch::async, [&picture] { return picture.hasSource(); });
        answered = answer.wait_for(kLongEnough) == std::future_status::ready;
        return std::make_shared<ZelvoPicture>(1U, 1U);
    });
    picture.ensureWritablePicShared();
    EXPECT_TRUE(answered);
}

TEST(LazyPicture, EightCopiesAtOnceEndWithOnePicture)
{
    Meeting allCopying(kThreads);
    std::atomic<int> copies{0};
    std::atomic<int> met{0};
    LazyDetachedPicture picture("/a", 1, somePicture(), nullptr, [&](std::string const&, std::uint64_t) {
        met += allCopying.arriveAndWait() ? 1 : 0;
        ++copies;
        return std::make_shared<ZelvoPicture>(1U, 1U);
    });
    auto const results = resultsOfAllThreads(picture);
    EXPECT_EQ(met, kThreads);  // all of them copied at the same time, so none held the lock
    EXPECT_EQ(copies, kThreads);
    EXPECT_EQ(results, std::set<ZelvoPicture*>{picture.ensureWritablePicShared().get()});
}

TEST(LazyPicture, EightThreadsWithoutAppointmentEndWithOnePicture)
{
    for (int round = 0; round < 50; ++round) {
        auto const pool = std::make_shared<ZelvoPicturePool>();
        LazyDetachedPicture picture("/a", 1, somePicture(), pool, {});
        auto const results = resultsOfAllThreads(picture);
        ASSERT_EQ(results, std::set<ZelvoPicture*>{picture.ensureWritablePicShared().get()});
        ASSERT_GE(recording::controls(*pool).clones, 1);
        ASSERT_LE(recording::controls(*pool).clones, kThreads);
    }
}

TEST(LazyPicture, ACopyThatCameTooLateIsLetGoWithoutTheLock)
{
    // Its deleter asks the holder, which would wait for ever under the lock.
    LazyDetachedPicture picture;
    bool answered = false;
    auto const late = [&] {
        return std::shared_ptr<ZelvoPicture>(new ZelvoPicture(1U, 1U), [&](ZelvoPicture* copy) {
            auto answer = std::async(std::launch::async, [&picture] { return picture.hasSource(); });
            answered = answer.wait_for(kLongEnough) == std::future_status::ready;
            delete copy;
        });
    };
    bool nested = false;
    picture.reset("/a", 1, somePicture(), nullptr, [&](std::string const&, std::uint64_t) {
        if (nested) {
            return std::make_shared<ZelvoPicture>(2U, 2U);
        }
        nested = true;
        picture.ensureWritablePicShared();  // another caller is faster
        return late();
    });
    EXPECT_EQ(picture.ensureWritablePicShared()->width(), 2U);
    EXPECT_TRUE(answered);
}
