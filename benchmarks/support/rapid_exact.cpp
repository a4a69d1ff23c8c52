// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The exact opponent.
#include "rapid_exact.h"

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>

void parseWithRapidExactly(std::string const& text)
{
    rapidjson::Document document;
    document.Parse<rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
    benchmark::DoNotOptimize(document);
}
