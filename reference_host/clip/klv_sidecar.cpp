// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Raw KLV files written beside clips.
#include "clip/klv_sidecar.h"

#include "clip/klv_cells.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace clip {

std::string sidecarPath(std::string const& output, std::size_t number)
{
    std::string const ending = number == 0 ? ".klv" : "." + std::to_string(number + 1) + ".klv";
    return std::filesystem::path(output).replace_extension(ending).string();
}

KlvSidecar::KlvSidecar(std::string const& path)
    : file_(path)
    , stream_(file_.writePath(), std::ios::binary | std::ios::trunc)
{
    check_();
}

void KlvSidecar::add(std::span<std::uint8_t const> unit)
{
    std::vector<std::uint8_t> const klv = withoutCells(unit);
    stream_.write(reinterpret_cast<char const*>(klv.data()), static_cast<std::streamsize>(klv.size()));
    check_();
}

void KlvSidecar::finish()
{
    stream_.close();
    check_();
    file_.commit();
}

void KlvSidecar::check_() const
{
    if (!stream_) {
        throw std::runtime_error(media::writeFailure(file_.path(), std::strerror(errno), errno));
    }
}

}  // namespace clip
