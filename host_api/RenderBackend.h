// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The host's render backend: it makes a picture's planes reachable for the processor.
#pragma once

#include "Picture.h"

#include <functional>
#include <utility>

class IRenderBackend {
public:
    /// Keeps a target mapped for as long as it lives. Move-only.
    class Guard {
    public:
        Guard() = default;
        /// `release` is called once when the guard ends; it may be empty and must not throw.
        Guard(MappedNV12 const& planes, std::function<void()> release) : planes_(planes), release_(std::move(release))
        {
        }
        Guard(Guard&& other) noexcept
            : planes_(std::exchange(other.planes_, MappedNV12{}))
            , release_(std::exchange(other.release_, nullptr))
        {
        }
        Guard& operator=(Guard&& other) noexcept
        {
            if (this != &other) {
                release();
                planes_ = std::exchange(other.planes_, MappedNV12{});
                release_ = std::exchange(other.release_, nullptr);
            }
            return *this;
        }
        Guard(Guard const&) = delete;
        Guard& operator=(Guard const&) = delete;
        ~Guard() { release(); }

        /// Ends the mapping now; a second call does nothing.
        void release() noexcept
        {
            planes_ = MappedNV12{};
            if (auto ended = std::exchange(release_, nullptr)) {
                ended();
            }
        }
        MappedNV12 const& planes() const noexcept { return planes_; }

    private:
        MappedNV12 planes_;
        std::function<void()> release_;
    };

    // The order of these virtual operations is the interface: hosts and plugins are built apart.
    virtual ~IRenderBackend() = default;
    virtual char const* name() const = 0;
    /// Maps the target. A mapping that failed has null planes or a size below 1.
    virtual Guard map(IRenderTarget& target) = 0;
};
