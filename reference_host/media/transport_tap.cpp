// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Following the packets of a transport stream; between the input's bytes and the demuxer.
#include "media/transport_tap.h"

#include <algorithm>
#include <array>

namespace media {
namespace {

/// Packets come plain, with a time stamp before them or with a check sum behind them.
constexpr std::array<std::size_t, 3> kSteps = {kTransportPacket, 192, 204};

/// So many packets in a row are no accident.
constexpr std::size_t kInARow = 4;

/// An input in whose beginning there are none is something else.
constexpr std::uint64_t kMaxSearched = 65536;

/// A table that does not end; the stream goes on without it.
constexpr std::uint64_t kMaxHeld = 65536;

constexpr std::array<char, 4> kKlv = {'K', 'L', 'V', 'A'};
constexpr std::array<char, 4> kId3 = {'I', 'D', '3', ' '};

}  // namespace

void TransportTap::push(std::span<std::uint8_t const> bytes)
{
    ended_ = false;
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    scan_();
}

void TransportTap::end()
{
    ended_ = true;
    scan_();
}

void TransportTap::jump()
{
    begin_ = endPlace_();
    scanned_ = begin_;
    bytes_.clear();
    step_ = 0;
    ended_ = false;
    association_.forget();
    services_.forget();
    for (auto& [pid, collector] : maps_) {
        collector.forget();
    }
}

std::size_t TransportTap::take(std::span<std::uint8_t> out)
{
    // A packet's last bytes may be those between it and the next one.
    std::uint64_t const until = ended_ || idle_ ? endPlace_() : std::min(heldFrom_(), endPlace_());
    std::size_t const count = std::min(out.size(), static_cast<std::size_t>(until - begin_));
    auto const taken = bytes_.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(bytes_.begin(), taken, out.begin());
    bytes_.erase(bytes_.begin(), taken);
    begin_ += count;
    return count;
}

void TransportTap::scan_()
{
    while (!idle_ && (step_ != 0 || findPackets_())) {
        if (scanned_ + kTransportPacket > endPlace_()) {
            return;
        }
        if (at_(scanned_) != kTransportSync) {
            step_ = 0;
            continue;
        }
        see_(std::span(bytes_).subspan(static_cast<std::size_t>(scanned_ - begin_), kTransportPacket), scanned_);
        scanned_ += step_;
    }
}

bool TransportTap::findPackets_()
{
    auto const isPacketRow = [this](std::uint64_t place, std::size_t step) {
        for (std::size_t number = 0; number < kInARow; ++number) {
            std::uint64_t const at = place + number * step;
            if (at >= endPlace_()) {
                return ended_ && number > 0;
            }
            if (at_(at) != kTransportSync) {
                return false;
            }
        }
        return true;
    };
    std::size_t const needed = kInARow * kSteps.back();
    for (; scanned_ < endPlace_() && (ended_ || endPlace_() - scanned_ >= needed); ++scanned_) {
        for (std::size_t const step : kSteps) {
            if (isPacketRow(scanned_, step)) {
                step_ = step;
                return true;
            }
        }
        idle_ = !tables_.association && ++searched_ >= kMaxSearched;
        if (idle_) {
            return false;
        }
    }
    return false;
}

void TransportTap::see_(std::span<std::uint8_t const> packet, std::uint64_t place)
{
    int const pid = viewOf(packet).pid;
    if (pid == kAssociationPid) {
        for (SectionCollector::Section const& section : association_.add(packet, place)) {
            std::optional<ProgramAssociation> const association = readAssociation(section.bytes);
            for (auto const& [program, mapPid] : association ? association->mapPids : std::map<int, int>()) {
                if (program != 0) {
                    maps_.try_emplace(mapPid);
                }
            }
            tables_.association = tables_.association ? tables_.association : association;
        }
    } else if (pid == kServicesPid && tables_.services.empty()) {
        for (SectionCollector::Section& section : services_.add(packet, place)) {
            tables_.services = isServices(section.bytes) ? std::move(section.bytes) : Bytes();
        }
    } else if (auto const map = maps_.find(pid); map != maps_.end()) {
        for (SectionCollector::Section const& section : map->second.add(packet, place)) {
            seeMap_(section);
        }
        std::optional<std::uint64_t> const open = map->second.openSince();
        if (open && place - *open > kMaxHeld) {
            map->second.forget();
        }
    }
}

void TransportTap::seeMap_(SectionCollector::Section const& section)
{
    std::optional<ProgramMap> const map = readProgramMap(section.bytes);
    if (!map) {
        return;
    }
    tables_.maps.emplace(map->program, *map);
    // Only the bytes that differ are touched, the types and with them the sum: those that are reserved may be anything.
    Bytes changed = section.bytes;
    std::size_t at = kMapHeaderBytes + map->descriptors.size();
    for (MappedStream const& stream : map->streams) {
        bool const known = namesFormat(stream.descriptors, kKlv) || namesFormat(stream.descriptors, kId3);
        changed[at] = stream.type == kSynchronousMetadata && known ? kPrivateData : stream.type;
        at += kMapStreamBytes + stream.descriptors.size();
    }
    setSectionSum(changed);
    for (std::size_t index = 0; index < changed.size(); ++index) {
        at_(section.places[index]) = changed[index];
    }
}

std::uint64_t TransportTap::heldFrom_() const
{
    std::uint64_t from = scanned_;
    for (auto const& [pid, collector] : maps_) {
        from = std::min(from, collector.openSince().value_or(from));
    }
    return from;
}

}  // namespace media
