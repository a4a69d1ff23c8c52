// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The configuration check against the plugin's parser: what the check says of any text, and what it does not say, is
// what the records hold; and the keys that it names in any template are those that the plugin looks up.
//
// The input is a configuration, a template, and lines that become the values of every member in turn: a line that is a
// JSON value as it is, any other in quotes.
#include "check_agreement.h"

#include "SwJson.h"

#include "json_fuzz_support.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Names = std::vector<std::string>;

Names const kBlockNames = {"formatString", "decimals",          "trimTrailingZeros", "missingPlaceholder",
                           "textColor",    "textSize",          "thickness",         "bgColor",
                           "bgAlpha",      "updateEveryNFrames"};
Names const kConditionNames = {"operator", "value", "bitmask", "showAfterMs", "keepAfterMs"};
Names const kFormatNames = {"date",     "decimals",           "trimTrailingZeros", "dateFormat",     "timestampUnit",
                            "timezone", "missingPlaceholder", "holdLastMs",        "refreshEveryMs", "minValue",
                            "maxValue"};

/// The first lines of the input as JSON values.
Names valuesOf(std::string const& text)
{
    constexpr std::size_t kMostValues = 6;
    Names values;
    std::istringstream lines(text);
    std::string line;
    while (values.size() < kMostValues && std::getline(lines, line)) {
        SwString error;
        SwJsonDocument::fromJson(SwString(line), SwString(), error);
        values.push_back(error.isEmpty() ? line : '"' + SwJsonValue::escapeString(line) + '"');
    }
    return values;
}

/// Gives every member the next of the values.
class Members {
public:
    Members(Names const& values, std::size_t first) : values_(values), next_(first) {}

    std::string next() { return values_[next_++ % values_.size()]; }
    std::string all(Names const& names)
    {
        std::string members;
        for (std::string const& name : names) {
            members += (members.empty() ? "\"" : ",\"") + name + "\":" + next();
        }
        return members;
    }

private:
    Names const& values_;
    std::size_t next_;
};

std::string blockOf(Names const& values, std::size_t first)
{
    Members members(values, first);
    std::string block = '{' + members.all(kBlockNames);
    block += R"(,"position":{)" + members.all({"x", "y"});
    block += R"(},"condition":{"key":"k",)" + members.all(kConditionNames);
    block += R"(},"formats":{"a":{)" + members.all(kFormatNames) + R"(,"invalidValues":[)" + members.next() + ',' +
             members.next() + "]}}}";
    return block;
}

/// What stands alone because it rules over others or is ruled over.
std::string shortcutsOf(Names const& values, std::size_t first)
{
    Members members(values, first);
    return R"({"condition":{"key":)" + members.next() + R"(,"value":)" + members.next() +
           R"(}},{"condition":{"key":"k",)" + members.all({"notEquals", "operator"}) +
           R"(}},{"condition":{"key":"k",)" + members.all({"equals", "notEquals", "value"}) + R"(}},{"condition":)" +
           members.next() + R"(,"formats":)" + members.next() + R"(,"position":)" + members.next() + "}," +
           members.next();
}

void requireAgreement(std::string const& text)
{
    std::string const failure = check_agreement::disagreement(text);
    json_fuzz::require(failure.empty(), failure.c_str(), text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    json_fuzz::QuietStandardError const quiet;
    std::string const text(data, data + size);
    requireAgreement(text);
    std::string const failure = check_agreement::templateDisagreement(text);
    json_fuzz::require(failure.empty(), failure.c_str(), text);

    Names const values = valuesOf(text);
    if (!values.empty()) {
        // Which member gets which value follows from the size: every distribution comes up, one in each run.
        std::size_t const first = size % values.size();
        requireAgreement(R"({"overlay":[)" + blockOf(values, first) + ',' + shortcutsOf(values, first) + "]}");
    }
    return 0;
}
