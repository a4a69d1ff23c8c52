// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Where a virtual operation stands in its class's table: host and plugin are built apart and call each other by it.
#pragma once

#include <cstddef>
#include <cstring>

/// The slot of a virtual operation in its class's table, the two destructor slots counted. By the Itanium
/// C++ ABI a pointer to a virtual member holds the slot's byte offset, marked by 1 added to it or, on some
/// processors, to the adjustment that follows.
template <typename Member>
std::size_t slotOf(Member member)
{
    struct {
        std::size_t offset;
        std::size_t adjustment;
    } raw{};
    static_assert(sizeof raw == sizeof member);
    std::memcpy(&raw, &member, sizeof raw);
    std::size_t const offset = (raw.adjustment & 1U) != 0 ? raw.offset : raw.offset - 1;
    return offset / sizeof(void*);
}
