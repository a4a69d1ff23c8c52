// check: what of a configuration the plugin's forgiving parser would silently change.
#include "commands.h"
#include "config_file.h"

namespace cli {

void runCheck(std::string const& config, std::string const& input)
{
    readConfig(config);
    static_cast<void>(input);
}

}  // namespace cli
