// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The first look at a configuration, before its members are compared with what the parser makes of them.
#include "check/config_text.h"

#include "sw_text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace check {
namespace {

constexpr char const* kIndexMark = " (index ";

/// The reader's message, with its byte index as a place.
TextFault syntaxFault(std::string const& error, std::string const& text)
{
    std::size_t const mark = error.find(kIndexMark);
    std::size_t const index = mark == std::string::npos
                                  ? text.size()
                                  : std::strtoul(error.c_str() + mark + std::strlen(kIndexMark), nullptr, 10);
    return {placeIn(text, index), error.substr(0, mark) + "; mend the JSON there"};
}

/// What is wrong with JSON that was read.
std::optional<TextFault> shapeFault(SwJsonValue const& root)
{
    char const* const cure = "; write {\"overlay\": [ ... ]}";
    if (!root.isObject()) {
        return TextFault{{}, std::string("the outermost value is no object") + cure};
    }
    SwJsonObject const& members = root.toObject();
    if (!members.contains("overlay")) {
        return TextFault{{}, std::string("\"overlay\" is missing") + cure};
    }
    if (!members["overlay"].isArray()) {
        return TextFault{{}, std::string("\"overlay\" is no array") + cure};
    }
    return std::nullopt;
}

}  // namespace

TextPlace placeIn(std::string const& text, std::size_t index)
{
    auto const end = text.begin() + static_cast<std::ptrdiff_t>(std::min(index, text.size()));
    auto const line = std::count(text.begin(), end, '\n') + 1;
    auto const lineStart = std::find(std::make_reverse_iterator(end), text.rend(), '\n').base();
    return {static_cast<std::size_t>(line), static_cast<std::size_t>(end - lineStart) + 1};
}

std::string lineOf(TextFault const& fault)
{
    return fault.place ? "line " + std::to_string(fault.place->line) + ", column " +
                             std::to_string(fault.place->column) + ": " + fault.text
                       : fault.text;
}

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
        int const reason = errno == 0 ? EIO : errno;
        throw std::runtime_error(path + ": cannot be read: " + std::strerror(reason) +
                                 (reason == EACCES ? "; make it readable" : "; check the path"));
    }
    return text;
}

ConfigText readConfigText(std::string const& text)
{
    SwString error;
    std::size_t cursor = 0;
    SwJsonValue const root = SwJsonDocument::parseJson(text, cursor, SwString(), error);
    if (!error.isEmpty()) {
        return {{}, syntaxFault(error.toStdString(), text)};
    }
    auto const rest = std::find_if(text.begin() + static_cast<std::ptrdiff_t>(cursor), text.end(),
                                   [](char c) { return !sw_detail::isSpace(c); });
    if (rest != text.end()) {
        return {{},
                TextFault{placeIn(text, static_cast<std::size_t>(rest - text.begin())),
                          "characters after the end of the JSON; remove them"}};
    }
    std::optional<TextFault> fault = shapeFault(root);
    return {fault ? SwJsonObject() : root.toObject(), std::move(fault)};
}

}  // namespace check
