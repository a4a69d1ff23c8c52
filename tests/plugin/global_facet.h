// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The global locale of a test: one facet differs from the classic one for as long as an object lives.
#pragma once

#include <locale>

namespace stanag_overlay {

// Puts a facet into the global locale for one test.
class GlobalFacet {
public:
    template <typename Facet>
    explicit GlobalFacet(Facet* facet) : before_(std::locale::global(std::locale(std::locale::classic(), facet)))
    {
    }
    ~GlobalFacet() { std::locale::global(before_); }
    GlobalFacet(GlobalFacet const&) = delete;
    GlobalFacet& operator=(GlobalFacet const&) = delete;

private:
    std::locale before_;
};

class DecimalComma : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
};

}  // namespace stanag_overlay
