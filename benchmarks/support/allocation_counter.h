// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Counts what the whole process takes from operator new, shared libraries included.
#pragma once

#include <cstdint>

/// Calls of operator new since the start of the process.
std::uint64_t allocationCount();
