// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Tables rewritten on their way to the file; between muxer and output.
#include "media/program_table_patch.h"

#include <algorithm>
#include <array>

namespace media {
namespace {

/// What says nothing of how pictures are coded: language, metadata pointer, component, stream identifier.
constexpr std::array<std::uint8_t, 4> kKeptOfVideo = {0x0A, 0x25, 0x50, 0x52};

/// Whether a unit of a stream begins in the packet.
bool isUnitStart(std::span<std::uint8_t const> unit)
{
    return unit.size() >= 4 && unit[0] == 0 && unit[1] == 0 && unit[2] == 1;
}

}  // namespace

void ProgramTablePatch::learnServices(std::span<std::uint8_t const> section)
{
    if (kept_.source.services.empty()) {
        kept_.source.services.assign(section.begin(), section.end());
    }
}

Bytes ProgramTablePatch::pass(std::span<std::uint8_t const> bytes)
{
    Bytes out;
    waiting_.insert(waiting_.end(), bytes.begin(), bytes.end());
    std::size_t at = 0;
    for (; at + kTransportPacket <= waiting_.size(); at += kTransportPacket) {
        passPacket_(std::span(waiting_).subspan(at, kTransportPacket), out);
    }
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(at));
    return out;
}

void ProgramTablePatch::passPacket_(std::span<std::uint8_t> packet, Bytes& out)
{
    PacketView const view = viewOf(packet);
    if (view.pid == kAssociationPid) {
        for (SectionCollector::Section const& section : association_.add(packet, 0)) {
            write_(associationOf_(section.bytes), view.pid, out);
        }
    } else if (view.pid == kServicesPid) {
        // An input that does not describe its services has an output that does not.
        for (SectionCollector::Section const& section : services_.add(packet, 0)) {
            static_cast<void>(section);
            write_(keepServices(kept_.source.services, kept_.programs), view.pid, out);
        }
    } else if (auto const map = maps_.find(view.pid); map != maps_.end()) {
        for (SectionCollector::Section const& section : map->second.add(packet, 0)) {
            write_(mapOf_(section.bytes), mapPids_[view.pid], out);
        }
    } else {
        auto const unit = packet.subspan(view.payloadAt);
        auto const id = kept_.unitIds.find(view.pid);
        if (view.starts && id != kept_.unitIds.end() && isUnitStart(unit)) {
            unit[3] = id->second;
        }
        out.insert(out.end(), packet.begin(), packet.end());
    }
}

Bytes ProgramTablePatch::associationOf_(std::span<std::uint8_t const> section)
{
    std::optional<ProgramAssociation> association = readAssociation(section);
    if (!association) {
        return {section.begin(), section.end()};
    }
    ProgramAssociation const& source = *kept_.source.association;
    association->transportStream = source.transportStream;
    association->version = source.version;
    for (auto& [program, pid] : association->mapPids) {
        auto const known = source.mapPids.find(program);
        maps_.try_emplace(pid);
        pid = mapPids_[pid] = known == source.mapPids.end() ? pid : known->second;
    }
    return writeAssociation(*association);
}

Bytes ProgramTablePatch::mapOf_(std::span<std::uint8_t const> section) const
{
    Bytes const asItIs(section.begin(), section.end());
    std::optional<ProgramMap> map = readProgramMap(section);
    auto const source = map ? kept_.source.maps.find(map->program) : kept_.source.maps.end();
    if (source == kept_.source.maps.end()) {
        return asItIs;
    }
    map->version = source->second.version;
    map->descriptors = source->second.descriptors;
    for (MappedStream& stream : map->streams) {
        auto const& streams = source->second.streams;
        auto const same = std::find_if(streams.begin(), streams.end(),
                                       [&stream](MappedStream const& other) { return other.pid == stream.pid; });
        if (same == streams.end()) {
            continue;
        }
        if (kept_.copiedPids.count(stream.pid) != 0) {
            stream = *same;
        } else {
            Bytes const more = descriptorsTagged(same->descriptors, kKeptOfVideo);
            stream.descriptors.insert(stream.descriptors.end(), more.begin(), more.end());
        }
    }
    Bytes const kept = writeProgramMap(*map);
    return kept.empty() ? asItIs : kept;
}

void ProgramTablePatch::write_(std::span<std::uint8_t const> section, int pid, Bytes& out)
{
    if (section.empty()) {
        return;
    }
    Bytes const packets = packetsOf(section, pid, counters_[pid]);
    out.insert(out.end(), packets.begin(), packets.end());
}

}  // namespace media
