// check: what of a configuration the plugin's forgiving parser would silently change, one line each.
#include "check/config_check.h"
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/host_keys.h"
#include "clip/telemetry_source.h"

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
    std::set<std::string> keys;
    clip::TelemetrySummary const summary =
        clip::forEachPacket(options.input, options.telemetry, [&keys](clip::FoundPacket const& found) {
            for (auto const& [key, value] : found.packet.payload) {
                keys.insert(key);
            }
        });
    noteAll(clip::telemetryRemarks(sourceOf(options), summary));
    if (!keys.empty()) {
        for (auto const& [key, value] : clip::hostKeys(0.0, 0.0, 0)) {
            keys.insert(key);
        }
    }
    return check::checkKeys(root, {keys.begin(), keys.end()});
}

}  // namespace

bool runCheck(CheckOptions const& options)
{
    ConfigFile const config = readConfig(options.config);
    check::Findings findings = check::checkConfig(config.root, config.text);
    if (!sourceOf(options).empty()) {
        check::Findings const more = compareWithInput(config.root, options);
        findings.insert(findings.end(), more.begin(), more.end());
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
