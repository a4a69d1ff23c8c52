// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What stands behind the opaque picture and pool of the imaging library: one block of memory with padded
// rows for each picture, and the pool's list of pictures that were let go.
#pragma once

#include "Picture.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace imaging {

/// Rows are padded to this many bytes, and planes begin at a multiple of it.
inline constexpr std::size_t kRowAlignment = 64;

/// Memory of one picture; gives it back the way it was taken.
struct PictureDelete {
    std::size_t mappedBytes = 0;  ///< 0: from `operator new`
    void operator()(std::uint8_t* bytes) const noexcept;
};
using PictureMemory = std::unique_ptr<std::uint8_t[], PictureDelete>;

/// Room for so many bytes, at a multiple of kRowAlignment. Throws std::bad_alloc.
PictureMemory takePictureMemory(std::size_t bytes);

/// Pictures waiting in the pool; shared with the pictures that are out, which return to it or, when the
/// pool is gone, are freed.
struct PoolShelf {
    std::mutex lock;
    std::vector<std::unique_ptr<zelvo::ZelvoPicture>> free;
};

}  // namespace imaging

struct zelvo::ZelvoPicture::Impl {
    unsigned width = 0;
    unsigned height = 0;
    std::size_t byteCount = 0;     ///< of `bytes`: both planes with their padding
    imaging::PictureMemory bytes;  ///< none when the planes are somebody else's
    MappedNV12 planes;
};

struct zelvo::ZelvoPicturePool::Impl {
    std::shared_ptr<imaging::PoolShelf> shelf = std::make_shared<imaging::PoolShelf>();
};
