// The one place where time enters the plugin; tests replace it at link time.
#pragma once

#include <cstdint>

namespace stanag_overlay {

/// The steady clock's current count in nanoseconds.
std::uint64_t steadyNowNs();

}  // namespace stanag_overlay
