// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// What `burn` adds to decoding and encoding: processor time of the program's own thread outside of the decoder and the
// encoder, whose calls are wrapped here and whose other threads do not count.
//   burn_benchmark CLIP CONFIG.json OUTPUT
#include "SwAny.h"
#include "cli/config_file.h"
#include "clip/clip_seek.h"
#include "clip/clip_writer.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <iostream>
#include <optional>
#include <utility>
#include <vector>

namespace {

enum Part { kDecoder, kEncoder, kReading, kWriting, kNext, kPlugin, kParts };

std::array<double, kParts> g_seconds{};

double threadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

/// Adds the time up to its end to a part.
class Timed {
public:
    explicit Timed(Part part) : part_(part), begin_(threadSeconds()) {}
    ~Timed() { g_seconds[part_] += threadSeconds() - begin_; }
    Timed(Timed const&) = delete;
    Timed& operator=(Timed const&) = delete;

private:
    Part part_;
    double begin_;
};

}  // namespace

// The linker puts these in the place of the libraries' calls (--wrap).
extern "C" {
int __real_avcodec_send_packet(AVCodecContext* context, AVPacket const* packet);
int __wrap_avcodec_send_packet(AVCodecContext* context, AVPacket const* packet)
{
    Timed const timed(kDecoder);
    return __real_avcodec_send_packet(context, packet);
}
int __real_avcodec_receive_frame(AVCodecContext* context, AVFrame* frame);
int __wrap_avcodec_receive_frame(AVCodecContext* context, AVFrame* frame)
{
    Timed const timed(kDecoder);
    return __real_avcodec_receive_frame(context, frame);
}
int __real_avcodec_send_frame(AVCodecContext* context, AVFrame const* frame);
int __wrap_avcodec_send_frame(AVCodecContext* context, AVFrame const* frame)
{
    Timed const timed(kEncoder);
    return __real_avcodec_send_frame(context, frame);
}
int __real_avcodec_receive_packet(AVCodecContext* context, AVPacket* packet);
int __wrap_avcodec_receive_packet(AVCodecContext* context, AVPacket* packet)
{
    Timed const timed(kEncoder);
    return __real_avcodec_receive_packet(context, packet);
}
int __real_av_read_frame(AVFormatContext* input, AVPacket* packet);
int __wrap_av_read_frame(AVFormatContext* input, AVPacket* packet)
{
    Timed const timed(kReading);
    return __real_av_read_frame(input, packet);
}
int __real_av_interleaved_write_frame(AVFormatContext* output, AVPacket* packet);
int __wrap_av_interleaved_write_frame(AVFormatContext* output, AVPacket* packet)
{
    Timed const timed(kWriting);
    return __real_av_interleaved_write_frame(output, packet);
}
}

namespace {

bool burnNext(clip::AnnotatedClip& clip, clip::ClipWriter& writer)
{
    std::optional<clip::ClipFrame> frame;
    {
        Timed const timed(kNext);
        frame = clip.next();
    }
    if (!frame) {
        return false;
    }
    {
        Timed const timed(kPlugin);
        clip.annotate(*frame);
    }
    writer.addPicture(*frame, frame->picture);
    return true;
}

/// Burns the whole clip; gives the number of frames and the thread's time, both without the first frames, which open
/// decoder and encoder, meet the fonts and take memory from the system.
std::pair<int, double> burn(char const* input, char const* config, char const* output)
{
    clip::ClipSource source;
    source.input = input;
    source.config = cli::readConfig(config).text;
    clip::AnnotatedClip clip(source);
    clip::ClipWriter writer(output, {}, clip);
    clip.setSideObserver([&writer](media::SideUnit& unit) { writer.addSide(unit); });
    constexpr int kFirstFrames = 30;
    for (int i = 0; i < kFirstFrames; ++i) {
        burnNext(clip, writer);
    }
    g_seconds = {};
    double const begin = threadSeconds();
    int frames = 0;
    while (burnNext(clip, writer)) {
        ++frames;
    }
    double const seconds = threadSeconds() - begin;
    writer.finish(true);
    return {frames, seconds};
}

/// The thread's time for one plain copy of a picture's bytes, which no decoded picture gets to the plugin without: the
/// decoder still refers to its own. What it costs says how fast the machine is just now.
double copySeconds(std::size_t bytes)
{
    constexpr int kPictures = 12;  // more than the caches of one processor hold
    constexpr int kCopies = 120;
    std::vector<std::vector<char>> pictures(kPictures, std::vector<char>(bytes, 'x'));
    double const begin = threadSeconds();
    for (int i = 0; i < kCopies; ++i) {
        std::memcpy(pictures[static_cast<std::size_t>(i + 5) % kPictures].data(),
                    pictures[static_cast<std::size_t>(i) % kPictures].data(), bytes);
    }
    return (threadSeconds() - begin) / kCopies;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        std::cerr << "usage: burn_benchmark CLIP CONFIG.json OUTPUT\n";
        return 2;
    }
    try {
        media::quietLibraries();
        SwAny::registerAllType();
        auto const [frames, seconds] = burn(argv[1], argv[2], argv[3]);
        std::array<double, kParts> const parts = g_seconds;
        double const own = seconds - parts[kDecoder] - parts[kEncoder];
        double const picture = parts[kNext] - parts[kReading] - parts[kDecoder];
        double const rest = own - parts[kReading] - picture - parts[kPlugin] - parts[kWriting];
        auto const row = [frames = frames](char const* name, double part) {
            std::printf("| %s | %.3f |\n", name, 1e3 * part / frames);
        };
        std::printf("%d frames.\n\n| part of a frame | ms |\n| --- | ---: |\n", frames);
        row("reading the container", parts[kReading]);
        row("conversion to NV12 and telemetry", picture);
        row("plugin and painter", parts[kPlugin]);
        row("writing the container", parts[kWriting]);
        row("everything else", rest);
        row("**together, at most 0.6**", own);
        constexpr std::size_t kPictureBytes = std::size_t{1920} * 1080 * 3 / 2;
        row("for comparison: memcpy of one picture", copySeconds(kPictureBytes) * frames);
    } catch (std::exception const& failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
    return 0;
}
