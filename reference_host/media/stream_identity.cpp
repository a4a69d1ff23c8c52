// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// PIDs and programs taken over.
#include "media/stream_identity.h"

#include <algorithm>
#include <new>
#include <set>

namespace media {
namespace {

/// Those below belong to tables, those from kEndPid on to nobody.
constexpr int kFirstPid = 0x20;
constexpr int kEndPid = 0x1FFB;

constexpr int kUsualPid = 0x100;

/// The first of `count` PIDs in a row from `from` on that no stream has.
int freePids(std::set<int> const& taken, int from, int count)
{
    int first = std::clamp(from, kFirstPid, kEndPid - count);
    for (int tries = 0; tries < kEndPid; ++tries) {
        auto const next = taken.lower_bound(first);
        if (next == taken.end() || *next >= first + count) {
            return first;
        }
        first = *next + 1 > kEndPid - count ? kFirstPid : *next + 1;
    }
    return first;
}

/// The output's stream for each of the input's.
std::map<int, int> allStreams(InputStreams const& source, AVFormatContext const& output,
                              std::map<int, int> const& copied)
{
    std::map<int, int> all = copied;
    for (unsigned index = 0; index < output.nb_streams; ++index) {
        auto const isThis = [index](auto const& pair) { return pair.second == static_cast<int>(index); };
        if (std::none_of(copied.begin(), copied.end(), isThis)) {
            all[source.video] = static_cast<int>(index);
        }
    }
    return all;
}

std::vector<int> takePids(InputStreams const& source, AVFormatContext& output, std::map<int, int> const& streams)
{
    std::set<int> taken;
    std::vector<int> lost;
    for (auto const& [input, own] : streams) {
        int const pid = source.stream(input).id;
        bool const usable = pid >= kFirstPid && pid < kEndPid && taken.insert(pid).second;
        output.streams[own]->id = usable ? pid : 0;
        if (!usable) {
            lost.push_back(pid);
        }
    }
    for (auto const& [input, own] : streams) {
        int& pid = output.streams[own]->id;
        if (pid == 0) {
            pid = freePids(taken, kUsualPid, 1);
            taken.insert(pid);
        }
    }
    return lost;
}

AVProgram& addProgram(AVFormatContext& output, AVProgram const& source)
{
    AVProgram* const program = av_new_program(&output, source.id);
    if (program == nullptr) {
        throw std::bad_alloc();
    }
    av_dict_copy(&program->metadata, source.metadata, 0);
    return *program;
}

/// The programs that have a stream in the output; one that no program has goes to the first.
void takePrograms(AVFormatContext const& source, AVFormatContext& output, std::map<int, int> const& streams)
{
    for (unsigned number = 0; number < source.nb_programs; ++number) {
        AVProgram const& program = *source.programs[number];
        for (unsigned index = 0; index < program.nb_stream_indexes; ++index) {
            auto const own = streams.find(static_cast<int>(program.stream_index[index]));
            if (own != streams.end()) {
                AVProgram const& kept = addProgram(output, program);
                av_program_add_stream_index(&output, kept.id, static_cast<unsigned>(own->second));
            }
        }
    }
    for (unsigned index = 0; output.nb_programs > 0 && index < output.nb_streams; ++index) {
        if (av_find_program_from_stream(&output, nullptr, static_cast<int>(index)) == nullptr) {
            av_program_add_stream_index(&output, output.programs[0]->id, index);
        }
    }
}

}  // namespace

StreamIdentity takeIdentity(InputStreams const& source, AVFormatContext& output, std::map<int, int> const& copied)
{
    std::map<int, int> const streams = allStreams(source, output, copied);
    StreamIdentity identity;
    identity.lostPids = takePids(source, output, streams);
    takePrograms(*source.container, output, streams);
    identity.kept.source = source.tables;
    for (unsigned number = 0; number < output.nb_programs; ++number) {
        identity.kept.programs.insert(output.programs[number]->id);
    }
    std::set<int> taken;
    for (auto const& [input, own] : streams) {
        taken.insert(output.streams[own]->id);
    }
    for (auto const& [input, own] : copied) {
        identity.kept.copiedPids.insert(output.streams[own]->id);
    }
    int const maps = std::max(1, static_cast<int>(output.nb_programs));
    int const wanted = source.container->nb_programs > 0 ? source.container->programs[0]->pmt_pid : kFirstPid;
    identity.firstMapPid = freePids(taken, wanted, maps);
    return identity;
}

}  // namespace media
