// check: what of a configuration the plugin's forgiving parser would silently change, one line each.
#include "check/config_check.h"
#include "cli/commands.h"
#include "cli/config_file.h"
#include "cli/messages.h"
#include "cli/standard_output.h"
#include "clip/telemetry_source.h"

#include <set>

namespace cli {
namespace {

/// Findings about keys that the input does not deliver.
check::Findings compareWithInput(SwJsonObject const& root, std::string const& input)
{
    std::set<std::string> keys;
    clip::TelemetrySummary const summary = clip::forEachPacket(input, "", [&keys](telemetry::Packet const& packet) {
        for (auto const& [key, value] : packet.payload) {
            keys.insert(key);
        }
    });
    noteAll(clip::telemetryRemarks(input, summary));
    return check::checkKeys(root, {keys.begin(), keys.end()});
}

}  // namespace

bool runCheck(std::string const& configPath, std::string const& input)
{
    ConfigFile const config = readConfig(configPath);
    check::Findings findings = check::checkConfig(config.root, config.text);
    if (!input.empty()) {
        check::Findings const more = compareWithInput(config.root, input);
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
