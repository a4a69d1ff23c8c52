// What stands behind the opaque picture and pool of the imaging library: one block of memory with padded
// rows for each picture, and the pool's list of pictures that were let go.
#pragma once

#include "Picture.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

namespace imaging {

/// Rows are padded to this many bytes, and planes begin at a multiple of it.
inline constexpr std::size_t kRowAlignment = 64;

struct AlignedDelete {
    void operator()(std::uint8_t* bytes) const noexcept { ::operator delete[](bytes, std::align_val_t{kRowAlignment}); }
};

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
    std::size_t byteCount = 0;  ///< both planes with their padding
    std::unique_ptr<std::uint8_t[], imaging::AlignedDelete> bytes;
    MappedNV12 planes;
};

struct zelvo::ZelvoPicturePool::Impl {
    std::shared_ptr<imaging::PoolShelf> shelf = std::make_shared<imaging::PoolShelf>();
};
