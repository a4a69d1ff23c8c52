// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The configuration check: the members of blocks, and the telemetry keys that blocks use.
#include "check/config_check.h"

#include "check/condition_check.h"
#include "check/format_check.h"
#include "check/reading_rules.h"
#include "check/suggestion.h"
#include "check/template_keys.h"
#include "check/written_config.h"
#include "sw_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace check {
namespace {

void checkInteger(Member const& member, std::int32_t least, std::int32_t most, Findings& findings)
{
    becomesNumber(member, std::clamp(integerHeld(member.read), least, most), least, most, findings);
}

void checkDecimals(Member const& decimals, Findings& findings)
{
    checkInteger(decimals, -1, 12, findings);
}

void checkTextSize(Member const& size, Findings& findings)
{
    checkInteger(size, 6, 256, findings);
}

void checkThickness(Member const& thickness, Findings& findings)
{
    checkInteger(thickness, 1, 16, findings);
}

void checkFrameCount(Member const& frames, Findings& findings)
{
    becomesNumber(frames, frameCountHeld(frames.read), 1, 120, findings);
}

void checkTemplate(Member const& text, Findings& findings)
{
    keepsDefaultText(text, findings);
    if (templateKeys(text.read.stringRef()).unclosed) {
        findings.push_back({text.place, "\"%{\" without \"}\": the text from there on is shown as it is"});
    }
}

void checkColor(Member const& color, Findings& findings)
{
    std::optional<std::uint32_t> const held = colorHeld(color.read);
    if (!held) {
        findings.push_back({color.place, shown(color.written) + " is not #rrggbb and is ignored; the default stays"});
        return;
    }
    std::array<char, 8> heldText{};
    std::snprintf(heldText.data(), heldText.size(), "#%06x", static_cast<unsigned>(*held));
    std::string literal = literalText(color.written);
    std::transform(literal.begin(), literal.end(), literal.begin(), sw_detail::toLower);
    if (literal != heldText.data()) {
        findings.push_back({color.place, shown(color.written) + " is not #rrggbb and becomes " + heldText.data()});
    }
}

void checkFraction(Member const& fraction, Findings& findings)
{
    becomesFraction(fraction, fractionHeld(fraction.read), findings);
}

void checkPosition(Member const& position, Findings& findings)
{
    if (!position.read.isObject()) {
        findings.push_back(
            {position.place, shown(position.written) + " is no object and is ignored; the default stays"});
        return;
    }
    checkMembers(position, {{"x", checkFraction}, {"y", checkFraction}}, findings);
}

void checkOpacity(Member const& opacity, Findings& findings)
{
    if (std::optional<float> const held = opacityHeld(opacity.read)) {
        becomesFraction(opacity, *held, findings);
    } else {
        findings.push_back({opacity.place, shown(opacity.written) + " is no number and is ignored; 0.5 stays"});
    }
}

void checkBlock(Member const& block, Findings& findings)
{
    if (!block.read.isObject()) {
        findings.push_back({block.place, shown(block.written) + " is no object and is skipped"});
        return;
    }
    checkMembers(block,
                 {{"formatString", checkTemplate},
                  {"decimals", checkDecimals},
                  {"trimTrailingZeros", becomesSwitch},
                  {"missingPlaceholder", keepsDefaultText},
                  {"condition", checkCondition},
                  {"formats", checkFormats},
                  {"textColor", checkColor},
                  {"textSize", checkTextSize},
                  {"thickness", checkThickness},
                  {"position", checkPosition},
                  {"bgColor", checkColor},
                  {"bgAlpha", checkOpacity},
                  {"updateEveryNFrames", checkFrameCount}},
                 findings);
}

struct Keys {
    std::vector<std::string> const& delivered;
    Derivable const& derivable;
};

/// What would have to be delivered, or the name that was perhaps meant.
std::string cureFor(std::string const& key, Keys const& keys)
{
    auto const& missingSources = keys.derivable.missingSources;
    std::vector<std::string> const missing = missingSources ? missingSources(key) : std::vector<std::string>();
    if (missing.empty()) {
        std::string const meant = didYouMean(key, keys.delivered);
        return meant.empty() ? didYouMean(key, keys.derivable.keys) : meant;
    }
    std::string names;
    for (std::string const& source : missing) {
        names += (names.empty() ? "\"" : " and \"") + printable(source) + "\"";
    }
    return ": it is made of " + names + (missing.size() == 1 ? ", which is missing" : ", which are missing");
}

/// Adds a finding when the key is not delivered and cannot be made.
void expectKey(std::string const& place, std::string const& key, Keys const& keys, Findings& findings)
{
    auto const isAmong = [&key](std::vector<std::string> const& sorted) {
        return std::binary_search(sorted.begin(), sorted.end(), key);
    };
    if (!isAmong(keys.delivered) && !isAmong(keys.derivable.keys)) {
        findings.push_back({place, "the input never delivers \"" + printable(key) + "\"" + cureFor(key, keys)});
    }
}

}  // namespace

Findings checkConfig(SwJsonObject const& root, std::string const& text)
{
    SwJsonValue const written = readAsWritten(text);
    Findings findings;
    for (std::string const& place : repeatedMembers(text)) {
        findings.push_back({place, "stands there more than once: only the last one counts"});
    }
    refuseUnknown("", root, {"overlay", "availableKeys"}, findings);
    Member const overlay{"overlay", written.toObject()["overlay"], root["overlay"]};
    for (std::size_t index = 0; index < overlay.read.toArray().size(); ++index) {
        checkBlock(overlay.item(index), findings);
    }
    return findings;
}

Findings checkKeys(SwJsonObject const& root, std::vector<std::string> const& delivered, Derivable const& derivable)
{
    Keys const keys{delivered, derivable};
    Findings findings;
    std::size_t index = 0;
    for (SwJsonValue const& item : root["overlay"].toArray()) {
        std::string const place = "overlay[" + std::to_string(index++) + "]";
        SwJsonObject const& overlay = item.toObject();
        for (std::string const& key : templateKeys(overlay["formatString"].stringRef()).keys) {
            expectKey(place + ".formatString", key, keys, findings);
        }
        std::string const& conditionKey = overlay["condition"].toObject()["key"].stringRef();
        if (!conditionKey.empty()) {
            expectKey(place + ".condition.key", conditionKey, keys, findings);
        }
        for (auto const& [key, format] : overlay["formats"].toObject()) {
            expectKey(place + ".formats", key, keys, findings);
        }
    }
    return findings;
}

}  // namespace check
