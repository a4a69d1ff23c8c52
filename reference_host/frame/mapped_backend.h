// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The render backend of a host whose pictures lie in ordinary memory: mapping is looking up the planes.
#pragma once

#include "RenderBackend.h"

namespace frame {

class MappedBackend : public IRenderBackend {
public:
    char const* name() const override { return "memory"; }
    Guard map(IRenderTarget& target) override;
};

}  // namespace frame
