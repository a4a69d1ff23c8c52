// schema: the plugin's description of its configuration, with a clip's telemetry keys in it.
#include "cli/commands.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/telemetry_source.h"
#include "frame/frame_renderer.h"

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

}  // namespace

void runSchema(std::string const& input)
{
    frame::FrameRenderer renderer;
    if (!input.empty()) {
        SwJsonObject keys;
        clip::TelemetrySummary const summary = clip::forEachPacket(input, "", [&keys](telemetry::Packet const& packet) {
            for (auto const& [key, value] : packet.payload) {
                keys.insertOrAssign(key, value);
            }
        });
        noteAll(clip::telemetryRemarks(input, summary));
        showKeys(renderer, std::move(keys));
    }
    writeLine(renderer.plugin().getConfigList());
    flushOutput();
}

}  // namespace cli
