// The plugin's clock in tests: it stands still until a test moves it. Linked in place of steady_time.cpp.
#pragma once

#include <cstdint>

namespace test_clock {

inline constexpr std::uint64_t kNsPerMs = 1000000;

void setNowNs(std::uint64_t nowNs);
void advanceNs(std::uint64_t byNs);
std::uint64_t nowNs();
/// How often the plugin has asked since the last setNowNs.
int readings();

}  // namespace test_clock
