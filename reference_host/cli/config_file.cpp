// The plugin's parser is forgiving and silent, which suits a running video host; somebody at a terminal
// wants to know. This unit stands between the file and setConfig.
#include "cli/config_file.h"

#include "cli/silent_cerr.h"
#include "sw_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace cli {
namespace {

constexpr char const* kIndexMark = " (index ";

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

/// The reader's message with its byte index as line and column.
std::string explain(std::string const& error, std::string const& text)
{
    std::size_t const mark = error.find(kIndexMark);
    std::size_t const index = mark == std::string::npos
                                  ? text.size()
                                  : std::strtoul(error.c_str() + mark + std::strlen(kIndexMark), nullptr, 10);
    std::string const message = error.substr(0, mark);
    return placeText(text, index) + ": " + message;
}

SwJsonValue parseWhole(std::string const& path, std::string const& text)
{
    SilentCerr const silent;  // the plugin will say the same once more
    SwString error;
    std::size_t cursor = 0;
    SwJsonValue root = SwJsonDocument::parseJson(text, cursor, SwString(), error);
    if (!error.isEmpty()) {
        throw std::runtime_error(path + ": " + explain(error, text) + "; mend the JSON there");
    }
    auto const rest = std::find_if(text.begin() + static_cast<std::ptrdiff_t>(cursor), text.end(),
                                   [](char c) { return !sw_detail::isSpace(c); });
    if (rest != text.end()) {
        throw std::runtime_error(path + ": " + placeText(text, static_cast<std::size_t>(rest - text.begin())) +
                                 ": characters after the end of the JSON; remove them");
    }
    return root;
}

}  // namespace

std::string placeText(std::string const& text, std::size_t index)
{
    auto const end = text.begin() + static_cast<std::ptrdiff_t>(std::min(index, text.size()));
    auto const line = std::count(text.begin(), end, '\n') + 1;
    auto const lineStart = std::find(std::make_reverse_iterator(end), text.rend(), '\n').base();
    return "line " + std::to_string(line) + ", column " + std::to_string(end - lineStart + 1);
}

ConfigFile readConfig(std::string const& path)
{
    ConfigFile config;
    config.path = path;
    config.text = readAll(path);
    SwJsonValue const root = parseWhole(path, config.text);
    if (!root.isObject()) {
        throw std::runtime_error(path + ": the outermost value is no object; write {\"overlay\": [ ... ]}");
    }
    config.root = root.toObject();
    if (!config.root.contains("overlay")) {
        throw std::runtime_error(path + ": \"overlay\" is missing; write {\"overlay\": [ ... ]}");
    }
    SwJsonObject const& members = config.root;
    if (!members["overlay"].isArray()) {
        throw std::runtime_error(path + ": \"overlay\" is no array; write {\"overlay\": [ ... ]}");
    }
    return config;
}

}  // namespace cli
