// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Writes configuration records as text for whole-text comparison: only the fields that differ from a
// default record appear, so a row also proves that nothing else has changed.
#pragma once

#include "stanag_overlay_config.h"

#include <string>

namespace stanag_overlay {

/// The differing fields in their order, separated by one space: "textSize=6 formats[k]{decimals=20}". A
/// default record gives "". Floats with nine significant digits, texts in double quotes as they are,
/// formats in the byte order of their keys.
std::string changes(OverlayCfg const& record);

}  // namespace stanag_overlay
