// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A frame allocates nothing once its words, glyphs and lines are known. Counted by replacing operator new and, where no
// sanitizer has done so, the C library's allocation, which the text libraries use.
#include "Painter.h"
#include "imaging/imaging_access.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <ostream>
#include <string>
#include <vector>

namespace {

std::atomic<long> allocations{0};

/// Not inlined, nor is `release`: seen together with its callers, the pair looks mismatched to the compiler.
[[gnu::noinline]] void* allocate(std::size_t size, std::size_t alignment)
{
    ++allocations;
    std::size_t const rounded = (size + alignment - 1) / alignment * alignment;
    void* const memory = std::aligned_alloc(alignment, rounded == 0 ? alignment : rounded);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

[[gnu::noinline]] void release(void* memory) noexcept
{
    std::free(memory);
}

constexpr std::size_t kOrdinary = alignof(std::max_align_t);

}  // namespace

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
extern "C" {
// The C library's own, under the names that are not replaced.
void* __libc_malloc(std::size_t size);                     // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* memory, std::size_t size);      // NOLINT(bugprone-reserved-identifier)

void* malloc(std::size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size)
{
    ++allocations;
    return __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size)
{
    ++allocations;
    return __libc_realloc(memory, size);
}
}
#endif

void* operator new(std::size_t size)
{
    return allocate(size, kOrdinary);
}
void* operator new[](std::size_t size)
{
    return allocate(size, kOrdinary);
}
void* operator new(std::size_t size, std::align_val_t alignment)
{
    return allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept
{
    release(memory);
}
void operator delete[](void* memory) noexcept
{
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept
{
    release(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept
{
    release(memory);
}

namespace {

class Frames : public testing::Test {
protected:
    Frames() { imaging::openFonts(painter_); }

    /// Draws a block as the render plugin does and returns how often memory was asked for.
    long frame(std::string const& text, int x = 20, int y = 20)
    {
        long const before = allocations;
        auto const planes = imaging::planesOf(picture_);
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
        painter_.setPenThickness(2);
        painter_.measureTextBBox(text, x, y, 28, 0, 0, &left, &top, &right, &bottom);
        painter_.setPenRGB(0, 0, 0);
        painter_.drawBackgroundMapped(planes, left - 6, top - 6, right + 6, bottom + 6, 0.5F, 4, 5);
        painter_.setPenRGB(255, 255, 255);
        painter_.drawTextMapped(planes, x, y, text, {28, 0, 0});
        return allocations - before;
    }

    Painter painter_;
    zelvo::ZelvoPicture picture_{1280, 200};
};

/// Gives each digit of `text` another value, the next of a sequence that follows from `seed`. With many digits no
/// text comes twice, after which it would be remembered as a whole.
void changeNumbers(std::string& text, unsigned seed)
{
    for (auto& c : text) {
        if (c >= '0' && c <= '9') {
            seed = seed * 31 + 7;
            c = static_cast<char>('0' + (seed >> 4 & 0xFFFF) % 10);
        }
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(Count, SeesTheCLibrarysOwnCalls)
{
    long const before = allocations;
    std::free(strdup("a copy made within the C library"));
    EXPECT_EQ(allocations - before, 1);
}
#endif

TEST_F(Frames, ConstantTextAllocatesNothing)
{
    std::string const text = "Lat 48.858370\u00B0  Lon 2.294481\u00B0\nsecond line \u0639\u0644\u0645 \u65E5";
    EXPECT_GT(frame(text), 0);
    frame(text);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(frame(text), 0) << i;
    }
}

struct ChangingText {
    std::string name;
    std::string text;
    int x = 20;
    int y = 20;
};

void PrintTo(ChangingText const& row, std::ostream* out)
{
    *out << row.name;
}

class FramesOfChangingNumbers : public Frames, public testing::WithParamInterface<ChangingText> {};

TEST_P(FramesOfChangingNumbers, AllocateNothing)
{
    auto const& row = GetParam();
    std::string text = row.text;
    for (unsigned i = 0; i < 100; ++i) {
        changeNumbers(text, i);
        frame(text, row.x, row.y);
    }
    for (unsigned i = 1000; i < 1100; ++i) {
        changeNumbers(text, i);
        EXPECT_EQ(frame(text, row.x, row.y), 0) << i << ": " << text;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Texts, FramesOfChangingNumbers,
    testing::Values(
        ChangingText{"Latin", "Lat 000000.0\u00B0  Lon 000000.0\u00B0\nAlt 000000 m  t 000000"},
        ChangingText{"Accents", "H\u00F6he 0000000.000 m\ncafe\u0301 000000000 x\u0302 00\u0302"},
        ChangingText{"Arabic",
                     "\u0627\u0631\u062A\u0641\u0627\u0639 0000000.000 m\n\u05D2\u05D5\u05D1\u05D4 (0000000000)"},
        ChangingText{"Fallback", "\u9AD8\u5EA6 0000000000 \u6F22 \U0010FFFD 000"},
        ChangingText{"CutAtTheLeftAndTop", "Lat 0000000000.0\u00B0\n\u0639\u0644 00000000000", -31, -17},
        ChangingText{"CutAtTheRightAndBelow", "Lat 0000000000.0\u00B0\n\u0639\u0644 00000000000", 1201, 171}),
    [](auto const& row) { return row.param.name; });

TEST_F(Frames, KnownWordsInAnotherOrderAllocateNothing)
{
    std::vector<std::string> const words{"caf\u00E9", "\u65E5\u672C", "na\u00EFve", "x\u0302", "plain"};
    auto const text = [&](std::size_t i) {
        return words[i % 5] + " " + words[i / 5 % 5] + " " + std::to_string(100 + i) + " " + words[i / 25 % 5];
    };
    for (std::size_t i = 0; i < 125; ++i) {
        frame(text(i));
    }
    for (std::size_t i = 125; i < 250; ++i) {
        EXPECT_EQ(frame(text(i)), 0) << text(i);
    }
}

TEST_F(Frames, ConstantTextCutByThePicturesEdgeAllocatesNothing)
{
    std::string const text = "Lat 48.858370\u00B0\nsecond line \u0639\u0644\u0645 \u65E5";
    for (int const x : {-40, 1150}) {
        for (int const y : {-20, 5, 150, 171}) {
            frame(text, x, y);
            frame(text, x, y);
            for (int i = 0; i < 5; ++i) {
                EXPECT_EQ(frame(text, x, y), 0) << x << ", " << y;
            }
        }
    }
}

}  // namespace
