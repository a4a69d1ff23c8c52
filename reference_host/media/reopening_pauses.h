// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// How long to wait before an input that was lost is opened once more.
#pragma once

#include <algorithm>
#include <chrono>

namespace media {

class ReopeningPauses {
public:
    /// From the beginning of one attempt to that of the next: 0.1 s, then twice the one before, 1 s at most. The
    /// longest one bounds how late a return is seen.
    std::chrono::milliseconds next()
    {
        last_ = std::clamp(last_ * 2, std::chrono::milliseconds(100), std::chrono::milliseconds(1000));
        return last_;
    }
    /// Pictures come; after the next loss the pauses begin anew.
    void cameBack() { last_ = std::chrono::milliseconds(0); }

private:
    std::chrono::milliseconds last_{0};
};

}  // namespace media
