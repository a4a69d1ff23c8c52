// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Copy-on-write access to a frame's shared picture. The first caller that wants to draw makes a
// private copy; every later caller of the same frame gets that same copy. Safe from several threads;
// the copy itself is made without holding the lock, and the first copy stored wins.
#pragma once

#include "Picture.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

class LazyDetachedPicture {
public:
    /// Second way to a copy: namespace and id of the source; null when it cannot be had.
    using DetachedCloner = std::function<std::shared_ptr<zelvo::ZelvoPicture>(std::string const&, std::uint64_t)>;

    LazyDetachedPicture() = default;
    /// `sourceNamespace` may be empty and then stands for "/"; `sourceId` 0 means unknown; `pool` and
    /// `cloner` may be empty.
    LazyDetachedPicture(std::string sourceNamespace, std::uint64_t sourceId,
                        std::shared_ptr<zelvo::ZelvoPicture const> source,
                        std::shared_ptr<zelvo::ZelvoPicturePool> pool, DetachedCloner cloner)
        : sourceNamespace_(std::move(sourceNamespace))
        , sourceId_(sourceId)
        , source_(std::move(source))
        , pool_(std::move(pool))
        , cloner_(std::move(cloner))
    {
    }

    /// Starts over with the next frame's picture; the writable copy of the last frame is dropped.
    void reset(std::string sourceNamespace, std::uint64_t sourceId, std::shared_ptr<zelvo::ZelvoPicture const> source,
               std::shared_ptr<zelvo::ZelvoPicturePool> pool, DetachedCloner cloner)
    {
        // Swapped, so that what was held ends with the arguments, after the lock: it may be the host's code.
        std::shared_ptr<zelvo::ZelvoPicture> dropped;
        std::lock_guard<std::mutex> const hold(lock_);
        sourceNamespace_.swap(sourceNamespace);
        sourceId_ = sourceId;
        source_.swap(source);
        writable_.swap(dropped);
        pool_.swap(pool);
        cloner_.swap(cloner);
    }

    bool hasSource() const
    {
        std::lock_guard<std::mutex> const hold(lock_);
        return source_ != nullptr;
    }

    /// The writable copy if there is one, else the source picture, else null.
    std::shared_ptr<zelvo::ZelvoPicture const> readablePicShared() const
    {
        std::lock_guard<std::mutex> const hold(lock_);
        if (writable_) {
            return writable_;
        }
        return source_;
    }

    /// The writable copy, made on the first call. Throws std::runtime_error
    /// "LazyDetachedPicture has no source picture", "LazyDetachedPicture has no source picture id" or
    /// "LazyDetachedPicture cloneDetached failed"; nothing is stored then and a later call tries again.
    std::shared_ptr<zelvo::ZelvoPicture> ensureWritablePicShared()
    {
        std::shared_ptr<zelvo::ZelvoPicture> copy;  // before the lock: a copy that came too late is let go without it
        std::unique_lock<std::mutex> hold(lock_);
        if (writable_) {
            return writable_;
        }
        if (!source_) {
            hold.unlock();
            throw std::runtime_error("LazyDetachedPicture has no source picture");
        }
        if (sourceId_ == 0) {
            hold.unlock();
            throw std::runtime_error("LazyDetachedPicture has no source picture id");
        }
        Order_ const order{sourceNamespace_, sourceId_, source_, pool_, cloner_};
        hold.unlock();

        copy = cloneOutsideLock_(order);

        hold.lock();
        if (!writable_) {
            writable_ = std::move(copy);
        }
        return writable_;
    }

private:
    /// What the copy needs, taken under the lock and used without it.
    struct Order_ {
        std::string sourceNamespace;
        std::uint64_t sourceId;
        std::shared_ptr<zelvo::ZelvoPicture const> source;
        std::shared_ptr<zelvo::ZelvoPicturePool> pool;
        DetachedCloner cloner;
    };

    static std::shared_ptr<zelvo::ZelvoPicture> cloneOutsideLock_(Order_ const& order)
    {
        std::shared_ptr<zelvo::ZelvoPicture> copy;
        if (order.pool) {
            copy = order.pool->clone(*order.source);
        }
        if (!copy && order.cloner) {
            copy = order.cloner(order.sourceNamespace.empty() ? "/" : order.sourceNamespace, order.sourceId);
        }
        if (!copy) {
            throw std::runtime_error("LazyDetachedPicture cloneDetached failed");
        }
        return copy;
    }

    std::string sourceNamespace_;
    std::uint64_t sourceId_ = 0;
    std::shared_ptr<zelvo::ZelvoPicture const> source_;
    std::shared_ptr<zelvo::ZelvoPicture> writable_;
    std::shared_ptr<zelvo::ZelvoPicturePool> pool_;
    DetachedCloner cloner_;
    mutable std::mutex lock_;
};
