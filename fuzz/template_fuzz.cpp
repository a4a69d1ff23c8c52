// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Any template over any block and payload: the same text as the plain formatter's, and never longer than
// the template with every percent sign replaced by the longest value.
//
// Input: three parts with a zero byte between them: the template, the block as in a configuration, the payload.
#include "plain_overlay_format.h"
#include "stanag_overlay_config.h"
#include "stanag_overlay_format.h"

#include "SwJson.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace stanag_overlay;

void require(bool condition, char const* what)
{
    if (!condition) {
        std::cerr << "violated: " << what << std::endl;
        std::abort();
    }
}

std::string takePart(std::string& text)
{
    std::size_t const end = std::min(text.find('\0'), text.size());
    std::string part = text.substr(0, end);
    text.erase(0, end + 1);
    return part;
}

OverlayCfg readBlock(std::string const& item)
{
    auto records = OverlayConfigParser().parse("{\"overlay\":[" + item + "]}");
    OverlayCfg cfg = records.empty() ? OverlayCfg() : records.front();
    for (auto& entry : cfg.formats) {
        // More than the plain formatter's stream can give, and more memory than a run should take.
        entry.second.decimals = std::min(entry.second.decimals, 1200);
    }
    return cfg;
}

bool sameMemory(std::unordered_map<std::string, TimedText> const& a,
                std::unordered_map<std::string, TimedText> const& b)
{
    return a.size() == b.size() && std::all_of(a.begin(), a.end(), [&b](auto const& entry) {
               auto const other = b.find(entry.first);
               return other != b.end() && other->second.text == entry.second.text &&
                      other->second.timeNs == entry.second.timeNs;
           });
}

// Longest text any lookup can give: values, dates and placeholders, and what may be held of earlier frames.
std::size_t longestText(SwJsonObject const& root, OverlayCfg const& cfg)
{
    constexpr std::size_t kLongestNumber = 2000;
    constexpr std::size_t kLongestDateStep = 128;
    std::size_t longest = std::max(kLongestNumber, cfg.missingPlaceholder.size());
    for (auto const& [key, spec] : cfg.formats) {
        longest = std::max({longest, spec.missingPlaceholder.size(), spec.dateFormat.size() * kLongestDateStep});
    }
    for (auto const& [key, value] : root) {
        longest = std::max(longest, value.toString().size());
    }
    return longest;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string rest(data, data + size);
    std::string const tmpl = takePart(rest);
    OverlayCfg const cfg = readBlock(takePart(rest));
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(SwString(rest), SwString(), error);
    SwJsonObject const& payload = document.object();
    std::vector<std::string> const keys = payload.keys();
    std::size_t const longest = longestText(payload, cfg);
    auto const percents = static_cast<std::size_t>(std::count(tmpl.begin(), tmpl.end(), '%'));

    OverlayTextFormatter const formatter;
    OverlayRuntime fast;
    OverlayRuntime slow;
    SwJsonObject const empty;
    std::vector<SwJsonObject const*> const frames = {&payload, nullptr, &empty, &payload};
    std::uint64_t now = 1;
    for (SwJsonObject const* const root : frames) {
        std::string const text = formatter.expandTemplate(tmpl, root, cfg, fast, now, keys);
        require(text == plain::expandTemplate(tmpl, root, cfg, slow, now, keys), "the plain formatter's text");
        require(sameMemory(fast.heldValues, slow.heldValues), "the plain formatter's held values");
        require(sameMemory(fast.refreshValues, slow.refreshValues), "the plain formatter's limited values");
        if (!tmpl.empty()) {
            require(text.size() <= tmpl.size() + percents * longest, "the output's bound");
            require(percents != 0 || text == tmpl, "text without percent signs stays");
        }
        now += 700000;
    }
    return 0;
}
