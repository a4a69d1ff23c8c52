// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What std::cerr has written by its last flush, while an object lives.
#pragma once

#include <iostream>
#include <sstream>
#include <string>

class FlushedCerr {
public:
    FlushedCerr() : usual_(std::cerr.rdbuf(&buffer_)) { std::cerr << std::nounitbuf; }
    ~FlushedCerr()
    {
        std::cerr << std::unitbuf;
        std::cerr.rdbuf(usual_);
    }
    FlushedCerr(FlushedCerr const&) = delete;
    FlushedCerr& operator=(FlushedCerr const&) = delete;

    std::string const& text() const { return buffer_.atFlush; }

private:
    struct Buffer : std::stringbuf {
        std::string atFlush;
        int sync() override
        {
            atFlush = str();
            return 0;
        }
    };
    Buffer buffer_;
    std::streambuf* usual_;
};
