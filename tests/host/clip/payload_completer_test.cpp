// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Derived keys and constants on their way into a packet's payload.
#include "clip/payload_completer.h"

#include <gtest/gtest.h>

namespace {

using clip::PayloadCompleter;
using telemetry::KeySelection;

TEST(PayloadCompleter, AddsTheConstantsOfTheProducerThatAPacketLacks)
{
    PayloadCompleter completer{KeySelection()};
    completer.setConstants("one", {{"n", SwJsonValue(7)}, {"tail", SwJsonValue("T7")}, {"gone", SwJsonValue(1)}});
    SwJsonObject payload{{"n", SwJsonValue(1)}};
    completer.complete("one", payload);
    EXPECT_EQ(payload, (SwJsonObject{{"n", SwJsonValue(1)}, {"tail", SwJsonValue("T7")}, {"gone", SwJsonValue(1)}}));
    payload = {{"gone", SwJsonValue()}};
    completer.complete("one", payload);
    EXPECT_EQ(payload, (SwJsonObject{{"n", SwJsonValue(7)}, {"tail", SwJsonValue("T7")}, {"gone", SwJsonValue()}}))
        << "null is a value too";
    payload = {{"n", SwJsonValue(2)}};
    completer.complete("two", payload);
    EXPECT_EQ(payload, (SwJsonObject{{"n", SwJsonValue(2)}}));
}

TEST(PayloadCompleter, DerivesFromThePacketAndNotFromConstants)
{
    PayloadCompleter completer{KeySelection::withDerived()};
    completer.setConstants("file", {{"sensor_alt_m", SwJsonValue(100.0)}});
    SwJsonObject own{{"sensor_alt_m", SwJsonValue(0.3048)}};
    completer.complete("file", own);
    EXPECT_EQ(own["sensor_alt_ft"], SwJsonValue(1.0));
    SwJsonObject lacking{{"n", SwJsonValue(1)}};
    completer.complete("file", lacking);
    EXPECT_EQ(lacking, (SwJsonObject{{"n", SwJsonValue(1)}, {"sensor_alt_m", SwJsonValue(100.0)}}));
}

}  // namespace
