// schema: the plugin's description of its configuration, with a clip's telemetry keys in it.
#include "cli/commands.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/host_keys.h"
#include "clip/telemetry_source.h"
#include "frame/frame_renderer.h"
#include "telemetry/derived_keys.h"

#include <memory>
#include <utility>

namespace cli {
namespace {

/// Lets the plugin see one frame whose payload holds every key of the input.
void showKeys(frame::FrameRenderer& renderer, SwJsonObject payload)
{
    constexpr unsigned kSide = 16;
    std::string const producer = "schema";
    frame::Choice choice;
    choice.producer = producer;
    choice.payload = std::make_shared<SwJsonObject const>(std::move(payload));
    choice.payloadFrame = 1;
    renderer.render(1, renderer.takePicture(kSide, kSide), {producer}, {choice});
}

void addHostKeys(SwJsonObject& keys)
{
    for (auto const& [key, value] : clip::hostKeys(0.0, 0.0, 0)) {
        keys.insertOrAssign(key, value);
    }
}

}  // namespace

void runSchema(SchemaOptions const& options)
{
    frame::FrameRenderer renderer;
    std::string const& source = options.telemetry.file.empty() ? options.input : options.telemetry.file;
    if (!source.empty()) {
        SwJsonObject keys;
        clip::TelemetrySummary const summary =
            clip::forEachPacket(options.input, options.telemetry, [&keys](clip::FoundPacket const& found) {
                for (auto const& [key, value] : found.packet.payload) {
                    keys.insertOrAssign(key, value);
                }
            });
        noteAll(clip::telemetryRemarks(source, summary));
        if (!keys.empty()) {
            addHostKeys(keys);
            telemetry::DerivedKeyMaker(telemetry::KeySelection::withDerived()).addTo(keys);
        }
        showKeys(renderer, std::move(keys));
    }
    writeLine(renderer.plugin().getConfigList());
    flushOutput();
}

}  // namespace cli
