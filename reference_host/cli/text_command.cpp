// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// text: what would be drawn on each picture, as JSON lines; nothing is encoded.
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/clip_seek.h"
#include "imaging/imaging_access.h"
#include "telemetry/json_line.h"

namespace cli {
namespace {

std::string textLine(clip::ClipFrame const& frame, std::vector<imaging::DrawnText> const& draws)
{
    std::string line = "{\"frame\": " + std::to_string(frame.number) + ", \"pts\": ";
    telemetry::appendJsonNumber(line, frame.seconds);
    line += ", \"draws\": [";
    char const* separator = "";
    for (imaging::DrawnText const& draw : draws) {
        line += separator;
        line += "{\"text\": ";
        telemetry::appendJsonString(line, draw.text);
        line += ", \"x\": " + std::to_string(draw.x) + ", \"y\": " + std::to_string(draw.y) +
                ", \"size\": " + std::to_string(draw.pixelSize) + "}";
        separator = ", ";
    }
    return line + "]}";
}

}  // namespace

void runText(TextOptions const& options)
{
    ConfigFile const config = readConfig(options.config);
    auto const opened =
        clip::openRange({options.input, options.telemetry, config.text, {}, options.look, true}, options.range);
    clip::AnnotatedClip& clip = *opened;
    std::vector<imaging::DrawnText> draws;
    imaging::recordTexts(clip.painter(), [&draws](imaging::DrawnText const& text) { draws.push_back(text); });
    bool any = false;
    while (std::optional<clip::ClipFrame> const frame = clip::nextOf(clip, options.range)) {
        draws.clear();
        clip.annotate(*frame);
        writeLine(textLine(*frame, draws));
        if (clip.demuxer().isLive()) {
            flushOutput();  // somebody watches
        }
        any = true;
    }
    if (!any) {
        throw clip::noPictures(options.input);
    }
    flushOutput();
    noteAll(clip.remarks());
}

}  // namespace cli
