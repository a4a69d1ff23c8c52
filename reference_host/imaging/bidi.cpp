// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Finds the runs of a line by FriBidi; only lines with letters beyond the left-to-right alphabets come here.
#include "imaging/bidi.h"

#include "sw_text.h"
#include "sw_utf8.h"

#include <fribidi.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>

namespace imaging {
namespace {

/// Lead byte of the first letters that read from right to left.
constexpr std::uint8_t kFirstRightToLeftLead = 0xD6;

bool isRightToLeft(char32_t c)
{
    return (c >= 0x0590 && c <= 0x08FF) || c == 0x200F || c == 0x202B || c == 0x202E || c == 0x2067 ||
           (c >= 0xFB1D && c <= 0xFDFF) || (c >= 0xFE70 && c <= 0xFEFC) || (c >= 0x10800 && c <= 0x10FFF) ||
           (c >= 0x1E800 && c <= 0x1EFFF);
}

struct Decoded {
    std::vector<FriBidiChar> codePoints;
    std::vector<std::size_t> offsets;  ///< where each begins, and the end of the line
};

Decoded decode(std::string_view line)
{
    Decoded decoded;
    for (std::size_t at = 0; at < line.size();) {
        auto const next = sw_utf8::codePointAt(line, at);
        decoded.codePoints.push_back(next.value);
        decoded.offsets.push_back(at);
        at += next.bytes;
    }
    decoded.offsets.push_back(line.size());
    return decoded;
}

/// Rule L2: from the highest level down to the lowest odd one, whatever stands at that level or above is turned.
void reorder(std::vector<DirectedRun>& runs, std::vector<FriBidiLevel>& levels)
{
    int const highest = *std::max_element(levels.begin(), levels.end());
    for (int level = highest; level > 0; --level) {
        for (std::size_t begin = 0; begin < runs.size(); ++begin) {
            std::size_t end = begin;
            while (end < runs.size() && levels[end] >= level) {
                ++end;
            }
            if (end == begin) {
                continue;
            }
            auto const from = static_cast<std::ptrdiff_t>(begin);
            auto const to = static_cast<std::ptrdiff_t>(end);
            std::reverse(runs.begin() + from, runs.begin() + to);
            std::reverse(levels.begin() + from, levels.begin() + to);
            begin = end;
        }
    }
}

}  // namespace

bool mayReadRightToLeft(std::string_view line)
{
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (static_cast<std::uint8_t>(line[i]) >= kFirstRightToLeftLead &&
            isRightToLeft(sw_utf8::codePointAt(line, i).value)) {
            return true;
        }
    }
    return false;
}

std::vector<DirectedRun> visualRuns(std::string_view line)
{
    auto const decoded = decode(line);
    auto const count = static_cast<FriBidiStrIndex>(decoded.codePoints.size());
    std::vector<FriBidiCharType> types(decoded.codePoints.size());
    std::vector<FriBidiBracketType> brackets(decoded.codePoints.size());
    std::vector<FriBidiLevel> levels(decoded.codePoints.size());
    fribidi_get_bidi_types(decoded.codePoints.data(), count, types.data());
    fribidi_get_bracket_types(decoded.codePoints.data(), count, types.data(), brackets.data());
    FriBidiParType base = FRIBIDI_PAR_ON;
    if (count == 0 ||
        fribidi_get_par_embedding_levels_ex(types.data(), brackets.data(), count, &base, levels.data()) == 0) {
        return {{line, Direction::LeftToRight}};
    }

    std::vector<DirectedRun> runs;
    std::vector<FriBidiLevel> runLevels;
    for (std::size_t begin = 0; begin < levels.size();) {
        std::size_t end = begin + 1;
        while (end < levels.size() && levels[end] == levels[begin]) {
            ++end;
        }
        bool const rightToLeft = levels[begin] % 2 != 0;
        runs.push_back({line.substr(decoded.offsets[begin], decoded.offsets[end] - decoded.offsets[begin]),
                        rightToLeft ? Direction::RightToLeft : Direction::LeftToRight});
        runLevels.push_back(levels[begin]);
        begin = end;
    }
    reorder(runs, runLevels);
    return runs;
}

std::vector<DirectedRun> const& RunCache::runsOf(std::string_view line)
{
    key_ = line;
    std::replace_if(key_.begin(), key_.end(), sw_detail::isDigit, '0');
    runs_.clear();
    for (auto const& run : entryOf(key_).runs) {
        runs_.push_back({line.substr(run.offset, run.length), run.direction});
    }
    lines_.forgetLent();
    return runs_;
}

RunCache::Entry const& RunCache::entryOf(std::string_view line)
{
    std::uint64_t const hash = joinHash(std::hash<std::string_view>()(line), 1);
    auto const* const known = lines_.find(hash, [&](Entry const& entry) { return entry.line == line; });
    if (known != nullptr) {
        return *known;
    }
    Entry entry{std::string(line), {}};
    for (auto const& run : visualRuns(line)) {
        entry.runs.push_back({static_cast<std::size_t>(run.text.data() - line.data()), run.text.size(), run.direction});
    }
    std::size_t const bytes = sizeof(Entry) + entry.line.capacity() + 1 + entry.runs.capacity() * sizeof(Run);
    return lines_.insert(hash, std::move(entry), bytes);
}

}  // namespace imaging
