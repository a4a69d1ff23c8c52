// The plugin's parser is forgiving and silent, which suits a running video host; somebody at a terminal
// wants to know. This unit stands between the file and setConfig.
#include "cli/config_file.h"

#include "check/config_text.h"
#include "cli/silent_cerr.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
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
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw std::runtime_error(path + ": is a folder; give a configuration file");
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        int const reason = errno == 0 ? EIO : errno;
        throw std::runtime_error(path + ": cannot be read: " + std::strerror(reason) +
                                 (reason == EACCES ? "; make it readable" : "; check the path"));
    }
    return text;
}

std::string messageOf(check::TextFault const& fault)
{
    return fault.place ? "line " + std::to_string(fault.place->line) + ", column " +
                             std::to_string(fault.place->column) + ": " + fault.text
                       : fault.text;
}

}  // namespace

ConfigFile readConfig(std::string const& path)
{
    std::string text = readAll(path);
    SilentCerr const silent;  // the plugin will say the same once more
    check::ConfigText read = check::readConfigText(text);
    if (read.fault) {
        throw std::runtime_error(path + ": " + messageOf(*read.fault));
    }
    return {path, std::move(text), std::move(read.root)};
}

}  // namespace cli
