// The plugin silently takes a text that it cannot read for an empty configuration; whoever runs a pipeline wants to
// know.
#include "config_text.h"

#include "check/config_text.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace gst_overlay {

std::string readConfigFile(std::string const& path)
{
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) {
        throw std::runtime_error(path + ": is a folder; give a configuration file");
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad()) {
        throw std::runtime_error(path + ": cannot be read: " + std::strerror(errno == 0 ? EIO : errno) +
                                 "; check the path");
    }
    if (std::string const fault = faultOf(text); !fault.empty()) {
        throw std::runtime_error(path + ": " + fault);
    }
    return text;
}

std::string faultOf(std::string const& config)
{
    check::ConfigText const read = check::readConfigText(config);
    if (!read.fault) {
        return "";
    }
    return read.fault->place ? "line " + std::to_string(read.fault->place->line) + ", column " +
                                   std::to_string(read.fault->place->column) + ": " + read.fault->text
                             : read.fault->text;
}

}  // namespace gst_overlay
