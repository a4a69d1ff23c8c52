// text: what would be drawn on each picture, as JSON lines; nothing is encoded.
#include "annotated_clip.h"
#include "commands.h"
#include "config_file.h"
#include "json_line.h"
#include "messages.h"
#include "standard_output.h"

#include "imaging_access.h"

namespace cli {
namespace {

std::string textLine(ClipFrame const& frame, std::vector<imaging::DrawnText> const& draws)
{
    std::string line = "{\"frame\": " + std::to_string(frame.number) + ", \"pts\": ";
    appendJsonNumber(line, frame.seconds);
    line += ", \"draws\": [";
    char const* separator = "";
    for (imaging::DrawnText const& draw : draws) {
        line += separator;
        line += "{\"text\": ";
        appendJsonString(line, draw.text);
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
    AnnotatedClip clip(options.input, options.telemetry, config.text);
    std::vector<imaging::DrawnText> draws;
    imaging::recordTexts(clip.painter(), [&draws](imaging::DrawnText const& text) { draws.push_back(text); });
    bool any = false;
    while (std::optional<ClipFrame> const frame = clip.next()) {
        draws.clear();
        clip.annotate(*frame);
        writeLine(textLine(*frame, draws));
        any = true;
    }
    if (!any) {
        throw noPictures(options.input);
    }
    flushOutput();
    for (std::string const& remark : clip.remarks()) {
        note(remark);
    }
}

}  // namespace cli
