// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One stream out of several, by PID or number.
#include "clip/stream_choice.h"

#include "media/encoder.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace clip {
namespace {

/// The whole text as a number without sign; -1 when it is none.
int numberOf(std::string_view text, int base)
{
    int number = -1;
    char const* const end = text.data() + text.size();
    bool const digits = !text.empty() && text.front() != '-';
    auto const [stop, failure] = std::from_chars(text.data(), end, number, base);
    return digits && failure == std::errc() && stop == end ? number : -1;
}

bool isPid(std::string_view text)
{
    return text.substr(0, 2) == "0x" || text.substr(0, 2) == "0X";
}

/// "0x101 (number 1)", or the number alone where it is the name.
std::string nameAndNumber(AVStream const& stream)
{
    std::string const name = streamName(stream);
    return stream.id == 0 ? name : name + " (number " + std::to_string(stream.index) + ")";
}

std::string missingAmong(std::string const& source, std::string const& wanted, std::vector<std::string> const& there)
{
    if (there.empty()) {
        return source + ": has no KLV stream " + wanted + " and no other; leave out --klv";
    }
    std::string list;
    for (std::string const& name : there) {
        list += (list.empty() ? "" : ", ") + name;
    }
    return source + ": has no KLV stream " + wanted + "; there " + (there.size() == 1 ? "is " : "are ") + list;
}

}  // namespace

std::string pidText(int pid)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "0x%x", static_cast<unsigned>(pid));
    return text.data();
}

std::string streamName(AVStream const& stream)
{
    return stream.id != 0 ? pidText(stream.id) : std::to_string(stream.index);
}

StreamChoice::StreamChoice(std::string text) : text_(std::move(text))
{
    if (isPid(text_)) {
        id_ = numberOf(std::string_view(text_).substr(2), 16);
    } else {
        number_ = numberOf(text_, 10);
    }
    if (!takesAll() && id_ < 0 && number_ < 0) {
        throw media::UnknownChoice("--klv " + text_ + ": give a PID such as 0x1f1, or the stream's number");
    }
}

bool StreamChoice::takes(AVStream const& stream) const
{
    return takesAll() || (id_ >= 0 ? stream.id == id_ : stream.index == number_);
}

bool StreamChoice::takes(std::string const& name) const
{
    return takesAll() || (id_ >= 0 ? isPid(name) && numberOf(std::string_view(name).substr(2), 16) == id_
                                   : numberOf(name, 10) == number_);
}

std::string StreamChoice::missingIn(media::InputStreams const& streams, std::string const& source) const
{
    if (takesAll()) {
        return "";
    }
    // A stream that nothing announces as telemetry is recognised by its first packet only.
    for (media::StreamKind const kind : {media::StreamKind::Klv, media::StreamKind::Data}) {
        for (int const index : streams.streamsOf(kind)) {
            AVStream const& stream = streams.stream(index);
            AVMediaType const type = stream.codecpar->codec_type;
            if (takes(stream) && (type == AVMEDIA_TYPE_DATA || type == AVMEDIA_TYPE_UNKNOWN)) {
                return "";
            }
        }
    }
    std::vector<std::string> there;
    for (int const index : streams.streamsOf(media::StreamKind::Klv)) {
        there.push_back(nameAndNumber(streams.stream(index)));
    }
    return missingAmong(source, text_, there);
}

void StreamChoice::requireIn(media::Demuxer const& demuxer) const
{
    std::string const missing = missingIn(demuxer.streams(), demuxer.name());
    if (!missing.empty()) {
        throw std::runtime_error(missing);
    }
}

void StreamChoice::requireAmong(std::vector<std::string> const& names, std::string const& source) const
{
    if (takesAll() || std::any_of(names.begin(), names.end(), [this](auto const& name) { return takes(name); })) {
        return;
    }
    throw std::runtime_error(missingAmong(source, text_, names));
}

}  // namespace clip
