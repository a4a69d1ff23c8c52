// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Titles, chapters and time code on their way into another container.
#include "media/kept_tags.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/mem.h>
#include <libavutil/timecode.h>
}

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <new>
#include <string_view>

namespace media {
namespace {

constexpr char const* kTimecode = "timecode";

/// What FFmpeg's muxer writes when nobody has named a service.
constexpr char const* kNoName = "Service01";
constexpr char const* kNoProvider = "FFmpeg";

/// What describes the file or the stream that it stood in, not the recording.
constexpr std::array<std::string_view, 12> kOfTheOldFile = {
    "major_brand", "minor_version",    "compatible_brands", "encoder",   "duration",    "bps",
    "rotate",      "number_of_frames", "number_of_bytes",   "vendor_id", "_statistics", "timecode"};

/// Tags for which MP4 has a place.
constexpr std::array<std::string_view, 24> kMp4Tags = {
    "title",   "artist",     "album_artist", "album",    "composer", "writer",      "date",     "creation_time",
    "comment", "genre",      "copyright",    "grouping", "lyrics",   "description", "synopsis", "show",
    "network", "episode_id", "keywords",     "track",    "disc",     "compilation", "rating",   "hd_video"};

std::string lower(std::string_view text)
{
    std::string low(text);
    std::transform(low.begin(), low.end(), low.begin(), [](unsigned char letter) { return std::tolower(letter); });
    return low;
}

bool isOfTheOldFile(std::string const& key)
{
    return std::any_of(kOfTheOldFile.begin(), kOfTheOldFile.end(),
                       [&key](std::string_view prefix) { return key.compare(0, prefix.size(), prefix) == 0; });
}

std::string valueOf(AVDictionary const* tags, char const* key)
{
    AVDictionaryEntry const* const entry = av_dict_get(tags, key, nullptr, 0);
    return entry == nullptr ? "" : entry->value;
}

bool isOneOf(AVFormatContext const& output, std::initializer_list<std::string_view> names)
{
    return std::find(names.begin(), names.end(), output.oformat->name) != names.end();
}

bool isMp4(AVFormatContext const& output)
{
    return isOneOf(output, {"mp4", "mov", "ipod", "3gp", "3g2", "psp"});
}

bool isMatroska(AVFormatContext const& output)
{
    return isOneOf(output, {"matroska", "webm"});
}

bool isTransportStream(AVFormatContext const& output)
{
    return isOneOf(output, {"mpegts"});
}

/// Whether the container has a place for a tag of the whole file.
bool takesTag(AVFormatContext const& output, std::string const& key)
{
    if (isTransportStream(output)) {
        // Becomes the name of the service, unless that is the input's.
        return output.nb_programs == 0 && key == "title";
    }
    return !isMp4(output) || std::find(kMp4Tags.begin(), kMp4Tags.end(), key) != kMp4Tags.end();
}

bool takesChapters(AVFormatContext const& output)
{
    return isMp4(output) || isMatroska(output) || isOneOf(output, {"nut"});
}

bool takesTimecode(AVFormatContext const& output)
{
    return isOneOf(output, {"mp4", "mov", "matroska", "mxf", "gxf"});
}

/// The input's own tags; outside a transport stream the name of its service is the title.
AVDictionary* wholeTags(AVFormatContext const& input, AVFormatContext const& output, int video)
{
    AVDictionary* tags = nullptr;
    av_dict_copy(&tags, input.metadata, 0);
    AVProgram const* const program = av_find_program_from_stream(&const_cast<AVFormatContext&>(input), nullptr, video);
    if (program != nullptr && !isTransportStream(output)) {
        std::string const name = valueOf(program->metadata, "service_name");
        std::string const provider = valueOf(program->metadata, "service_provider");
        if (!name.empty() && name != kNoName) {
            av_dict_set(&tags, "title", name.c_str(), AV_DICT_DONT_OVERWRITE);
        }
        if (!provider.empty() && provider != kNoProvider) {
            av_dict_set(&tags, "service_provider", provider.c_str(), AV_DICT_DONT_OVERWRITE);
        }
    }
    return tags;
}

template <typename See>
void forEachTag(AVDictionary const* tags, See see)
{
    AVDictionaryEntry const* entry = nullptr;
    while ((entry = av_dict_get(tags, "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        std::string const key = lower(entry->key);
        if (!isOfTheOldFile(key)) {
            see(key, *entry);
        }
    }
}

void keepWholeTags(Demuxer const& input, AVFormatContext& output, std::vector<std::string>& leftOut)
{
    AVDictionary* const tags = wholeTags(input.input(), output, input.video()->index);
    std::string missing;
    forEachTag(tags, [&](std::string const& key, AVDictionaryEntry const& entry) {
        if (takesTag(output, key)) {
            av_dict_set(&output.metadata, entry.key, entry.value, 0);
        } else {
            missing += (missing.empty() ? "" : ", ") + key;
        }
    });
    av_dict_free(const_cast<AVDictionary**>(&tags));
    if (!missing.empty()) {
        leftOut.push_back(std::string(output.oformat->name) +
                          " cannot carry these tags; they are left out: " + missing + " (.mkv carries them)");
    }
}

void keepStreamTags(AVStream const& from, AVStream& to)
{
    forEachTag(from.metadata, [&to](std::string const&, AVDictionaryEntry const& entry) {
        av_dict_set(&to.metadata, entry.key, entry.value, 0);
    });
    to.disposition = from.disposition;
}

/// An owned chapter; freed with the output.
void addChapter(AVFormatContext& output, AVChapter const& source, std::int64_t start, std::int64_t end)
{
    auto* const chapter = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
    int count = static_cast<int>(output.nb_chapters);
    av_dynarray_add(static_cast<void*>(&output.chapters), &count, chapter);
    if (chapter == nullptr || count == 0) {
        throw std::bad_alloc();
    }
    output.nb_chapters = static_cast<unsigned>(count);
    chapter->id = source.id;
    chapter->time_base = source.time_base;
    chapter->start = start;
    chapter->end = end;
    av_dict_copy(&chapter->metadata, source.metadata, 0);
}

void keepChapters(AVFormatContext const& input, AVFormatContext& output, KeptPart const& part,
                  std::vector<std::string>& leftOut)
{
    if (input.nb_chapters > 0 && !takesChapters(output)) {
        leftOut.push_back(std::string(output.oformat->name) + " cannot carry chapters; " +
                          std::to_string(input.nb_chapters) + " are left out (.mp4 and .mkv carry them)");
        return;
    }
    for (unsigned number = 0; number < input.nb_chapters; ++number) {
        AVChapter const& chapter = *input.chapters[number];
        auto const ticks = [&chapter, &part](double seconds) {
            return std::llround((seconds - part.zeroSeconds) / av_q2d(chapter.time_base));
        };
        std::int64_t const shift = ticks(0.0);
        std::int64_t const first = std::max<std::int64_t>(0, ticks(part.beginSeconds));
        std::int64_t const start = std::max(chapter.start + shift, first);
        std::int64_t end = chapter.end + shift;
        end = part.endSeconds ? std::min<std::int64_t>(end, ticks(*part.endSeconds)) : end;
        if (start < end) {
            addChapter(output, chapter, start, end);
        }
    }
}

/// The video's own time code, else that of the file or of a time code track.
std::string timecodeOf(Demuxer const& input)
{
    std::string found = valueOf(input.video()->metadata, kTimecode);
    found = found.empty() ? valueOf(input.input().metadata, kTimecode) : found;
    for (unsigned index = 0; found.empty() && index < input.input().nb_streams; ++index) {
        found = valueOf(input.input().streams[index]->metadata, kTimecode);
    }
    return found;
}

void keepTimecode(Demuxer const& input, AVFormatContext& output, AVStream& video, KeptPart const& part,
                  std::vector<std::string>& leftOut)
{
    std::string const timecode = laterTimecode(timecodeOf(input), input.frameRate(), part.framesBefore);
    if (timecode.empty()) {
        return;
    }
    if (takesTimecode(output)) {
        av_dict_set(&video.metadata, kTimecode, timecode.c_str(), 0);
    } else {
        leftOut.push_back(std::string(output.oformat->name) + " cannot carry a time code; " + timecode +
                          " is left out (.mp4 and .mkv carry it)");
    }
}

}  // namespace

std::string laterTimecode(std::string const& timecode, AVRational frameRate, std::int64_t frames)
{
    AVTimecode read{};
    if (timecode.empty() || av_timecode_init_from_string(&read, frameRate, timecode.c_str(), nullptr) < 0) {
        return "";
    }
    std::array<char, AV_TIMECODE_STR_SIZE> text{};
    av_timecode_make_string(&read, text.data(), static_cast<int>(frames));
    return text.data();
}

std::vector<std::string> keepTags(Demuxer const& input, AVFormatContext& output, std::map<int, int> const& streams,
                                  KeptPart const& part)
{
    std::vector<std::string> leftOut;
    keepWholeTags(input, output, leftOut);
    for (auto const& [from, to] : streams) {
        keepStreamTags(input.stream(from), *output.streams[to]);
    }
    keepChapters(input.input(), output, part, leftOut);
    keepTimecode(input, output, *output.streams[streams.at(input.video()->index)], part, leftOut);
    return leftOut;
}

}  // namespace media
