// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The plugin's parser is forgiving and silent, which suits a running video host; somebody at a terminal
// wants to know. This unit stands between the file and setConfig.
#include "cli/config_file.h"

#include "check/config_text.h"
#include "cli/silent_cerr.h"

#include <iostream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace cli {
namespace {

std::string readAll(std::string const& path)
{
    if (path == "-") {
        return {std::istreambuf_iterator<char>(std::cin), {}};
    }
    return check::readConfigFile(path);
}

}  // namespace

ConfigFile readConfig(std::string const& path)
{
    std::string text = readAll(path);
    SilentCerr const silent;  // the plugin will say the same once more
    check::ConfigText read = check::readConfigText(text);
    if (read.fault) {
        throw std::runtime_error(path + ": " + check::lineOf(*read.fault));
    }
    return {path, std::move(text), std::move(read.root)};
}

}  // namespace cli
