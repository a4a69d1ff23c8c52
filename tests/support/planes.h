// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// NV12 pictures in plain vectors, without any imaging library.
#pragma once

#include "Picture.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace media_test {

/// Planes as the imaging library has them, rows padded to a multiple of 64 bytes, with guard bytes after
/// each row and plane, so that writing outside shows.
struct Planes {
    static constexpr std::uint8_t kGuard = 0xA5;
    static constexpr int kGuardBytes = 64;

    static std::size_t bytes(int stride, int rows)
    {
        return static_cast<std::size_t>(stride) * static_cast<std::size_t>(rows);
    }
    static int padded(int bytes) { return (bytes + 63) / 64 * 64; }

    int width;
    int height;
    int chromaWidth;
    int chromaHeight;
    std::vector<std::uint8_t> luma;
    std::vector<std::uint8_t> chroma;

    Planes(int w, int h)
        : width(w)
        , height(h)
        , chromaWidth((w + 1) / 2 * 2)
        , chromaHeight((h + 1) / 2)
        , luma(bytes(lumaStride(), h), kGuard)
        , chroma(bytes(chromaStride(), chromaHeight), kGuard)
    {
    }

    int lumaStride() const { return padded(width) + kGuardBytes; }
    int chromaStride() const { return padded(chromaWidth) + kGuardBytes; }
    MappedNV12 mapped() { return {luma.data(), chroma.data(), width, height, lumaStride(), chromaStride()}; }

    std::uint8_t& y(int column, int row) { return luma[bytes(lumaStride(), row) + static_cast<std::size_t>(column)]; }
    std::uint8_t& c(int byte, int row) { return chroma[bytes(chromaStride(), row) + static_cast<std::size_t>(byte)]; }

    /// Different values everywhere, within the limited range.
    void fillPattern(int seed)
    {
        for (int row = 0; row < height; ++row) {
            for (int column = 0; column < width; ++column) {
                y(column, row) = static_cast<std::uint8_t>(16 + (column * 7 + row * 13 + seed * 31) % 220);
            }
        }
        for (int row = 0; row < chromaHeight; ++row) {
            for (int byte = 0; byte < chromaWidth; ++byte) {
                c(byte, row) = static_cast<std::uint8_t>(16 + (byte * 11 + row * 5 + seed * 17) % 225);
            }
        }
    }

    /// Whether both hold the same picture, whatever stands in the padding.
    bool samePicture(Planes& other)
    {
        bool same = width == other.width && height == other.height;
        for (int row = 0; same && row < height; ++row) {
            same = std::memcmp(&y(0, row), &other.y(0, row), static_cast<std::size_t>(width)) == 0;
        }
        for (int row = 0; same && row < chromaHeight; ++row) {
            same = std::memcmp(&c(0, row), &other.c(0, row), static_cast<std::size_t>(chromaWidth)) == 0;
        }
        return same;
    }

    /// Whether the bytes outside the picture and its padding are untouched.
    bool guarded()
    {
        bool whole = true;
        for (int row = 0; row < height; ++row) {
            for (int column = padded(width); column < lumaStride(); ++column) {
                whole = whole && y(column, row) == kGuard;
            }
        }
        for (int row = 0; row < chromaHeight; ++row) {
            for (int byte = padded(chromaWidth); byte < chromaStride(); ++byte) {
                whole = whole && c(byte, row) == kGuard;
            }
        }
        return whole;
    }
};

}  // namespace media_test
