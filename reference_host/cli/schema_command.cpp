// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// schema: the plugin's description of its configuration, with a clip's telemetry keys in it.
#include "cli/commands.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/delivered_keys.h"
#include "frame/frame_renderer.h"
#include "telemetry/derived_keys.h"

#include <utility>

namespace cli {

void runSchema(SchemaOptions const& options)
{
    frame::FrameRenderer renderer;
    std::string const& source = options.telemetry.file.empty() ? options.input : options.telemetry.file;
    if (!source.empty()) {
        clip::DeliveredKeys delivered = clip::deliveredKeys(options.input, options.telemetry);
        noteAll(clip::telemetryRemarks(source, delivered.summary));
        telemetry::DerivedKeyMaker(telemetry::KeySelection::withDerived()).addTo(delivered.newest);
        writeLine(renderer.schemaFor(std::move(delivered.newest)));
    } else {
        writeLine(renderer.plugin().getConfigList());
    }
    flushOutput();
}

}  // namespace cli
