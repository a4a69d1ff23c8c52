// Raw KLV files written beside clips.
#include "clip/klv_sidecar.h"

#include <algorithm>
#include <array>
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

std::vector<std::uint8_t> withoutCells(std::span<std::uint8_t const> unit)
{
    // Service, number and flags of a cell, then the length of what it holds (ISO/IEC 13818-1, 2.12.4).
    constexpr std::size_t kHeader = 5;
    constexpr std::array<std::uint8_t, 4> kKey = {0x06, 0x0E, 0x2B, 0x34};
    bool const bare = unit.size() >= kKey.size() && std::equal(kKey.begin(), kKey.end(), unit.begin());
    std::vector<std::uint8_t> contents;
    std::vector<std::uint8_t> const all(unit.begin(), unit.end());
    if (bare) {
        return all;
    }
    while (unit.size() >= kHeader) {
        std::size_t const length = static_cast<std::size_t>(unit[3]) << 8U | unit[4];
        if (kHeader + length > unit.size()) {
            return all;
        }
        auto const cell = unit.subspan(kHeader, length);
        contents.insert(contents.end(), cell.begin(), cell.end());
        unit = unit.subspan(kHeader + length);
    }
    return unit.empty() ? contents : all;
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
