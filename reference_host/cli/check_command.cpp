// check: what of a configuration the plugin's forgiving parser would silently change, one line each.
#include "commands.h"
#include "config_check.h"
#include "config_file.h"
#include "messages.h"
#include "standard_output.h"
#include "telemetry_source.h"

#include <iterator>
#include <set>

namespace cli {
namespace {

/// Findings about keys that the input does not deliver; none when it delivers nothing at all, which is
/// said in one remark.
std::vector<Finding> compareWithInput(SwJsonObject const& root, std::string const& input)
{
    std::set<std::string> keys;
    TelemetrySummary const summary = forEachPacket(input, "", [&keys](telemetry::Packet const& packet) {
        for (auto const& [key, value] : packet.payload) {
            keys.insert(key);
        }
    });
    for (std::string const& remark : telemetryRemarks(input, summary)) {
        note(remark);
    }
    return keys.empty() ? std::vector<Finding>() : checkKeys(root, {keys.begin(), keys.end()});
}

}  // namespace

void runCheck(std::string const& configPath, std::string const& input)
{
    ConfigFile const config = readConfig(configPath);
    std::vector<Finding> findings = checkConfig(config.root);
    if (!input.empty()) {
        std::vector<Finding> const more = compareWithInput(config.root, input);
        findings.insert(findings.end(), more.begin(), more.end());
    }
    for (Finding const& finding : findings) {
        writeLine(config.path + ": " + finding.place + ": " + finding.text);
    }
    if (findings.empty()) {
        writeLine(config.path + ": everything is taken as it stands");
    }
    flushOutput();
}

}  // namespace cli
