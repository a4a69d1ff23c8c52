// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Sections in and out.
#include "media/program_tables.h"

#include <algorithm>

namespace media {
namespace {

constexpr std::uint8_t kAssociationTable = 0x00;
constexpr std::uint8_t kMapTable = 0x02;
constexpr std::uint8_t kServicesTable = 0x42;

constexpr std::size_t kSumBytes = 4;
constexpr std::size_t kLengthEnd = 3;    ///< bytes up to and with the section's length
constexpr std::size_t kHeaderBytes = 8;  ///< of every section with version and numbers
constexpr std::size_t kMaxSection = 1024;

int number13(std::uint8_t high, std::uint8_t low)
{
    return (high & 0x1F) << 8 | low;
}

std::size_t number12(std::uint8_t high, std::uint8_t low)
{
    return static_cast<std::size_t>((high & 0x0F) << 8 | low);
}

int number16(std::uint8_t high, std::uint8_t low)
{
    return high << 8 | low;
}

void put16(Bytes& bytes, int reserved, int value)
{
    bytes.push_back(static_cast<std::uint8_t>(reserved | value >> 8));
    bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
}

void put(Bytes& bytes, std::span<std::uint8_t const> more)
{
    bytes.insert(bytes.end(), more.begin(), more.end());
}

constexpr int kReserved13 = 0xE000 >> 8;
constexpr int kReserved12 = 0xF000 >> 8;

/// Length and check sum of a section whose other bytes stand.
Bytes closed(Bytes section)
{
    std::size_t const length = section.size() - kLengthEnd + kSumBytes;
    section[1] = static_cast<std::uint8_t>((section[1] & 0xF0U) | length >> 8U);
    section[2] = static_cast<std::uint8_t>(length & 0xFFU);
    section.resize(section.size() + kSumBytes);
    setSectionSum(section);
    return section;
}

Bytes header(std::uint8_t table, int id, int version)
{
    constexpr int kCurrent = 0xC1;
    Bytes section = {table, 0xB0, 0};
    put16(section, 0, id);
    section.push_back(static_cast<std::uint8_t>(kCurrent | version << 1));
    section.push_back(0);
    section.push_back(0);
    return section;
}

/// Whether it is a whole section of the table that holds from now on.
bool isSectionOf(std::span<std::uint8_t const> section, std::uint8_t table)
{
    return section.size() >= kHeaderBytes + kSumBytes && section[0] == table && (section[5] & 1U) != 0 &&
           sectionSum(section) == 0;
}

int versionOf(std::span<std::uint8_t const> section)
{
    return section[5] >> 1 & 0x1F;
}

/// Calls `see` with tag and whole bytes of each descriptor.
template <typename See>
void forEachDescriptor(std::span<std::uint8_t const> descriptors, See see)
{
    while (descriptors.size() >= 2 && descriptors.size() >= 2U + descriptors[1]) {
        std::size_t const size = 2U + descriptors[1];
        see(descriptors.first(size));
        descriptors = descriptors.subspan(size);
    }
}

}  // namespace

std::uint32_t sectionSum(std::span<std::uint8_t const> bytes)
{
    constexpr std::uint32_t kPolynomial = 0x04C11DB7;
    std::uint32_t sum = 0xFFFFFFFF;
    for (std::uint8_t const byte : bytes) {
        sum ^= static_cast<std::uint32_t>(byte) << 24U;
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum & 0x80000000U) != 0 ? sum << 1U ^ kPolynomial : sum << 1U;
        }
    }
    return sum;
}

void setSectionSum(Bytes& section)
{
    std::size_t const end = section.size() - kSumBytes;
    std::uint32_t sum = sectionSum(std::span(section).first(end));
    for (std::size_t at = end; at < section.size(); ++at) {
        section[at] = static_cast<std::uint8_t>(sum >> 24U);
        sum <<= 8U;
    }
}

std::optional<ProgramAssociation> readAssociation(std::span<std::uint8_t const> section)
{
    if (!isSectionOf(section, kAssociationTable)) {
        return std::nullopt;
    }
    ProgramAssociation association;
    association.transportStream = number16(section[3], section[4]);
    association.version = versionOf(section);
    constexpr std::size_t kEntry = 4;
    for (std::size_t at = kHeaderBytes; at + kEntry + kSumBytes <= section.size(); at += kEntry) {
        association.mapPids[number16(section[at], section[at + 1])] = number13(section[at + 2], section[at + 3]);
    }
    return association;
}

std::optional<ProgramMap> readProgramMap(std::span<std::uint8_t const> section)
{
    if (!isSectionOf(section, kMapTable) || section.size() < kMapHeaderBytes + kSumBytes) {
        return std::nullopt;
    }
    std::size_t const end = section.size() - kSumBytes;
    ProgramMap map;
    map.program = number16(section[3], section[4]);
    map.version = versionOf(section);
    map.clockPid = number13(section[8], section[9]);
    std::size_t at = kMapHeaderBytes + number12(section[10], section[11]);
    if (at > end) {
        return std::nullopt;
    }
    map.descriptors.assign(section.begin() + kMapHeaderBytes, section.begin() + static_cast<std::ptrdiff_t>(at));
    while (at + kMapStreamBytes <= end) {
        auto const entry = section.subspan(at);
        std::size_t const length = number12(entry[3], entry[4]);
        at += kMapStreamBytes + length;
        if (at > end) {
            return std::nullopt;
        }
        auto const descriptors = entry.subspan(kMapStreamBytes, length);
        map.streams.push_back({entry[0], number13(entry[1], entry[2]), Bytes(descriptors.begin(), descriptors.end())});
    }
    return map;
}

Bytes writeAssociation(ProgramAssociation const& association)
{
    Bytes section = header(kAssociationTable, association.transportStream, association.version);
    for (auto const& [program, pid] : association.mapPids) {
        put16(section, 0, program);
        put16(section, kReserved13, pid);
    }
    return closed(std::move(section));
}

Bytes writeProgramMap(ProgramMap const& map)
{
    Bytes section = header(kMapTable, map.program, map.version);
    put16(section, kReserved13, map.clockPid);
    put16(section, kReserved12, static_cast<int>(map.descriptors.size()));
    put(section, map.descriptors);
    for (MappedStream const& stream : map.streams) {
        section.push_back(stream.type);
        put16(section, kReserved13, stream.pid);
        put16(section, kReserved12, static_cast<int>(stream.descriptors.size()));
        put(section, stream.descriptors);
    }
    return section.size() + kSumBytes > kMaxSection ? Bytes() : closed(std::move(section));
}

bool isServices(std::span<std::uint8_t const> section)
{
    return isSectionOf(section, kServicesTable);
}

Bytes keepServices(std::span<std::uint8_t const> section, std::set<int> const& programs)
{
    constexpr std::size_t kFixed = 11;
    constexpr std::size_t kService = 5;
    if (!isServices(section) || section.size() < kFixed + kSumBytes) {
        return {};
    }
    std::size_t const end = section.size() - kSumBytes;
    Bytes kept(section.begin(), section.begin() + kFixed);
    for (std::size_t at = kFixed; at + kService <= end;) {
        auto const entry = section.subspan(at);
        std::size_t const length = kService + number12(entry[3], entry[4]);
        if (at + length > end) {
            return {};
        }
        if (programs.count(number16(entry[0], entry[1])) != 0) {
            put(kept, entry.first(length));
        }
        at += length;
    }
    return kept.size() == kFixed ? Bytes() : closed(std::move(kept));
}

Bytes descriptorsTagged(std::span<std::uint8_t const> descriptors, std::span<std::uint8_t const> tags)
{
    Bytes kept;
    forEachDescriptor(descriptors, [&](std::span<std::uint8_t const> descriptor) {
        if (std::find(tags.begin(), tags.end(), descriptor[0]) != tags.end()) {
            put(kept, descriptor);
        }
    });
    return kept;
}

bool namesFormat(std::span<std::uint8_t const> descriptors, std::array<char, 4> identifier)
{
    constexpr std::uint8_t kRegistration = 0x05;
    constexpr std::uint8_t kMetadata = 0x26;
    bool named = false;
    forEachDescriptor(descriptors, [&](std::span<std::uint8_t const> descriptor) {
        bool const tells = descriptor[0] == kRegistration || descriptor[0] == kMetadata;
        named = named || (tells && std::search(descriptor.begin() + 2, descriptor.end(), identifier.begin(),
                                               identifier.end()) != descriptor.end());
    });
    return named;
}

PacketView viewOf(std::span<std::uint8_t const> packet)
{
    PacketView view;
    view.pid = number13(packet[1], packet[2]);
    view.starts = (packet[1] & 0x40U) != 0;
    bool const hasAdaptation = (packet[3] & 0x20U) != 0;
    bool const hasPayload = (packet[3] & 0x10U) != 0;
    std::size_t const at = hasAdaptation ? 5U + packet[4] : 4U;
    view.payloadAt = hasPayload ? std::min(at, kTransportPacket) : kTransportPacket;
    return view;
}

std::vector<SectionCollector::Section> SectionCollector::add(std::span<std::uint8_t const> packet, std::uint64_t place)
{
    std::vector<Section> whole;
    PacketView const view = viewOf(packet);
    auto payload = packet.subspan(view.payloadAt);
    std::uint64_t at = place + view.payloadAt;
    if (payload.empty()) {
        return whole;
    }
    if (!view.starts) {
        append_(payload, at, whole);
        return whole;
    }
    std::size_t const pointer = payload[0];
    payload = payload.subspan(1);
    ++at;
    if (pointer > payload.size()) {
        forget();
        return whole;
    }
    append_(payload.first(pointer), at, whole);
    forget();
    payload = payload.subspan(pointer);
    at += pointer;
    while (!payload.empty() && payload[0] != 0xFF) {
        std::size_t const before = whole.size();
        open_ = true;
        openSince_ = place;
        append_(payload, at, whole);
        if (whole.size() == before) {
            break;
        }
        std::size_t const size = whole.back().bytes.size();
        payload = payload.subspan(size);
        at += size;
    }
    return whole;
}

void SectionCollector::append_(std::span<std::uint8_t const> bytes, std::uint64_t place, std::vector<Section>& whole)
{
    for (std::size_t index = 0; open_ && index < bytes.size(); ++index) {
        section_.bytes.push_back(bytes[index]);
        section_.places.push_back(place + index);
        std::size_t const size = section_.bytes.size();
        if (size >= kLengthEnd && size == kLengthEnd + number12(section_.bytes[1], section_.bytes[2])) {
            whole.push_back(std::move(section_));
            forget();
        }
    }
}

void SectionCollector::forget()
{
    section_ = {};
    open_ = false;
}

Bytes packetsOf(std::span<std::uint8_t const> section, int pid, std::uint8_t& counter)
{
    constexpr std::uint8_t kFilling = 0xFF;
    Bytes packets;
    bool first = true;
    while (first || !section.empty()) {
        std::size_t const end = packets.size() + kTransportPacket;
        packets.push_back(kTransportSync);
        put16(packets, first ? 0x40 : 0, pid);
        packets.push_back(static_cast<std::uint8_t>(0x10 | counter));
        counter = (counter + 1) & 0x0F;
        if (first) {
            packets.push_back(0);  // the section begins at once
        }
        std::size_t const room = std::min(end - packets.size(), section.size());
        put(packets, section.first(room));
        section = section.subspan(room);
        packets.resize(end, kFilling);
        first = false;
    }
    return packets;
}

}  // namespace media
