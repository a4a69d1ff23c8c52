// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Encoders by name and by container, their presets and qualities; between the command line and the encoder.
#include "media/encoder_choice.h"

extern "C" {
#include <libavutil/opt.h>
}

#include "sw_number_text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <vector>

namespace media {
namespace {

/// In order of preference; the first that is built in and that the container carries is taken.
constexpr std::array<char const*, 6> kDefaultEncoders = {"libx264",    "libopenh264", "mpeg4",
                                                         "mpeg2video", "libvpx-vp9",  "ffv1"};

/// Near-transparent for most material, and about as fast as decoding.
constexpr char const* kDefaultPreset = "veryfast";
constexpr char const* kDefaultCrf = "20";
constexpr int kDefaultQuantizer = 3;

/// Bits that an encoder without any constant quality may spend on a pixel.
constexpr double kBitsPerPixel = 0.15;

/// The software encoders for H.264 and HEVC take any text and refuse it only when they start.
constexpr std::array<char const*, 10> kPresets = {"ultrafast", "superfast", "veryfast", "faster",   "fast",
                                                  "medium",    "slow",      "slower",   "veryslow", "placebo"};
constexpr double kMostCrf = 51.0;

bool hasNamedPresets(AVCodec const& codec)
{
    return std::strcmp(codec.name, "libx264") == 0 || std::strcmp(codec.name, "libx264rgb") == 0 ||
           std::strcmp(codec.name, "libx265") == 0;
}

/// What transport streams have a stream type or a registration for. Their muxer would write anything else too, as
/// private data that nobody can play.
constexpr std::array<AVCodecID, 8> kInTransportStreams = {
    AV_CODEC_ID_MPEG1VIDEO, AV_CODEC_ID_MPEG2VIDEO, AV_CODEC_ID_MPEG4, AV_CODEC_ID_H264,
    AV_CODEC_ID_HEVC,       AV_CODEC_ID_CAVS,       AV_CODEC_ID_DIRAC, AV_CODEC_ID_VC1};

bool isTransportStream(AVOutputFormat const& container)
{
    return std::strcmp(container.name, "mpegts") == 0;
}

bool carries(AVOutputFormat const& container, AVCodecID codec)
{
    if (isTransportStream(container)) {
        return std::find(kInTransportStreams.begin(), kInTransportStreams.end(), codec) != kInTransportStreams.end();
    }
    // Who cannot answer takes the common codecs.
    return avformat_query_codec(&container, codec, FF_COMPLIANCE_NORMAL) != 0;
}

AVOption const* optionOf(AVCodecContext const& context, char const* name)
{
    return context.priv_data == nullptr || context.codec->priv_class == nullptr
               ? nullptr
               : av_opt_find(context.priv_data, name, nullptr, 0, 0);
}

/// False when the encoder has no such option or does not take the value.
bool set(AVCodecContext& context, char const* name, char const* value)
{
    return optionOf(context, name) != nullptr && av_opt_set(context.priv_data, name, value, 0) >= 0;
}

/// The names that an option takes; empty when it takes numbers or any text.
std::vector<std::string> namesOf(AVCodecContext const& context, AVOption const& option)
{
    std::vector<std::string> names;
    AVOption const* next = nullptr;
    while (option.unit != nullptr && (next = av_opt_next(context.priv_data, next)) != nullptr) {
        if (next->type == AV_OPT_TYPE_CONST && next->unit != nullptr && std::strcmp(next->unit, option.unit) == 0) {
            names.emplace_back(next->name);
        }
    }
    return names;
}

std::string listed(std::vector<std::string> const& names)
{
    std::string text;
    for (std::string const& name : names) {
        text += (text.empty() ? "" : name == names.back() ? " or " : ", ") + name;
    }
    return text;
}

/// The names of the encoders of a codec, as FFmpeg lists them.
std::vector<std::string> encodersOf(AVCodecID codec)
{
    std::vector<std::string> names;
    void* state = nullptr;
    while (AVCodec const* const candidate = av_codec_iterate(&state)) {
        if (candidate->id == codec && av_codec_is_encoder(candidate) != 0) {
            names.emplace_back(candidate->name);
        }
    }
    return names;
}

/// Why there is no encoder of this name: many give the codec's.
UnknownChoice noSuchEncoder(std::string const& name)
{
    AVCodecDescriptor const* const codec = avcodec_descriptor_get_by_name(name.c_str());
    std::vector<std::string> const encoders =
        codec == nullptr || codec->type != AVMEDIA_TYPE_VIDEO ? std::vector<std::string>() : encodersOf(codec->id);
    std::string const option = "--video-codec " + name + ": ";
    return UnknownChoice(encoders.empty()
                             ? option + "no such video encoder; try libx264, mpeg4 or mpeg2video"
                             : option + "is a codec, not an encoder; name one of its encoders: " + listed(encoders));
}

void setPreset(std::string const& preset, AVCodecContext& context, AVCodec const& codec)
{
    bool const named = hasNamedPresets(codec);
    if (preset.empty()) {
        if (named) {
            set(context, "preset", kDefaultPreset);
        }
        return;
    }
    AVOption const* const option = optionOf(context, "preset");
    if (option == nullptr) {
        throw UnknownChoice("--preset " + preset + ": " + codec.name + " has no presets; leave it out");
    }
    std::vector<std::string> const names =
        named ? std::vector<std::string>(kPresets.begin(), kPresets.end()) : namesOf(context, *option);
    bool const known = !named || std::find(names.begin(), names.end(), preset) != names.end();
    if (!known || !set(context, "preset", preset.c_str())) {
        throw UnknownChoice("--preset " + preset + ": " + codec.name + " does not take this; " +
                            (names.empty() ? "leave it out" : "try " + listed(names)));
    }
}

void setCrf(double crf, AVCodecContext& context, AVCodec const& codec)
{
    AVOption const* const option = optionOf(context, "crf");
    if (option == nullptr) {
        throw UnknownChoice(std::string("--crf: ") + codec.name + " has no constant quality; use --bitrate");
    }
    double const most = hasNamedPresets(codec) ? kMostCrf : option->max;
    bool const within = crf >= 0.0 && crf <= most;
    if (!within || !set(context, "crf", std::to_string(crf).c_str())) {
        throw UnknownChoice("--crf " + sw_text::numberText(crf) + ": " + codec.name + " takes 0 to " +
                            sw_text::numberText(most));
    }
}

/// Quality in the encoder's own way.
void setDefaultQuality(AVCodecContext& context, AVCodec const& codec)
{
    if (set(context, "crf", kDefaultCrf)) {
        context.bit_rate = 0;
        return;
    }
    bool const h26x = codec.id == AV_CODEC_ID_H264 || codec.id == AV_CODEC_ID_HEVC;
    if (h26x && set(context, "qp", kDefaultCrf)) {
        return;
    }
    context.flags |= AV_CODEC_FLAG_QSCALE;
    context.global_quality = FF_QP2LAMBDA * (h26x ? std::stoi(kDefaultCrf) : kDefaultQuantizer);
    if (h26x) {
        // Some of them know bit rates only and would take a tiny one.
        double const rate = context.framerate.den == 0 ? 25.0 : av_q2d(context.framerate);
        context.bit_rate = static_cast<std::int64_t>(kBitsPerPixel * context.width * context.height * rate);
    }
}

/// Whatever an encoder has against holding pictures back; what it does not know is of no harm.
void setLowDelay(AVCodecContext& context)
{
    struct Setting {
        char const* name;
        char const* value;
    };
    constexpr std::array<Setting, 7> kSettings = {{{"tune", "zerolatency"},
                                                   {"zerolatency", "1"},
                                                   {"delay", "0"},
                                                   {"async_depth", "1"},
                                                   {"deadline", "realtime"},
                                                   {"lag-in-frames", "0"},
                                                   {"cpu-used", "8"}}};
    context.max_b_frames = 0;
    context.flags |= AV_CODEC_FLAG_LOW_DELAY;
    context.thread_type = FF_THREAD_SLICE;
    // Who tunes in sees a picture within a second.
    context.gop_size = std::max(1, static_cast<int>(av_q2d(context.framerate) + 0.5));
    for (Setting const& setting : kSettings) {
        set(context, setting.name, setting.value);
    }
}

}  // namespace

AVCodec const& encoderFor(EncoderChoice const& choice, AVOutputFormat const& container)
{
    if (!choice.codecName.empty()) {
        AVCodec const* const codec = avcodec_find_encoder_by_name(choice.codecName.c_str());
        if (codec == nullptr || codec->type != AVMEDIA_TYPE_VIDEO) {
            throw noSuchEncoder(choice.codecName);
        }
        if (isTransportStream(container) && !carries(container, codec->id)) {
            throw UnknownChoice("--video-codec " + choice.codecName + ": transport streams carry no " +
                                avcodec_get_name(codec->id) +
                                " video; try libx264, mpeg4 or mpeg2video, or an output that ends in .mkv");
        }
        return *codec;
    }
    for (char const* const candidate : kDefaultEncoders) {
        AVCodec const* const codec = avcodec_find_encoder_by_name(candidate);
        if (codec != nullptr && carries(container, codec->id)) {
            return *codec;
        }
    }
    throw UnknownChoice(std::string("no video encoder for the container ") + container.name +
                        "; use an output that ends in .ts, .mp4 or .mkv");
}

void applyChoice(EncoderChoice const& choice, AVCodecContext& context, AVCodec const& codec)
{
    context.thread_count = choice.threads;
    set(context, "x265-params", "log-level=none");  // it writes to standard error on its own
    setPreset(choice.preset, context, codec);
    if (choice.crf) {
        setCrf(*choice.crf, context, codec);
    } else if (choice.bitRate) {
        context.bit_rate = *choice.bitRate;
    } else {
        setDefaultQuality(context, codec);
    }
    if (choice.lowDelay) {
        setLowDelay(context);
    }
}

void requirePossible(EncoderChoice const& choice, AVOutputFormat const& container)
{
    AVCodec const& codec = encoderFor(choice, container);
    CodecPtr const context(avcodec_alloc_context3(&codec));
    if (!context) {
        throw std::bad_alloc();
    }
    context->framerate = {25, 1};
    applyChoice(choice, *context, codec);
}

}  // namespace media
