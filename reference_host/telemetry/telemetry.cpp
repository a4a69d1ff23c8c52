// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The telemetry library's front: the decoder of stream units and the telemetry files.
#include "telemetry/telemetry.h"

#include "telemetry/klv_reader.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

namespace telemetry {
namespace {

/// A telemetry file is read at once; nobody has one near this size.
constexpr std::size_t kMaxFileBytes = std::size_t{512} << 20U;

std::string readFile(std::string const& path)
{
    auto const closeFile = [](std::FILE* file) { std::fclose(file); };
    std::unique_ptr<std::FILE, decltype(closeFile)> const file(std::fopen(path.c_str(), "rb"), closeFile);
    if (file == nullptr) {
        throw std::runtime_error(path + ": cannot open the telemetry file (" + std::strerror(errno) +
                                 "); check the name and its permissions");
    }
    std::string bytes;
    std::string block(std::size_t{1} << 16U, '\0');
    std::size_t count = 0;
    while ((count = std::fread(block.data(), 1, block.size(), file.get())) > 0) {
        if (bytes.size() + count > kMaxFileBytes) {
            throw std::runtime_error(path + ": the telemetry file is larger than 512 MiB; split it");
        }
        bytes.append(block, 0, count);
    }
    if (std::ferror(file.get()) != 0) {
        throw std::runtime_error(path + ": cannot read the telemetry file (" + std::strerror(errno) +
                                 "); give a regular .klv or .jsonl file");
    }
    return bytes;
}

}  // namespace

char const* toText(Checksum checksum)
{
    switch (checksum) {
    case Checksum::Ok:
        return "ok";
    case Checksum::Bad:
        return "bad";
    default:
        return "absent";
    }
}

std::vector<Packet> KlvDecoder::decode(std::span<std::uint8_t const> bytes, std::optional<double> timeSeconds)
{
    std::vector<Packet> packets;
    KlvReader reader(bytes);
    while (auto const found = reader.next()) {
        std::optional<Packet> packet;
        switch (found->kind) {
        case KlvKind::St0601:
            packet = takePacket_(*found);
            break;
        case KlvKind::Security:
            packet = takeSecurity_(*found);
            break;
        case KlvKind::Foreign:
            ++counts_.foreignKeys;
            break;
        case KlvKind::Truncated:
            ++counts_.truncated;
            break;
        }
        if (packet.has_value()) {
            ++counts_.packets;
            packet->timeSeconds = timeSeconds;
            packets.push_back(std::move(*packet));
        }
    }
    return packets;
}

std::optional<Packet> KlvDecoder::takePacket_(KlvPacket const& found)
{
    auto mapped = mapper_.map(found);
    if (!mapped.has_value()) {
        ++counts_.truncated;
        return std::nullopt;
    }
    hasPackets_ = true;
    counts_.badChecksums += mapped->checksum == Checksum::Bad ? 1U : 0U;
    nested_.addKeys(found, mapped->payload);
    counts_.damagedSets = nested_.damaged();
    secondKeys_.addTo(mapped->payload);
    return Packet{std::nullopt, mapped->checksum, std::move(mapped->payload)};
}

std::optional<Packet> KlvDecoder::takeSecurity_(KlvPacket const& found)
{
    if (!nested_.takeSecurity(found)) {
        ++counts_.truncated;
        return std::nullopt;
    }
    // Alone it would hide the telemetry of the packet before it.
    bool const alone = !hasPackets_ && !nested_.security().empty();
    return alone ? std::optional(Packet{std::nullopt, Checksum::Absent, nested_.security()}) : std::nullopt;
}

std::vector<Packet> readKlvFile(std::string const& path, KlvCounts& counts)
{
    std::string const bytes = readFile(path);
    KlvDecoder decoder;
    auto packets = decoder.decode({reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size()}, std::nullopt);
    counts = decoder.counts();
    if (packets.empty()) {
        throw std::runtime_error(path + ": no ST 0601 packet in the file; give raw KLV that holds some");
    }
    return packets;
}

std::vector<Packet> readJsonLinesFile(std::string const& path)
{
    return parseJsonLines(readFile(path), path);
}

}  // namespace telemetry
