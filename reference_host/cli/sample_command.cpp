// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// sample: a made flight as a transport stream with telemetry, for trying things out and for tests.
#include "cli/commands.h"
#include "cli/messages.h"
#include "flight/flight_model.h"
#include "imaging/imaging_access.h"
#include "media/encoder.h"
#include "media/interrupt.h"
#include "media/muxer.h"
#include "telemetry/telemetry.h"

#include <cmath>
#include <memory>
#include <vector>

namespace cli {
namespace {

constexpr AVRational kClock{1, 90000};

/// Players expect a stream to begin a little after zero.
constexpr std::int64_t kFirstTicks = 90000;

media::EncoderSettings settingsFor(SampleOptions const& options)
{
    media::EncoderSettings settings;
    settings.choice.codecName = options.videoCodec;
    settings.picture.width = options.width;
    settings.picture.height = options.height;
    settings.frameRate = av_d2q(options.framesPerSecond, 100000);
    settings.timeBase = kClock;
    return settings;
}

}  // namespace

void runSample(SampleOptions const& options)
{
    media::requirePossible(settingsFor(options).choice, media::containerFor(options.output));
    media::Muxer muxer(options.output);
    media::Encoder encoder(settingsFor(options), muxer.container());
    int const video = muxer.addVideo(encoder.context(), kClock);
    auto const klv = muxer.addKlv();
    if (!klv) {
        throw WrongUsage(options.output + ": this container cannot carry KLV; use an output that ends in .ts");
    }
    muxer.begin();
    auto const writeVideo = [&](AVPacket& packet) { muxer.write(packet, video, kClock); };
    zelvo::ZelvoPicture picture(static_cast<unsigned>(options.width), static_cast<unsigned>(options.height));
    MappedNV12 const planes = imaging::planesOf(picture);
    double const aspect = static_cast<double>(options.width) / options.height;
    auto const frames = std::llround(options.seconds * options.framesPerSecond);
    double seconds = 0.0;
    for (std::int64_t number = 0; number < frames && !media::interrupted(); ++number) {
        seconds = static_cast<double>(number) / options.framesPerSecond;
        std::int64_t const ticks = kFirstTicks + std::llround(seconds * kClock.den);
        flight::paintGround(seconds, planes);
        media::PacketPtr const packet =
            media::makePacket(telemetry::encodeKlv(flight::telemetryAt(seconds, aspect)), ticks);
        muxer.write(*packet, *klv, kClock);
        encoder.encode(planes, ticks, writeVideo);
    }
    refuseWhenTerminated(options.output);
    encoder.flush(writeVideo);
    muxer.finish([&options] {
        media::settleInterrupts();
        refuseWhenTerminated(options.output);
    });
    noteAll(interruptRemark(options.output, seconds));
}

}  // namespace cli
