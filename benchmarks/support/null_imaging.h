// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// An imaging library of empty calls: what is left of a frame is the plugin's own share.
#pragma once

#include "RenderBackend.h"

namespace null_imaging {

/// Maps every target onto the same two bytes.
class Backend : public IRenderBackend {
public:
    char const* name() const override { return "null"; }
    Guard map(IRenderTarget& target) override;
};

}  // namespace null_imaging
