// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// RapidJSON with its flag for full precision. In a unit of its own: beside each other the two ways of reading would
// be inlined less, and both slower than they are in a program that uses one.
#pragma once

#include <string>

/// Reads the text and destroys the document.
void parseWithRapidExactly(std::string const& text);
