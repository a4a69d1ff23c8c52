// The commands of the program. Each writes its result to its output and remarks to standard error; what
// makes it impossible is thrown: WrongUsage and media::UnknownChoice for options that cannot be meant,
// std::runtime_error with one line for everything else.
#pragma once

#include "media/encoder.h"

#include <string>

namespace cli {

struct BurnOptions {
    std::string input;
    std::string config;
    std::string output;
    std::string telemetry;  ///< empty: the clip's own
    media::EncoderChoice encoding;
    bool noProgress = false;
};

struct FrameOptions {
    std::string input;
    std::string config;
    std::string output;
    std::string telemetry;
    double atSeconds = 0.0;  ///< after the first picture
};

struct KeysOptions {
    std::string input;
    std::string telemetry;
};

struct TextOptions {
    std::string input;
    std::string config;
    std::string telemetry;
};

struct SampleOptions {
    std::string output;
    double seconds = 10.0;
    int width = 1280;
    int height = 720;
    double framesPerSecond = 30.0;
    std::string videoCodec;
};

void runBurn(BurnOptions const& options);
void runFrame(FrameOptions const& options);
void runKeys(KeysOptions const& options);
void runText(TextOptions const& options);
void runSchema(std::string const& input);
void runSample(SampleOptions const& options);
/// Whether everything is taken as it stands.
bool runCheck(std::string const& configPath, std::string const& input);

}  // namespace cli
