// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The commands of the program. Each writes its result to its output and remarks to standard error; what
// makes it impossible is thrown: WrongUsage and media::UnknownChoice for options that cannot be meant,
// std::runtime_error with one line for everything else.
#pragma once

#include "clip/clip_seek.h"
#include "clip/telemetry_options.h"
#include "frame/look.h"
#include "media/encoder_choice.h"

#include <optional>
#include <string>

namespace cli {

struct BurnOptions {
    std::string input;
    std::string config;
    std::string output;
    clip::TelemetryOptions telemetry;
    clip::ClipRange range;
    frame::Look look;
    media::EncoderChoice encoding;
    bool sidecar = false;  ///< telemetry that the output cannot carry goes into a file beside it
    std::string summary;   ///< what was done goes into this file, "-" is standard output; empty: nowhere
    bool noProgress = false;
    bool live = false;
    double telemetryWaitMs = 100.0;  ///< how long a live picture waits for its telemetry
    double giveUpSeconds = 60.0;     ///< without a live picture; 0: never
};

struct FrameOptions {
    std::string input;
    std::string config;
    std::string output;
    clip::TelemetryOptions telemetry;
    frame::Look look;
    double atSeconds = 0.0;  ///< after the first picture
};

struct KeysOptions {
    std::string input;
    clip::TelemetryOptions telemetry;
    bool derived = false;  ///< also the keys that can be derived
    bool csv = false;      ///< a table instead of JSON lines
};

struct TextOptions {
    std::string input;
    std::string config;
    clip::TelemetryOptions telemetry;
    clip::ClipRange range;
    frame::Look look;
};

struct SchemaOptions {
    std::string input;  ///< empty: no keys are listed
    clip::TelemetryOptions telemetry;
};

struct CheckOptions {
    std::string config;
    std::string input;  ///< empty: keys are not compared
    clip::TelemetryOptions telemetry;
    frame::Look look;
    std::optional<double> atSeconds;  ///< after the first picture; empty: where blocks are first drawn
};

struct EditOptions {
    std::string input;
    std::string config;
    clip::TelemetryOptions telemetry;
    frame::Look look;
    unsigned short port = 0;  ///< 0: any free one
    bool opensBrowser = true;
};

struct SampleOptions {
    std::string output;
    double seconds = 10.0;
    int width = 1280;
    int height = 720;
    double framesPerSecond = 30.0;
    std::string videoCodec;
};

struct BurnReport;

/// Both fill the report as they go, so that it tells of failures too.
void runBurn(BurnOptions const& options, BurnReport& report);
void runLiveBurn(BurnOptions const& options, BurnReport& report);
void runFrame(FrameOptions const& options);
void runKeys(KeysOptions const& options);
void runText(TextOptions const& options);
void runSchema(SchemaOptions const& options);
/// Serves the editor until a signal asks it to end.
void runEdit(EditOptions const& options);
void runSample(SampleOptions const& options);
/// Whether everything is taken as it stands.
bool runCheck(CheckOptions const& options);

}  // namespace cli
