// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The pool: pictures that were let go are kept on a shelf and handed out again for the same size.
#include "imaging/imaging_access.h"
#include "imaging/picture_impl.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace imaging {
namespace {

/// Pictures kept for reuse; the longest waiting one is freed beyond that.
constexpr std::size_t kShelfLimit = 8;

std::unique_ptr<zelvo::ZelvoPicture> takeFromShelf(PoolShelf& shelf, unsigned width, unsigned height)
{
    std::lock_guard<std::mutex> const hold(shelf.lock);
    auto const found = std::find_if(shelf.free.rbegin(), shelf.free.rend(), [&](auto const& picture) {
        return picture->width() == width && picture->height() == height;
    });
    if (found == shelf.free.rend()) {
        return nullptr;
    }
    auto picture = std::move(*found);
    shelf.free.erase(std::next(found).base());
    return picture;
}

/// Between pictures of the same size, whatever their strides.
void copyRows(MappedNV12 const& from, MappedNV12 const& to)
{
    for (std::ptrdiff_t row = 0; row < from.height; ++row) {
        std::memcpy(to.y + row * to.yStride, from.y + row * from.yStride, static_cast<std::size_t>(from.width));
    }
    auto const chromaBytes = static_cast<std::size_t>((from.width + 1) / 2 * 2);
    for (std::ptrdiff_t row = 0; row < (from.height + 1) / 2; ++row) {
        std::memcpy(to.uv + row * to.uvStride, from.uv + row * from.uvStride, chromaBytes);
    }
}

void putOnShelf(PoolShelf& shelf, std::unique_ptr<zelvo::ZelvoPicture> picture)
{
    std::unique_ptr<zelvo::ZelvoPicture> tooMany;
    std::lock_guard<std::mutex> const hold(shelf.lock);
    if (shelf.free.size() == kShelfLimit) {
        tooMany = std::move(shelf.free.front());
        shelf.free.erase(shelf.free.begin());
    }
    shelf.free.push_back(std::move(picture));
}

}  // namespace

std::shared_ptr<zelvo::ZelvoPicture> takePicture(zelvo::ZelvoPicturePool& pool, unsigned width, unsigned height)
{
    auto const& shelf = pool.impl().shelf;
    auto picture = takeFromShelf(*shelf, width, height);
    if (!picture) {
        picture = std::make_unique<zelvo::ZelvoPicture>(width, height);
    }
    std::weak_ptr<PoolShelf> const home = shelf;
    return {picture.release(), [home](zelvo::ZelvoPicture* done) {
                std::unique_ptr<zelvo::ZelvoPicture> owned(done);
                if (auto const open = home.lock()) {
                    putOnShelf(*open, std::move(owned));
                }
            }};
}

}  // namespace imaging

namespace zelvo {

ZelvoPicturePool::ZelvoPicturePool() : impl_(std::make_unique<Impl>())
{
    impl_->shelf->free.reserve(imaging::kShelfLimit);
}

ZelvoPicturePool::~ZelvoPicturePool() = default;

std::shared_ptr<ZelvoPicture> ZelvoPicturePool::clone(ZelvoPicture const& source)
{
    try {
        auto copy = imaging::takePicture(*this, source.width(), source.height());
        auto const& from = source.impl();
        if (from.byteCount != 0) {
            std::memcpy(copy->impl().bytes.get(), from.bytes.get(), from.byteCount);
        } else {
            imaging::copyRows(from.planes, copy->impl().planes);
        }
        return copy;
    } catch (std::bad_alloc const&) {
        return nullptr;
    }
}

}  // namespace zelvo
