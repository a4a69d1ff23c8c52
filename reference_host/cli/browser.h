// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Shows an address in the person's own browser.
#pragma once

#include <string>

namespace cli {

/// Hands the address to xdg-open and does not wait for it. Where there is no desktop, no xdg-open or no browser,
/// nothing happens. The address is on a command line for a moment, where other users of the machine can read it.
void openInBrowser(std::string const& address);

}  // namespace cli
