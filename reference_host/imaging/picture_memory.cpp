// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Memory of pictures. A full-HD picture covers some 800 ordinary pages, and a block of text touches a new one on nearly
// every row: more than the processor remembers the places of. In huge pages it is two.
#include "imaging/picture_impl.h"

#include <new>
#include <sys/mman.h>

namespace imaging {
namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20U;
constexpr std::align_val_t kAlignment{kRowAlignment};

/// Whole huge pages, fresh from the system: pages that were in use before would stay small. Where the system has no
/// huge ones the advice changes nothing.
PictureMemory mapHugePages(std::size_t bytes)
{
    std::size_t const whole = (bytes + kHugePage - 1) / kHugePage * kHugePage;
    void* const mapped = mmap(nullptr, whole + kHugePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        throw std::bad_alloc();
    }
    // The mapping begins anywhere: what lies before and behind the whole huge pages goes back.
    auto* const first = static_cast<std::uint8_t*>(mapped);
    std::size_t const before = (kHugePage - reinterpret_cast<std::uintptr_t>(first) % kHugePage) % kHugePage;
    if (before > 0) {
        munmap(first, before);
    }
    if (before < kHugePage) {
        munmap(first + before + whole, kHugePage - before);
    }
    madvise(first + before, whole, MADV_HUGEPAGE);
    return {first + before, {whole}};
}

}  // namespace

void PictureDelete::operator()(std::uint8_t* bytes) const noexcept
{
    if (mappedBytes > 0) {
        munmap(bytes, mappedBytes);
    } else {
        ::operator delete[](bytes, kAlignment);
    }
}

PictureMemory takePictureMemory(std::size_t bytes)
{
    if (bytes >= kHugePage) {
        return mapHugePages(bytes);
    }
    return {static_cast<std::uint8_t*>(::operator new[](bytes, kAlignment)), {}};
}

}  // namespace imaging
