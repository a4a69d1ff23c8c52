// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Packets to sections and units, and back.
#include "ts_reader.h"

#include "file_bytes.h"

#include <algorithm>

namespace ts_test {
namespace {

constexpr std::size_t kPacket = 188;

std::uint32_t sumOf(Bytes const& bytes, std::size_t count)
{
    std::uint32_t sum = ~0U;
    for (std::size_t index = 0; index < count; ++index) {
        for (unsigned bit = 8; bit-- > 0;) {
            bool const one = ((sum >> 31U) ^ (static_cast<unsigned>(bytes[index]) >> bit & 1U)) != 0;
            sum = sum << 1U ^ (one ? 0x04C11DB7U : 0U);
        }
    }
    return sum;
}

int number(Bytes const& bytes, std::size_t at, int mask)
{
    return (bytes.at(at) << 8 | bytes.at(at + 1)) & mask;
}

Bytes part(Bytes const& bytes, std::size_t at, std::size_t count)
{
    auto const first = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at, bytes.size()));
    auto const last = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(at + count, bytes.size()));
    return {first, last};
}

struct Packet {
    int pid = 0;
    bool starts = false;
    bool hasPayload = false;
    int counter = 0;
    std::size_t payloadAt = kPacket;
};

Packet packetAt(Bytes const& file, std::size_t at)
{
    Packet packet;
    packet.pid = number(file, at + 1, 0x1FFF);
    packet.starts = (file[at + 1] & 0x40) != 0;
    packet.hasPayload = (file[at + 3] & 0x10) != 0;
    packet.counter = file[at + 3] & 0x0F;
    bool const adapted = (file[at + 3] & 0x20) != 0;
    packet.payloadAt = adapted ? 5U + file[at + 4] : 4U;
    return packet;
}

class Reader {
public:
    explicit Reader(std::string const& path)
    {
        std::string const text = file_test::readFile(path);
        file_.assign(text.begin(), text.end());
    }

    TransportStream read()
    {
        // A map may stand before the association that names it.
        for (std::size_t at = 0; at + kPacket <= file_.size() && mapPids_.empty(); at += kPacket) {
            readPacket_(at);
        }
        counters_.clear();
        open_.clear();
        found_.faults.clear();
        for (std::size_t at = 0; at + kPacket <= file_.size(); at += kPacket) {
            readPacket_(at);
        }
        for (auto const& [pid, bytes] : open_) {
            closeUnit_(pid, bytes);
        }
        return std::move(found_);
    }

private:
    void fault_(std::string const& what, std::size_t at)
    {
        found_.faults.push_back(what + " at " + std::to_string(at));
    }

    void readPacket_(std::size_t at)
    {
        if (file_[at] != 0x47) {
            fault_("no sync byte", at);
            return;
        }
        Packet const packet = packetAt(file_, at);
        if (!packet.hasPayload || packet.pid == 0x1FFF) {
            return;
        }
        auto const last = counters_.find(packet.pid);
        if (last != counters_.end() && packet.counter != ((last->second + 1) & 0x0F)) {
            fault_("gap in PID " + std::to_string(packet.pid), at);
        }
        counters_[packet.pid] = packet.counter;
        Bytes const payload = part(file_, at + packet.payloadAt, kPacket - packet.payloadAt);
        if (packet.pid == 0 || packet.pid == 0x11 || mapPids_.count(packet.pid) != 0) {
            addSection_(packet, payload, at);
        } else {
            addUnit_(packet, payload);
        }
    }

    void addSection_(Packet const& packet, Bytes const& payload, std::size_t at)
    {
        Bytes& open = open_[-1 - packet.pid];
        if (packet.starts) {
            open = part(payload, 1U + payload.at(0), kPacket);
        } else {
            open.insert(open.end(), payload.begin(), payload.end());
        }
        if (open.size() < 3 || open.size() < 3U + static_cast<unsigned>(number(open, 1, 0x0FFF))) {
            return;
        }
        Bytes const section = part(open, 0, 3U + static_cast<unsigned>(number(open, 1, 0x0FFF)));
        open.clear();
        if (sumOf(section, section.size()) != 0) {
            fault_("wrong sum", at);
            return;
        }
        int const version = section[5] >> 1 & 0x1F;
        if (packet.pid == 0) {
            found_.id = number(section, 3, 0xFFFF);
            found_.version = version;
            for (std::size_t entry = 8; entry + 8 <= section.size(); entry += 4) {
                int const pid = number(section, entry + 2, 0x1FFF);
                mapPids_[pid] = number(section, entry, 0xFFFF);
                found_.programs[mapPids_[pid]].mapPid = pid;
            }
        } else if (packet.pid == 0x11) {
            found_.services = section;
        } else {
            readMap_(section, version);
        }
    }

    void readMap_(Bytes const& section, int version)
    {
        Program& program = found_.programs[number(section, 3, 0xFFFF)];
        program.version = version;
        auto const own = static_cast<std::size_t>(number(section, 10, 0x0FFF));
        program.descriptors = part(section, 12, own);
        for (std::size_t at = 12 + own; at + 5 + 4 <= section.size();) {
            auto const length = static_cast<std::size_t>(number(section, at + 3, 0x0FFF));
            Stream& stream = program.streams[number(section, at + 1, 0x1FFF)];
            stream.type = section[at];
            stream.descriptors = part(section, at + 5, length);
            at += 5 + length;
        }
    }

    void addUnit_(Packet const& packet, Bytes const& payload)
    {
        Bytes& open = open_[packet.pid];
        if (packet.starts) {
            closeUnit_(packet.pid, open);
            open = payload;
        } else if (!open.empty()) {
            open.insert(open.end(), payload.begin(), payload.end());
        }
    }

    void closeUnit_(int pid, Bytes const& bytes)
    {
        for (auto& [programNumber, program] : found_.programs) {
            auto const stream = program.streams.find(pid);
            if (stream == program.streams.end() || bytes.size() < 9 || bytes[0] != 0 || bytes[2] != 1) {
                continue;
            }
            Unit unit;
            unit.id = bytes[3];
            if ((bytes[7] & 0x80) != 0) {
                unit.ticks = static_cast<std::int64_t>(bytes.at(9) >> 1 & 7) << 30 |
                             static_cast<std::int64_t>(number(bytes, 10, 0xFFFF) >> 1) << 15 |
                             number(bytes, 12, 0xFFFF) >> 1;
            }
            auto const length = static_cast<std::size_t>(number(bytes, 4, 0xFFFF));
            std::size_t const header = 9U + bytes[8];
            unit.payload = part(bytes, header, length == 0 ? bytes.size() : 6 + length - header);
            stream->second.units.push_back(unit);
        }
    }

    Bytes file_;
    TransportStream found_;
    std::map<int, int> mapPids_;   ///< program by PID
    std::map<int, int> counters_;  ///< by PID
    std::map<int, Bytes> open_;    ///< unit by PID, section by -1 - PID
};

}  // namespace

TransportStream readTransportStream(std::string const& path)
{
    return Reader(path).read();
}

void rewriteTransportStream(std::string const& from, std::string const& to, Changes const& changes)
{
    std::string file = file_test::readFile(from);
    std::string out;
    for (std::size_t at = 0; at + kPacket <= file.size(); at += kPacket) {
        Bytes const bytes(file.begin() + static_cast<std::ptrdiff_t>(at),
                          file.begin() + static_cast<std::ptrdiff_t>(at + kPacket));
        Packet const packet = packetAt(bytes, 0);
        std::string changed = file.substr(at, kPacket);
        auto const section = changes.sections.find(packet.pid);
        if (section != changes.sections.end()) {
            if (section->second.empty()) {
                continue;
            }
            changed.assign(kPacket, '\xFF');
            changed.replace(0, 4, file, at, 4);
            changed[4] = '\0';
            std::copy(section->second.begin(), section->second.end(), changed.begin() + 5);
        }
        auto const id = changes.unitIds.find(packet.pid);
        if (id != changes.unitIds.end() && packet.starts) {
            changed[packet.payloadAt + 3] = static_cast<char>(id->second);
        }
        auto const pid = changes.pids.find(packet.pid);
        if (pid != changes.pids.end()) {
            changed[1] = static_cast<char>((changed[1] & 0xE0) | pid->second >> 8);
            changed[2] = static_cast<char>(pid->second & 0xFF);
        }
        out += changed;
    }
    file_test::writeFile(to, out);
}

Bytes closedSection(Bytes body)
{
    std::size_t const length = body.size() - 3 + 4;
    body[1] = static_cast<std::uint8_t>((body[1] & 0xF0U) | length >> 8U);
    body[2] = static_cast<std::uint8_t>(length & 0xFFU);
    std::uint32_t const sum = sumOf(body, body.size());
    for (unsigned const shift : {24U, 16U, 8U, 0U}) {
        body.push_back(static_cast<std::uint8_t>(sum >> shift & 0xFFU));
    }
    return body;
}

namespace {

Bytes sectionStart(int table, int id, int version)
{
    return {static_cast<std::uint8_t>(table),
            0xB0,
            0,
            static_cast<std::uint8_t>(id >> 8),
            static_cast<std::uint8_t>(id & 0xFF),
            static_cast<std::uint8_t>(0xC1 | version << 1),
            0,
            0};
}

void put(Bytes& bytes, int high, int value)
{
    bytes.push_back(static_cast<std::uint8_t>(high | value >> 8));
    bytes.push_back(static_cast<std::uint8_t>(value & 0xFF));
}

}  // namespace

Bytes associationSection(int streamId, std::map<int, int> const& mapPids, int version)
{
    Bytes body = sectionStart(0, streamId, version);
    for (auto const& [program, pid] : mapPids) {
        put(body, 0, program);
        put(body, 0xE0, pid);
    }
    return closedSection(body);
}

Bytes mapSection(int program, int clockPid, Bytes const& descriptors, std::vector<MapEntry> const& entries, int version)
{
    Bytes body = sectionStart(2, program, version);
    put(body, 0xE0, clockPid);
    put(body, 0xF0, static_cast<int>(descriptors.size()));
    body.insert(body.end(), descriptors.begin(), descriptors.end());
    for (MapEntry const& entry : entries) {
        body.push_back(static_cast<std::uint8_t>(entry.type));
        put(body, 0xE0, entry.pid);
        put(body, 0xF0, static_cast<int>(entry.descriptors.size()));
        body.insert(body.end(), entry.descriptors.begin(), entry.descriptors.end());
    }
    return closedSection(body);
}

Bytes servicesSection(int streamId, int program, std::string const& provider, std::string const& name)
{
    Bytes body = sectionStart(0x42, streamId, 0);
    put(body, 0, 1);       // original network
    body.push_back(0xFF);  // reserved
    put(body, 0, program);
    body.push_back(0xFC);
    put(body, 0x80, static_cast<int>(5 + provider.size() + name.size()));
    body.push_back(0x48);
    body.push_back(static_cast<std::uint8_t>(3 + provider.size() + name.size()));
    body.push_back(0x01);
    for (std::string const& text : {provider, name}) {
        body.push_back(static_cast<std::uint8_t>(text.size()));
        body.insert(body.end(), text.begin(), text.end());
    }
    return closedSection(body);
}

}  // namespace ts_test
