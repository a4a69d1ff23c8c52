// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Questions are checked member by member; whatever a page sends gets an answer.
#include "editor/picture_message.h"

#include "editor/request_handler.h"
#include "telemetry/json_line.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace editor {
namespace {

/// No clip has more frames, no configuration more items, and doubles hold all of them.
constexpr std::int64_t kMostCount = std::int64_t{1} << 40U;
constexpr double kMostSeconds = 1e9;

[[noreturn]] void refuse(std::string const& line)
{
    throw RequestFailure(400, line);
}

/// A whole number from `least` up; 1.0 is none, as JSON.stringify writes no such number.
std::int64_t countMember(SwJsonObject const& body, char const* name, std::int64_t least)
{
    SwJsonValue const& value = body[name];
    if (!value.isInt() || value.toInt() < least || value.toInt() > kMostCount) {
        refuse(std::string("\"") + name + "\" is a whole number from " + std::to_string(least));
    }
    return value.toInt();
}

Place timeOf(SwJsonValue const& value)
{
    double const seconds = value.isInt() ? static_cast<double>(value.toInt()) : value.toDouble();
    if ((!value.isInt() && !value.isDouble()) || !(seconds >= 0.0 && seconds <= kMostSeconds)) {
        refuse("\"seconds\" is a number from 0");
    }
    return Place::at(seconds);
}

Place stepOf(SwJsonObject const& body)
{
    SwJsonValue const& step = body["step"];
    if (!step.isInt() || (step.toInt() != -1 && step.toInt() != 1)) {
        refuse("\"step\" is -1 or 1");
    }
    return Place::ofFrame(
        static_cast<std::uint64_t>(std::max<std::int64_t>(1, countMember(body, "from", 1) + step.toInt())));
}

Place placeOf(SwJsonObject const& body)
{
    int const ways = int(body.contains("seconds")) + int(body.contains("frame")) + int(body.contains("step"));
    if (ways != 1) {
        refuse("one of \"seconds\", \"frame\" and \"step\" names the picture");
    }
    if (body.contains("seconds")) {
        return timeOf(body["seconds"]);
    }
    return body.contains("frame") ? Place::ofFrame(static_cast<std::uint64_t>(countMember(body, "frame", 1)))
                                  : stepOf(body);
}

std::vector<std::size_t> hiddenItems(SwJsonValue const& value)
{
    std::vector<std::size_t> items;
    if (!value.isArray() && !value.isNull()) {
        refuse("\"hidden\" is an array of whole numbers");
    }
    for (SwJsonValue const& item : value.toArray()) {
        if (!item.isInt() || item.toInt() < 0 || item.toInt() > kMostCount) {
            refuse("\"hidden\" is an array of whole numbers");
        }
        items.push_back(static_cast<std::size_t>(item.toInt()));
    }
    return items;
}

SwJsonArray boxValues(std::vector<Box> const& boxes)
{
    SwJsonArray values;
    for (Box const& box : boxes) {
        values.append(SwJsonObject{{"block", box.block},
                                   {"left", box.left},
                                   {"top", box.top},
                                   {"right", box.right},
                                   {"bottom", box.bottom},
                                   {"anchorX", box.anchorX},
                                   {"anchorY", box.anchorY}});
    }
    return values;
}

void appendLittleEndian(std::string& bytes, std::uint32_t number, int count)
{
    for (int i = 0; i < count; ++i) {
        bytes += static_cast<char>(static_cast<unsigned char>(number >> (8 * i)));
    }
}

}  // namespace

std::string const& textMember(SwJsonObject const& body, std::string const& name)
{
    if (!body[name].isString()) {
        refuse("\"" + name + "\" is a text");
    }
    return body[name].stringRef();
}

PreviewQuestion readPreviewQuestion(SwJsonObject const& body)
{
    return {textMember(body, "text"), placeOf(body), hiddenItems(body["hidden"])};
}

SwJsonValue faultValue(std::optional<check::TextFault> const& fault)
{
    if (!fault) {
        return {};
    }
    check::TextPlace const place = fault->place.value_or(check::TextPlace{});
    return SwJsonObject{{"line", place.line}, {"column", place.column}, {"text", fault->text}};
}

std::string bitmapOf(std::vector<std::uint8_t> const& rgb, int width, int height)
{
    constexpr std::uint32_t kHeaderBytes = 54;
    constexpr std::size_t kPixelBytes = 3;
    auto const columns = static_cast<std::size_t>(width);
    auto const rows = static_cast<std::size_t>(height);
    std::size_t const rowBytes = (columns * kPixelBytes + 3) / 4 * 4;
    auto const pictureBytes = static_cast<std::uint32_t>(rowBytes * rows);
    std::string bytes = "BM";
    bytes.reserve(kHeaderBytes + pictureBytes);
    appendLittleEndian(bytes, kHeaderBytes + pictureBytes, 4);
    appendLittleEndian(bytes, 0, 4);
    appendLittleEndian(bytes, kHeaderBytes, 4);
    appendLittleEndian(bytes, 40, 4);  // bytes of the following part
    appendLittleEndian(bytes, static_cast<std::uint32_t>(width), 4);
    appendLittleEndian(bytes, static_cast<std::uint32_t>(height), 4);
    appendLittleEndian(bytes, 1, 2);   // planes
    appendLittleEndian(bytes, 24, 2);  // bits a pixel
    appendLittleEndian(bytes, 0, 4);   // not compressed
    appendLittleEndian(bytes, pictureBytes, 4);
    bytes.append(16, '\0');  // resolution and palette: none
    std::size_t const begin = bytes.size();
    bytes.resize(begin + pictureBytes);
    for (std::size_t y = 0; y < rows; ++y) {
        std::uint8_t const* from = rgb.data() + (rows - 1 - y) * columns * kPixelBytes;
        char* to = bytes.data() + begin + y * rowBytes;
        for (std::size_t x = 0; x < columns; ++x, from += kPixelBytes, to += kPixelBytes) {
            to[0] = static_cast<char>(from[2]);
            to[1] = static_cast<char>(from[1]);
            to[2] = static_cast<char>(from[0]);
        }
    }
    return bytes;
}

std::string previewMessage(Shown const& shown)
{
    std::string message;
    telemetry::appendJson(message, SwJsonObject{{"seconds", shown.seconds},
                                                {"frame", shown.frame},
                                                {"last", shown.last},
                                                {"width", shown.width},
                                                {"height", shown.height},
                                                {"boxes", boxValues(shown.boxes)},
                                                {"values", shown.values},
                                                {"error", faultValue(shown.fault)}});
    message += '\n';
    return message + bitmapOf(shown.rgb, shown.width, shown.height);
}

}  // namespace editor
