// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// frame: one annotated picture of a clip as PNG.
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/messages.h"
#include "cli/output_check.h"
#include "clip/clip_seek.h"
#include "imaging/imaging_access.h"
#include "media/interrupt.h"
#include "media/png_writer.h"
#include "sw_text.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>

namespace cli {

namespace {

/// A picture under the name of another format would be one that few programs open. Devices and pipes have no format.
void refuseOtherFormats(std::string const& output)
{
    std::error_code notThere;
    std::filesystem::file_status const status = std::filesystem::status(output, notThere);
    bool const isDevice = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
                          !std::filesystem::is_directory(status);
    std::string ending = std::filesystem::path(output).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(), sw_detail::toLower);
    if (!isDevice && ending != ".png") {
        throw WrongUsage(output + ": the picture is written as PNG; give a name that ends in .png");
    }
}

}  // namespace

void runFrame(FrameOptions const& options)
{
    refuseToReplace(options.output, options.input, options.config, options.telemetry.file);
    refuseOtherFormats(options.output);
    ConfigFile const config = readConfig(options.config);
    auto const clip =
        clip::openShownAt({options.input, options.telemetry, config.text, {}, options.look}, options.atSeconds);
    std::optional<clip::ClipFrame> const frame = clip->next();
    if (!frame) {
        throw clip::noPictures(options.input);
    }
    auto const picture = clip->annotate(*frame);
    media::settleInterrupts();
    refuseWhenTerminated(options.output);
    media::writePng(options.output, imaging::planesOf(*picture), clip->traits().color);
    noteAll(clip->remarks());
}

}  // namespace cli
