// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// One input of a frame, and the records of the producers that deliver inputs.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

/// An input type that a plugin asks for.
struct RenderInputRequirement {
    std::string type;
    bool required = false;
};

struct RenderInput {
    std::string payloadKey;          ///< passed to the payload accessor; the producer's name when producerName is empty
    std::string producerName;        ///< takes precedence over payloadKey
    std::uint64_t payloadFrame = 0;  ///< frame the payload belongs to; 0 means the current frame
    bool fromLookback = false;       ///< the host took this payload from an earlier frame
};

/// A producer that the host expects to deliver inputs of a type.
struct ProducerRecord {
    std::string payloadKey;    ///< the name when producerName is empty
    std::string producerName;  ///< takes precedence
    std::string nodeName;
    std::string topic;
    std::string payloadType;
    std::string description;
    std::uint64_t sourceId = 0;
    std::uint32_t flags = 0;
};

/// The inputs of one type in one frame.
struct RenderInputGroup {
    std::vector<RenderInput> inputs;
};

/// The inputs of one type, grouped by producer. The pointers stand into the frame's input group.
struct ProducerView {
    std::vector<std::string> producers;  ///< declared ones in their order, then the others in byte order
    std::unordered_map<std::string, std::vector<RenderInput const*>> inputsByProducer;
    std::unordered_map<std::string, ProducerRecord> declared;
};
