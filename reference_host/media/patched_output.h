// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// An output whose bytes go through a ProgramTablePatch before they are written.
#pragma once

#include "media/ffmpeg_types.h"
#include "media/program_table_patch.h"

#include <cstdint>
#include <span>

namespace media {

class PatchedOutput {
public:
    /// `inner`, which must outlive this, is what is written to.
    PatchedOutput(AVIOContext& inner, KeptTables kept);
    ~PatchedOutput();
    PatchedOutput(PatchedOutput const&) = delete;
    PatchedOutput& operator=(PatchedOutput const&) = delete;

    /// What the muxer writes to.
    AVIOContext* context() { return context_; }
    /// For what is learned of the input later.
    ProgramTablePatch& patch() { return patch_; }

private:
    static int onWrite(void* self, std::uint8_t* bytes, int size);
    void write_(std::span<std::uint8_t const> bytes);

    AVIOContext& inner_;
    AVIOContext* context_;
    ProgramTablePatch patch_;
};

}  // namespace media
