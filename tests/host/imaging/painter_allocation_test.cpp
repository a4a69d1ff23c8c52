// A frame allocates nothing once its words, glyphs and lines are known. Counted by replacing operator new.
#include "Painter.h"
#include "imaging_access.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

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
    long frame(std::string const& text)
    {
        long const before = allocations;
        auto const planes = imaging::planesOf(picture_);
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
        painter_.setPenThickness(2);
        painter_.measureTextBBox(text, 20, 20, 28, 0, 0, &left, &top, &right, &bottom);
        painter_.setPenRGB(0, 0, 0);
        painter_.drawBackgroundMapped(planes, left - 6, top - 6, right + 6, bottom + 6, 0.5F, 4, 5);
        painter_.setPenRGB(255, 255, 255);
        painter_.drawTextMapped(planes, 20, 20, text, {28, 0, 0});
        return allocations - before;
    }

    Painter painter_;
    zelvo::ZelvoPicture picture_{1280, 200};
};

TEST_F(Frames, ConstantTextAllocatesNothing)
{
    std::string const text = "Lat 48.858370\u00B0  Lon 2.294481\u00B0\nsecond line \u0639\u0644\u0645 \u65E5";
    EXPECT_GT(frame(text), 0);
    frame(text);
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(frame(text), 0) << i;
    }
}

TEST_F(Frames, ChangingNumbersAllocateNothing)
{
    std::string text = "Lat 000000.0\u00B0  Lon 000000.0\u00B0\nAlt 000000 m  t 000000";
    auto const count = [&](unsigned value) {
        for (auto& c : text) {
            if (c >= '0' && c <= '9') {
                value = value * 31 + 7;
                c = static_cast<char>('0' + (value >> 4 & 0xFFFF) % 10);
            }
        }
    };
    for (unsigned i = 0; i < 100; ++i) {
        count(i);
        frame(text);
    }
    for (unsigned i = 1000; i < 1100; ++i) {
        count(i);
        EXPECT_EQ(frame(text), 0) << i << ": " << text;
    }
}

}  // namespace
