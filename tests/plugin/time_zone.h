// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The process time zone of one test; put back when its scope ends.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace stanag_overlay {

class TimeZone {
public:
    explicit TimeZone(char const* zone)
    {
        if (char const* const before = std::getenv("TZ")) {
            before_ = before;
        }
        setenv("TZ", zone, 1);
        tzset();
    }
    ~TimeZone()
    {
        if (before_) {
            setenv("TZ", before_->c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }
    TimeZone(TimeZone const&) = delete;
    TimeZone& operator=(TimeZone const&) = delete;

private:
    std::optional<std::string> before_;
};

}  // namespace stanag_overlay
