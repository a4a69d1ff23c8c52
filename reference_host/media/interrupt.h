// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Ctrl-C, termination requests and terminals that go away: long work looks here between two steps and then ends in good
// order.
#pragma once

namespace media {

/// From now on the first SIGINT, SIGTERM or SIGHUP only sets the flag below; a second SIGINT or SIGTERM ends the
/// program at once, as it would without this call. SIGHUP, which a terminal that goes away sends more than once, never
/// does; where it was ignored before (nohup), it stays so.
void catchInterrupts();

/// Whether an interrupt has arrived.
bool interrupted() noexcept;
/// The signal that arrived first; 0 when none has.
int interruptSignal() noexcept;

/// From now on a signal comes too late and changes nothing: for the moment in which an output gets its name, so that
/// the file and the exit code tell the same. What has arrived before still counts.
void settleInterrupts() noexcept;

}  // namespace media
