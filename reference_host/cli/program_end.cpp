// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// From what was thrown to an exit code and a line.
#include "cli/program_end.h"

#include "cli/messages.h"
#include "media/encoder_choice.h"
#include "media/ffmpeg_types.h"
#include "media/interrupt.h"

#include <exception>
#include <new>

namespace cli {

int codeAfter(int code)
{
    /// How shells number the end by a signal.
    constexpr int kSignalBase = 128;
    return media::interrupted() ? kSignalBase + media::interruptSignal() : code;
}

Failure currentFailure()
{
    try {
        throw;
    } catch (ReaderGone const&) {
        return {kDone};
    } catch (WrongUsage const& failure) {
        return {kUsage, failure.what()};
    } catch (media::UnknownChoice const& failure) {
        return {kUsage, failure.what()};
    } catch (std::bad_alloc const&) {
        return {kUnusable, "there is not enough memory; use smaller pictures"};
    } catch (std::exception const& failure) {
        return {codeAfter(kUnusable), failure.what()};
    }
}

}  // namespace cli
