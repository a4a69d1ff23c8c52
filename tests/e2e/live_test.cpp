// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Live work over loopback addresses: what comes in goes out with text in it, at once, whatever becomes of the input.
#include "clips.h"
#include "imaging/imaging_access.h"
#include "live_clips.h"
#include "live_stream.h"
#include "run_program.h"
#include "temp_folder.h"
#include "ts_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using e2e::Result;
using live_test::addressOf;
using live_test::Passed;
using live_test::Receiver;
using live_test::Sender;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;
using Words = std::vector<std::string>;
using ts_test::Bytes;

constexpr char const* kConfig = R"({"overlay":[{"formatString":"N %heading_deg","textSize":300,"decimals":0}]})";

/// What describes telemetry: a registration and a language; a registration and both descriptors of metadata.
Bytes const kPlain = {0x05, 4, 'K', 'L', 'V', 'A', 0x0A, 4, 'e', 'n', 'g', 0};
Bytes const kSynchronous = {0x05, 4, 'K', 'L',  'V', 'A',  0x26, 9, 1,    0, 0xFF, 'K',  'L', 'V',
                            'A',  0, 15,  0x27, 9,   0xC0, 1,    2, 0xC0, 0, 4,    0xC0, 1,   32};
constexpr int kTelemetryPid = 0x1F1;

/// The same packets under numbers and names of their own.
void makeNamed(std::string const& from, std::string const& to, int type, Bytes const& descriptors)
{
    ts_test::Changes changes;
    changes.pids = {{0x1000, 0x64}, {0x100, 0x1E1}, {0x101, kTelemetryPid}};
    changes.sections[0] = ts_test::associationSection(0x4D2, {{7, 0x64}}, 5);
    changes.sections[0x1000] =
        ts_test::mapSection(7, 0x1E1, {0x25, 2, 1, 0}, {{0x02, 0x1E1, {}}, {type, kTelemetryPid, descriptors}}, 17);
    changes.sections[0x11] = ts_test::servicesSection(0x4D2, 7, "Range Control", "EO turret");
    ts_test::rewriteTransportStream(from, to, changes);
}

/// Who comes into a live stream hears of its services later than of its pictures.
void leaveOutFirstServices(std::string const& from, std::string const& to)
{
    constexpr std::size_t kPacket = 188;
    constexpr int kLeftOut = 2;
    std::string const bytes = e2e::readFile(from);
    std::string out;
    int services = 0;
    for (std::size_t at = 0; at + kPacket <= bytes.size(); at += kPacket) {
        bool const isServices = (bytes[at + 1] & 0x1F) == 0 && bytes[at + 2] == 0x11;
        services += isServices ? 1 : 0;
        out += isServices && services <= kLeftOut ? "" : bytes.substr(at, kPacket);
    }
    e2e::writeFile(to, out);
}

void pass(double seconds)
{
    std::this_thread::sleep_for(Seconds(seconds));
}

/// Until something has happened, but not longer.
void passUntil(double seconds, std::function<bool()> const& hasHappened)
{
    auto const end = Clock::now() + Seconds(seconds);
    while (Clock::now() < end && !hasHappened()) {
        pass(0.02);
    }
}

class Live : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        folder_ = new media_test::TempFolder;
        e2e::writeFile(file("c.json"), kConfig);
        live_test::makeLiveClip({file("first.ts")});
        live_test::makeLiveClip({file("whole.ts"), 96, 64, 90000, 100});
        live_test::makeLiveClip({file("clock.ts"), 96, 64, std::int64_t{90000} * 40000, 500});
        live_test::makeLiveClip({file("size.ts"), 160, 90, std::int64_t{90000} * 9, 500});
        live_test::makeOtherProgram(file("first.ts"), file("program.ts"));
        live_test::makeLiveClip({file("cells.ts"), 96, 64, 90000, 500, true});
        makeNamed(file("cells.ts"), file("synchronous.ts"), 0x15, kSynchronous);
        makeNamed(file("first.ts"), file("plain.ts"), 0x06, kPlain);
        leaveOutFirstServices(file("plain.ts"), file("late_services.ts"));
    }
    static void TearDownTestSuite()
    {
        delete folder_;
        folder_ = nullptr;
    }
    static std::string file(std::string const& name) { return folder_->file(name); }

    /// Runs burn --live while `meanwhile` acts, ends it with the signal.
    Result burn(Words const& more, std::function<void()> const& meanwhile, int signal = SIGINT) const
    {
        Words words = {"burn", addressOf(in_), "-c", file("c.json"), "--live"};
        words.insert(words.end(), more.begin(), more.end());
        if (std::find(more.begin(), more.end(), "--preset") == more.end()) {
            words.insert(words.end(), {"--preset", "ultrafast"});
        }
        e2e::RunOptions options;
        options.meanwhile = [&](int program) {
            meanwhile();
            kill(program, signal);
        };
        return e2e::run(words, options);
    }
    Result burnToAddress(Words more, std::function<void()> const& meanwhile, int signal = SIGINT) const
    {
        more.insert(more.end(), {"-o", addressOf(out_)});
        return burn(more, meanwhile, signal);
    }

    int const in_ = live_test::freePort();
    int const out_ = live_test::freePort();

private:
    inline static media_test::TempFolder* folder_ = nullptr;
};

bool timesRise(std::vector<Passed> const& pictures)
{
    return std::adjacent_find(pictures.begin(), pictures.end(),
                              [](Passed const& a, Passed const& b) { return b.ticks <= a.ticks; }) == pictures.end();
}

TEST_F(Live, PicturesAndTelemetryKeepTheirTimes)
{
    Receiver const receiver(out_);
    std::vector<Passed> sent;
    Result const result = burnToAddress({}, [&] {
        live_test::waitForListener(in_);
        // A sender that dies has sent its last pictures without their telemetry: this one sends all it has.
        Sender const sender(in_, file("whole.ts"), live_test::Repeat::Never);
        pass(4.5);
        sent = sender.sent();
    });
    EXPECT_EQ(result.exitCode, 0);
    std::vector<std::string> const lines = e2e::linesOf(result.err);
    ASSERT_EQ(lines.size(), 1U) << result.err;
    std::string const begin = "stanag-overlay: " + addressOf(in_) + ": ";
    EXPECT_EQ(lines[0].rfind(begin, 0), 0U) << lines[0];
    EXPECT_NE(lines[0].find(" pictures, 0 dropped, 0 reopened, telemetry 0.000 s old, delay "), std::string::npos)
        << lines[0];
    std::vector<Passed> const pictures = receiver.pictures();
    ASSERT_EQ(sent.size(), 100U);
    ASSERT_EQ(pictures.size(), sent.size());
    EXPECT_TRUE(timesRise(pictures));
    for (std::size_t number = 0; number < sent.size(); ++number) {
        EXPECT_EQ(pictures[number].ticks, sent[number].ticks) << number;
    }
    std::vector<Passed> const telemetry = receiver.telemetry();
    ASSERT_EQ(telemetry.size(), sent.size());
    for (std::size_t number = 0; number < sent.size(); ++number) {
        EXPECT_EQ(telemetry[number].ticks, 90000 + static_cast<std::int64_t>(number) * 3600);
    }
}

/// A second of pictures, of which none may be lost.
constexpr int kSecond = 25;

void expectAWholeSecond(std::string const& clip, Result const& result)
{
    EXPECT_EQ(clip_test::packetsOf(clip).video, kSecond) << result.err;
    EXPECT_EQ(clip_test::packetsOf(clip).klv, kSecond) << result.err;
    EXPECT_NE(result.err.find(": 25 pictures, 0 dropped, 0 reopened, telemetry 0.000 s old, delay "), std::string::npos)
        << result.err;
}

TEST_F(Live, TheEndOfStandardInputIsTheEnd)
{
    live_test::makeLiveClip({file("second.ts"), 96, 64, 90000, kSecond});
    e2e::RunOptions options;
    options.inputFile = file("second.ts");
    Result const result = e2e::run({"burn", "-", "-c", file("c.json"), "-o", file("piped.ts"), "--live"}, options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(e2e::linesOf(result.err).size(), 1U) << result.err;
    expectAWholeSecond(file("piped.ts"), result);
}

TEST_F(Live, StandardInputWithoutVideoIsAFailure)
{
    e2e::writeFile(file("empty"), "");
    e2e::RunOptions options;
    options.inputFile = file("empty");
    Result const result = e2e::run({"burn", "-", "-c", file("c.json"), "-o", file("none.ts"), "--live"}, options);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(e2e::linesOf(result.err).back().rfind("stanag-overlay: -: cannot be opened: ", 0), 0U) << result.err;
    EXPECT_FALSE(std::filesystem::exists(file("none.ts")));
}

TEST_F(Live, SignalsLoseNoPictureThatHasCome)
{
    live_test::makeLiveClip({file("second.ts"), 96, 64, 90000, kSecond});
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        std::string const pipe = file("pipe");
        std::filesystem::remove(pipe);
        ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
        std::ofstream input;
        e2e::RunOptions options;
        options.inputFile = pipe;
        options.meanwhile = [&](int program) {
            input.open(pipe, std::ios::binary);
            input << e2e::readFile(file("second.ts")) << std::flush;
            pass(1.5);
            kill(program, signal);
        };
        Result const result = e2e::run({"burn", "-", "-c", file("c.json"), "-o", file("ended.ts"), "--live"}, options);
        EXPECT_EQ(result.exitCode, 0);
        expectAWholeSecond(file("ended.ts"), result);
    }
}

TEST_F(Live, GivingUpLosesNoPicture)
{
    live_test::makeLiveClip({file("second.ts"), 96, 64, 90000, kSecond});
    e2e::RunOptions options;
    options.meanwhile = [&](int) {
        live_test::waitForListener(in_);
        Sender const sender(in_, file("second.ts"), live_test::Repeat::Never);
        pass(1.5);
    };
    Result const result = e2e::run(
        {"burn", addressOf(in_), "-c", file("c.json"), "-o", file("lost.ts"), "--live", "--give-up", "1"}, options);
    EXPECT_EQ(result.exitCode, 1);
    expectAWholeSecond(file("lost.ts"), result);
}

TEST_F(Live, EachPictureShowsItsOwnTelemetry)
{
    Result const result = burn({"-o", file("shown.ts"), "--crf", "1"}, [&] {
        live_test::waitForListener(in_);
        Sender const sender(in_, file("whole.ts"), live_test::Repeat::Never);
        pass(4.5);
    });
    EXPECT_EQ(result.exitCode, 0);
    auto const shown = clip_test::picturesOf(file("shown.ts"));
    ASSERT_EQ(e2e::run({"burn", file("whole.ts"), "-c", file("c.json"), "-o", file("burnt.ts"), "--crf", "1",
                        "--preset", "ultrafast"})
                  .exitCode,
              0);
    auto const whole = clip_test::picturesOf(file("burnt.ts"));
    ASSERT_EQ(shown.size(), 100U);
    ASSERT_EQ(whole.size(), shown.size());
    for (std::size_t number = 0; number < shown.size(); ++number) {
        MappedNV12 const a = imaging::planesOf(*shown[number]);
        MappedNV12 const b = imaging::planesOf(*whole[number]);
        int worst = 0;
        for (int y = 0; y < a.height; ++y) {
            for (int x = 0; x < a.width; ++x) {
                worst = std::max(worst, std::abs(a.y[y * a.yStride + x] - b.y[y * b.yStride + x]));
            }
        }
        EXPECT_LT(worst, 40) << "picture " << number << ": another text";
    }
}

struct DisturbanceRow {
    char const* name;
    char const* clipAfter;  ///< null: the sender is only paused
    double awaySeconds;
    unsigned damageEach;  ///< before the disturbance
};

class Disturbances : public Live, public testing::WithParamInterface<DisturbanceRow> {};

TEST_P(Disturbances, AreOverWithinThreeSecondsAndTimesRise)
{
    DisturbanceRow const& row = GetParam();
    Receiver const receiver(out_);
    live_test::Time back;
    std::size_t before = 0;
    constexpr std::size_t kEnough = 50;
    Result const result = burnToAddress(
        {},
        [&] {
            live_test::waitForListener(in_);
            auto sender = std::make_unique<Sender>(in_, file("first.ts"));
            pass(2.0);
            sender->damageEach(row.damageEach);
            pass(row.damageEach != 0 ? 2.0 : 0.0);
            sender->damageEach(0);
            if (row.clipAfter == nullptr) {
                sender->pause();
            } else {
                sender.reset();
            }
            pass(row.awaySeconds);
            before = receiver.pictures().size();
            back = Clock::now();
            if (row.clipAfter == nullptr) {
                sender->resume();
            } else {
                sender = std::make_unique<Sender>(in_, file(row.clipAfter));
            }
            passUntil(5.0, [&] { return receiver.pictures().size() > before + kEnough; });
        },
        SIGTERM);
    EXPECT_EQ(result.exitCode, 0);
    std::vector<Passed> const pictures = receiver.pictures();
    EXPECT_GT(before, 25U);
    EXPECT_TRUE(timesRise(pictures));
    // What the demuxer still held comes out with what follows it; the stream flows when a second of it has come.
    ASSERT_GT(pictures.size(), before + 25U) << result.err;
    EXPECT_LT(Seconds(pictures[before + 2].when - back).count(), 3.0) << result.err;
    EXPECT_GT(receiver.telemetry().size(), pictures.size() * 8 / 10);
    double const shown = static_cast<double>(pictures.back().ticks - pictures.front().ticks) / 90000.0;
    double const real = Seconds(pictures.back().when - pictures.front().when).count();
    EXPECT_LT(shown, real + 1.0) << "the time in the stream runs with the clock";
    // A pause that is no outage yet leaves the sender its clock.
    bool const isOutage = row.clipAfter != nullptr || row.awaySeconds > 3.0;
    EXPECT_GT(shown, real - 1.0 - (isOutage ? 0.0 : row.awaySeconds)) << "no outage makes it late";
}

INSTANTIATE_TEST_SUITE_P(Rows, Disturbances,
                         testing::Values(DisturbanceRow{"paused_for_a_moment", nullptr, 1.5, 0},
                                         DisturbanceRow{"paused_for_long", nullptr, 5.0, 0},
                                         DisturbanceRow{"killed_and_restarted", "first.ts", 1.0, 0},
                                         DisturbanceRow{"killed_for_long", "first.ts", 5.0, 0},
                                         DisturbanceRow{"with_a_new_clock", "clock.ts", 0.5, 0},
                                         DisturbanceRow{"with_a_new_clock_after_long", "clock.ts", 4.5, 0},
                                         DisturbanceRow{"with_another_size", "size.ts", 0.5, 0},
                                         DisturbanceRow{"with_another_program", "program.ts", 0.5, 0},
                                         DisturbanceRow{"with_damaged_packets", nullptr, 0.1, 40}),
                         [](auto const& row) { return row.param.name; });

struct AbsenceRow {
    char const* name;
    char const* clip;
    double awaySeconds;
};

class ShortAbsences : public Live, public testing::WithParamInterface<AbsenceRow> {};

// Former bug: what passed while a sender was away for less than an outage vanished from the output's time, more of it
// each time.
TEST_P(ShortAbsences, PassInTheOutputToo)
{
    AbsenceRow const& row = GetParam();
    Receiver const receiver(out_);
    Result const result = burnToAddress({}, [&] {
        live_test::waitForListener(in_);
        for (int round = 0; round < 3; ++round) {
            pass(round == 0 ? 0.0 : row.awaySeconds);
            Sender const sender(in_, file(row.clip));
            pass(1.5);
        }
    });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.err.find(" 0 reopened, "), std::string::npos) << result.err;
    std::vector<Passed> const pictures = receiver.pictures();
    ASSERT_GT(pictures.size(), 60U) << result.err;
    EXPECT_TRUE(timesRise(pictures));
    std::vector<double> gaps;
    for (std::size_t number = 1; number < pictures.size(); ++number) {
        double const step = static_cast<double>(pictures[number].ticks - pictures[number - 1].ticks) / 90000.0;
        if (step > 0.3) {
            gaps.push_back(step);
        }
    }
    ASSERT_EQ(gaps.size(), 2U) << result.err;
    EXPECT_NEAR(gaps[0], row.awaySeconds, 0.2);
    EXPECT_NEAR(gaps[1], row.awaySeconds, 0.2);
    std::string const delay = "delay ";
    EXPECT_LT(std::stoi(result.err.substr(result.err.rfind(delay) + delay.size())), 700)
        << "waiting for a sender is no work: " << result.err;
}

INSTANTIATE_TEST_SUITE_P(Rows, ShortAbsences,
                         testing::Values(AbsenceRow{"with_the_old_clock", "first.ts", 2.5},
                                         AbsenceRow{"with_a_new_clock", "clock.ts", 1.0}),
                         [](auto const& row) { return row.param.name; });

struct IdentityRow {
    char const* name;
    char const* first;
    char const* then;
    bool inCells;
    bool toFile;
};

class Identity : public Live, public testing::WithParamInterface<IdentityRow> {};

/// Whether a whole unit of KLV stands here, in one access unit cell or bare.
bool isWholeKlv(Bytes const& unit, bool inCells)
{
    constexpr std::size_t kHeader = 5;
    Bytes const key = {0x06, 0x0E, 0x2B, 0x34};
    std::size_t const at = inCells ? kHeader : 0;
    bool const isRight = unit.size() > at + key.size() &&
                         std::equal(key.begin(), key.end(), unit.begin() + static_cast<std::ptrdiff_t>(at));
    return isRight &&
           (!inCells || (unit[2] == 0xDF && unit.size() == kHeader + static_cast<std::size_t>(unit[3] << 8 | unit[4])));
}

TEST_P(Identity, OfTheFirstInputIsKeptWhateverComesBack)
{
    IdentityRow const& row = GetParam();
    std::string const output = file(std::string(row.name) + "_out.ts");
    auto receiver = std::make_unique<Receiver>(out_, row.toFile ? "" : output);
    constexpr std::size_t kEnough = 50;
    std::size_t before = 0;
    Result const result = burn({"-o", row.toFile ? output : addressOf(out_)}, [&] {
        live_test::waitForListener(in_);
        auto sender = std::make_unique<Sender>(in_, file(row.first));
        pass(2.5);
        before = sender->sent().size();
        sender.reset();
        pass(0.5);
        sender = std::make_unique<Sender>(in_, file(row.then));
        // Nothing is received of what goes to a file.
        passUntil(4.0, [&] { return receiver->telemetry().size() > before + kEnough; });
    });
    receiver.reset();
    EXPECT_EQ(result.exitCode, 0) << result.err;
    ts_test::TransportStream const in = ts_test::readTransportStream(file(row.first));
    ts_test::TransportStream const out = ts_test::readTransportStream(output);
    EXPECT_EQ(out.faults, Words());
    EXPECT_EQ(out.id, 0x4D2);
    EXPECT_EQ(out.version, 5);
    EXPECT_EQ(out.services, ts_test::servicesSection(0x4D2, 7, "Range Control", "EO turret"));
    ASSERT_EQ(out.programs.size(), 1U);
    ASSERT_EQ(out.programs.count(7), 1U);
    ts_test::Program const& program = out.programs.at(7);
    EXPECT_EQ(program.mapPid, 0x64);
    EXPECT_EQ(program.version, 17);
    EXPECT_EQ(program.descriptors, (Bytes{0x25, 2, 1, 0}));
    ASSERT_EQ(program.streams.size(), 2U);
    ASSERT_EQ(program.streams.count(0x1E1), 1U);
    EXPECT_EQ(program.streams.at(0x1E1).type, 0x1B) << "H.264";
    ASSERT_EQ(program.streams.count(kTelemetryPid), 1U);
    ts_test::Stream const& telemetry = program.streams.at(kTelemetryPid);
    EXPECT_EQ(telemetry.type, row.inCells ? 0x15 : 0x06);
    EXPECT_EQ(telemetry.descriptors, row.inCells ? kSynchronous : kPlain);
    auto const& sent = in.programs.at(7).streams.at(kTelemetryPid).units;
    constexpr std::size_t kHeld = 5;  // what still was under way when the sender died
    ASSERT_GT(before, 50U);
    ASSERT_GT(telemetry.units.size(), before + 25) << "what came back goes on";
    for (std::size_t number = 0; number < telemetry.units.size(); ++number) {
        SCOPED_TRACE("unit " + std::to_string(number));
        ts_test::Unit const& unit = telemetry.units[number];
        ASSERT_EQ(unit.id, 0xFC);
        ASSERT_TRUE(unit.ticks);
        ASSERT_TRUE(isWholeKlv(unit.payload, row.inCells));
        if (number + kHeld < before) {
            ASSERT_EQ(*unit.ticks, *sent[number].ticks);
            ASSERT_EQ(unit.payload, sent[number].payload);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, Identity,
                         testing::Values(IdentityRow{"same", "synchronous.ts", "synchronous.ts", true, false},
                                         IdentityRow{"bare_telemetry", "synchronous.ts", "first.ts", true, false},
                                         IdentityRow{"telemetry_in_cells", "plain.ts", "synchronous.ts", false, false},
                                         IdentityRow{"late_services", "late_services.ts", "first.ts", false, false},
                                         IdentityRow{"to_a_file", "synchronous.ts", "program.ts", true, true}),
                         [](auto const& row) { return row.param.name; });

/// All of a stream without its units, which the muxer cuts in its own way.
Bytes contentsOf(std::string const& clip, int pid)
{
    Bytes all;
    ts_test::TransportStream const stream = ts_test::readTransportStream(clip);
    for (ts_test::Unit const& unit : stream.programs.at(1).streams.at(pid).units) {
        all.insert(all.end(), unit.payload.begin(), unit.payload.end());
    }
    return all;
}

TEST_F(Live, SoundGoesOnBesideThePictures)
{
    live_test::makeLiveClip({file("heard.ts"), 96, 64, 90000, 200, false, true});
    Result const result = burn({"-o", file("heard_out.ts")}, [&] {
        live_test::waitForListener(in_);
        Sender const sender(in_, file("heard.ts"));
        pass(3.0);
    });
    EXPECT_EQ(result.exitCode, 0) << result.err;
    Bytes const sent = contentsOf(file("heard.ts"), 0x102);
    Bytes const heard = contentsOf(file("heard_out.ts"), 0x102);
    constexpr std::size_t kTwoSeconds = 2 * 8000;  // at 64 kbit/s
    ASSERT_GT(heard.size(), kTwoSeconds);
    EXPECT_TRUE(std::search(sent.begin(), sent.end(), heard.begin(), heard.end()) != sent.end());
}

TEST_F(Live, GivesUpWhenNothingComes)
{
    auto const begin = Clock::now();
    Result const result =
        e2e::run({"burn", addressOf(in_), "-c", file("c.json"), "-o", file("nothing.ts"), "--live", "--give-up", "2"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_LT(Seconds(Clock::now() - begin).count(), 8.0);
    EXPECT_EQ(e2e::linesOf(result.err).front(),
              "stanag-overlay: " + addressOf(in_) + ": no picture has come yet; waiting for pictures");
    EXPECT_EQ(e2e::linesOf(result.err).back(), "stanag-overlay: " + addressOf(in_) +
                                                   ": nothing comes; check the address and that video is sent there; "
                                                   "gave up after 2.000 s without a picture");
    EXPECT_FALSE(std::filesystem::exists(file("nothing.ts")));
}

TEST_F(Live, FinishesTheFileWhenItGivesUp)
{
    e2e::RunOptions options;
    options.meanwhile = [&](int) {
        live_test::waitForListener(in_);
        Sender const sender(in_, file("first.ts"));
        pass(2.0);
    };
    Result const result = e2e::run(
        {"burn", addressOf(in_), "-c", file("c.json"), "-o", file("cut.ts"), "--live", "--give-up", "1"}, options);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_GT(clip_test::packetsOf(file("cut.ts")).video, 25);
}

TEST_F(Live, SignalsEndItBeforeAnythingCame)
{
    for (int const signal : {SIGINT, SIGTERM}) {
        EXPECT_EQ(burnToAddress(
                      {}, [] { pass(1.0); }, signal)
                      .exitCode,
                  0);
    }
}

TEST_F(Live, SlowEncodersLosePicturesButNoTelemetry)
{
    Receiver const receiver(out_);
    live_test::makeLiveClip({file("large.ts"), 1280, 720, 90000, 200});
    std::size_t sent = 0;
    Result const result = burnToAddress({"--threads", "1", "--preset", "placebo"}, [&] {
        live_test::waitForListener(in_);
        Sender const sender(in_, file("large.ts"));
        pass(6.0);
        sent = sender.sent().size();
        pass(1.0);
    });
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err.find(" 0 dropped"), std::string::npos) << result.err;
    EXPECT_LT(receiver.pictures().size(), sent * 8 / 10);
    EXPECT_GT(receiver.pictures().size(), 3U);
    constexpr std::size_t kHeld = 5;  // what still was under way when the sender died
    EXPECT_GE(receiver.telemetry().size() + kHeld, sent);
    EXPECT_TRUE(timesRise(receiver.pictures()));
}

TEST_F(Live, ListsAreWrittenLineByLine)
{
    for (Words words : {Words{"keys", addressOf(in_)}, Words{"text", addressOf(in_), "-c", file("c.json")}}) {
        SCOPED_TRACE(words.front());
        e2e::RunOptions options;
        options.outputFile = file("lines");
        std::size_t written = 0;
        std::size_t sent = 0;
        options.meanwhile = [&](int program) {
            live_test::waitForListener(in_);
            Sender const sender(in_, file("first.ts"));
            pass(2.5);
            sent = sender.sent().size();
            std::string const text = e2e::readFile(file("lines"));
            written = e2e::linesOf(text).size();
            EXPECT_EQ(text.back(), '\n');
            kill(program, SIGTERM);
        };
        e2e::run(words, options);
        // Former bug: text came a second late. A demuxer holds two pictures, text waits 0.1 s for telemetry.
        EXPECT_GT(written + 10, sent);
    }
}

struct RefusalRow {
    char const* name;
    Words words;
    char const* message;
};

class LiveRefusals : public Live, public testing::WithParamInterface<RefusalRow> {};

TEST_P(LiveRefusals, AreOneLine)
{
    Words words = GetParam().words;
    words.insert(words.end(), {"-c", file("c.json"), "-o", file("o.ts")});
    Result const result = e2e::run(words);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, std::string("stanag-overlay: ") + GetParam().message + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LiveRefusals,
    testing::Values(RefusalRow{"a_file",
                               {"burn", "clip.ts", "--live"},
                               "--live: clip.ts is no address; give one such as udp://127.0.0.1:5000, or no --live"},
                    RefusalRow{"a_port_that_is_none",
                               {"burn", "udp://127.0.0.1:70000", "--live"},
                               "burn: INPUT: udp://127.0.0.1:70000: give a port from 1 to 65535; see stanag-overlay "
                               "burn --help"},
                    RefusalRow{"a_range",
                               {"burn", "udp://127.0.0.1:9", "--live", "--from", "3"},
                               "--live: live pictures have no range; leave out --from and --to"},
                    RefusalRow{"a_sidecar",
                               {"burn", "udp://127.0.0.1:9", "--live", "--sidecar"},
                               "--live: telemetry goes with the pictures; leave out --sidecar, or send to a .ts"},
                    RefusalRow{"a_telemetry_file",
                               {"burn", "udp://127.0.0.1:9", "--live", "--telemetry", "t.klv"},
                               "--live: telemetry comes with the pictures; leave out --telemetry"},
                    RefusalRow{"a_wait_without_live",
                               {"burn", "udp://127.0.0.1:9", "--telemetry-wait", "50"},
                               "burn: --telemetry-wait requires --live; see stanag-overlay burn --help"},
                    RefusalRow{"too_long_a_wait",
                               {"burn", "udp://127.0.0.1:9", "--live", "--telemetry-wait", "2001"},
                               "burn: --telemetry-wait: give a number from 0 to 2000; see stanag-overlay burn --help"}),
    [](auto const& row) { return row.param.name; });

TEST_F(Live, TheInputIsNoOutput)
{
    Result const result = e2e::run({"burn", addressOf(in_), "-c", file("c.json"), "-o", addressOf(in_), "--live"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.err,
              "stanag-overlay: " + addressOf(in_) + ": is the input itself; give another address for the output\n");
}

TEST_F(Live, AnAddressThatCannotBeMeantIsRefusedAtOnce)
{
    Result const result = e2e::run({"burn", "foo://x", "-c", file("c.json"), "-o", file("o.ts"), "--live"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(e2e::linesOf(result.err).back(), "stanag-overlay: foo://x: cannot be opened: Protocol not found; check "
                                               "the address and that video is sent there");
}

}  // namespace
