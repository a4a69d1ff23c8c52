// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// check: what of a configuration the plugin's forgiving parser would silently change, one line each.
#include "check/config_check.h"
#include "check/placement_check.h"
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/delivered_keys.h"
#include "clip/placed_blocks.h"
#include "sw_number_text.h"
#include "telemetry/derived_keys.h"
#include "telemetry/file_kind.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace cli {
namespace {

/// Where the keys come from; empty when nobody asks for them.
std::string const& sourceOf(CheckOptions const& options)
{
    return options.telemetry.file.empty() ? options.input : options.telemetry.file;
}

/// Findings about keys that the input does not deliver.
check::Findings compareWithInput(SwJsonObject const& root, CheckOptions const& options)
{
    clip::DeliveredKeys const delivered = clip::deliveredKeys(options.input, options.telemetry);
    noteAll(clip::telemetryRemarks(sourceOf(options), delivered.summary));
    std::vector<std::string> const keys = delivered.newest.keys();
    std::set<std::string> const known(keys.begin(), keys.end());
    return check::checkKeys(root, keys, {clip::derivableKeys(delivered), [&known](std::string const& key) {
                                             return telemetry::missingSources(key, known);
                                         }});
}

/// True for an INPUT whose pictures can be read after its telemetry.
bool hasPictures(CheckOptions const& options)
{
    std::error_code ignored;
    return std::filesystem::is_regular_file(options.input, ignored) &&
           telemetry::kindOfFile(options.input) == telemetry::FileKind::Other;
}

void sayWhatIsNotDrawn(ConfigFile const& config, std::vector<check::PlacedBlock> const& placed, double seconds)
{
    SwJsonArray const& items = config.root["overlay"].toArray();
    for (std::size_t i = 0; i < items.size(); ++i) {
        bool const isDrawn = std::any_of(placed.begin(), placed.end(), [i](auto const& b) { return b.number == i; });
        if (items[i].isObject() && !isDrawn) {
            writeLine(config.path + ": overlay[" + std::to_string(i) + "]: is not drawn at " +
                      sw_text::secondsText(seconds));
        }
    }
}

/// Says where the blocks stand, and which do not; gives back what is wrong with their places.
check::Findings placeOn(CheckOptions const& options, ConfigFile const& config)
{
    clip::DrawnBlocks const drawn =
        clip::blocksShownAt({options.input, options.telemetry, {}, {}, options.look}, config.root, options.atSeconds);
    check::PictureSize const picture{drawn.width, drawn.height};
    std::vector<check::PlacedBlock> placed;
    for (auto const& [number, text] : drawn.blocks) {
        placed.push_back({number, text.x, text.y, text.left, text.top, text.right, text.bottom, text.pixelSize});
        writeLine(config.path + ": " + check::placeOf(placed.back()) + ": " + check::boxText(placed.back(), picture));
    }
    if (placed.empty()) {
        writeLine(config.path + ": no block is drawn " +
                  (options.atSeconds ? "at " + sw_text::secondsText(*options.atSeconds)
                                     : std::string("on the first pictures; --at chooses another one")));
    } else {
        sayWhatIsNotDrawn(config, placed, drawn.seconds);
    }
    return check::checkPlacement(placed, picture);
}

void append(check::Findings& findings, check::Findings const& more)
{
    findings.insert(findings.end(), more.begin(), more.end());
}

}  // namespace

bool runCheck(CheckOptions const& options)
{
    ConfigFile const config = readConfig(options.config);
    check::Findings findings = check::checkConfig(config.root, config.text);
    if (!sourceOf(options).empty()) {
        append(findings, compareWithInput(config.root, options));
    }
    if (hasPictures(options)) {
        append(findings, placeOn(options, config));
    } else if (options.atSeconds) {
        throw WrongUsage("--at: give a clip in a file as INPUT; other inputs have no pictures to place blocks on");
    }
    for (check::Finding const& finding : findings) {
        writeLine(config.path + ": " + finding.place + ": " + finding.text);
    }
    if (findings.empty()) {
        writeLine(config.path + ": everything is taken as it stands");
    }
    flushOutput();
    return findings.empty();
}

}  // namespace cli
