// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Mapping of render targets for the plugin: the planes of our own pictures.
#include "frame/mapped_backend.h"

#include "imaging/imaging_access.h"

namespace frame {

IRenderBackend::Guard MappedBackend::map(IRenderTarget& target)
{
    return Guard(imaging::planesOf(target), nullptr);
}

}  // namespace frame
