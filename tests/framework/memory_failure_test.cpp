// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Memory that runs out at any single allocation of strings, variant, registry and encryption: std::bad_alloc comes
// through, nothing leaks, and whatever was there before still works.
#include "SwAny.h"
#include "SwCrypto.h"
#include "SwJson.h"
#include "SwString.h"

#include "live_memory.h"
#include "test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <new>
#include <string>
#include <vector>

namespace {

constexpr char const* kLong = "a text that is longer than short strings";
constexpr char const* kPhrase = "a pass phrase that is longer than short strings";

struct Row {
    char const* name;
    std::function<void()> action;
};

bool failsAt(std::size_t allocation, std::function<void()> const& action)
{
    bool failed = false;
    live_memory::failAllocation(allocation);
    try {
        action();
    } catch (std::bad_alloc const&) {
        failed = true;
    }
    live_memory::failAllocation(0);
    return failed;
}

std::size_t allocationsOf(std::function<void()> const& action)
{
    std::size_t const before = live_memory::allocations();
    action();
    return live_memory::allocations() - before;
}

/// Every allocation that the action makes fails once, and the action with it.
void expectEachFailureComesThrough(Row const& row)
{
    SCOPED_TRACE(row.name);
    row.action();
    std::size_t const count = allocationsOf(row.action);
    ASSERT_GT(count, 0U);
    std::size_t const before = live_memory::newBytes();
    for (std::size_t allocation = 1; allocation <= count; ++allocation) {
        EXPECT_TRUE(failsAt(allocation, row.action)) << "allocation " << allocation << " of " << count;
    }
    EXPECT_EQ(live_memory::newBytes(), before);
    EXPECT_EQ(allocationsOf(row.action), count);
}

template <typename To, typename From>
Row conversion(char const* name, From const& from)
{
    return {name, [source = SwAny(from)] { source.convert<To>(); }};
}

}  // namespace

TEST(MemoryFailure, OfStringsComesThrough)
{
    SwString const text = std::string(" ") + kLong + ",%1,1234567890.1234567890 ";
    SwString const whole = "12345678901234567890";
    SwString const fraction = "1234567890.12345678901234567890";
    Row const rows[] = {
        {"from a C string", [] { SwString const made(kLong); }},
        {"copy", [&] { SwString const copy(text); }},
        {"operator+", [&] { text + text; }},
        {"C string in front", [&] { kLong + text; }},
        {"append",
         [&] {
             SwString grown;
             grown += text;
         }},
        {"trimmed", [&] { text.trimmed(); }},
        {"mid", [&] { text.mid(1, -1); }},
        {"arg", [&] { text.arg("a value"); }},
        {"arg without placeholder", [&] { fraction.arg("a value"); }},
        {"split", [&] { text.split(','); }},
        {"toInt", [] { SwString("0b0000000000000000000000000000000101").toInt(); }},
        {"parseNumericDouble of a whole number",
         [&] {
             double number = 0.0;
             whole.parseNumericDouble(number);
         }},
        {"parseNumericDouble",
         [&] {
             double number = 0.0;
             fraction.parseNumericDouble(number);
         }},
    };
    for (Row const& row : rows) {
        expectEachFailureComesThrough(row);
    }
}

TEST(MemoryFailure, OfAnUnreadableNumberComesThrough)
{
    testing::internal::CaptureStderr();
    expectEachFailureComesThrough({"toInt", [] { SwString("no number").toInt(); }});
    expectEachFailureComesThrough({"no rule", [any = SwAny(1)] { any.convert<SwJsonObject>(); }});
    testing::internal::GetCapturedStderr();
}

TEST(MemoryFailure, OfVariantsComesThrough)
{
    SwAny const text{SwString(kLong)};
    std::string const bytes = kLong;
    SwAny const unlisted = SwAny::fromRawPointer("a type name that is longer than short strings", nullptr);
    Row const rows[] = {
        {"made", [&] { SwAny const any{bytes}; }},
        {"copied", [&] { SwAny const any(text); }},
        {"copied into another",
         [&] {
             SwAny any;
             any = text;
         }},
        {"name copied", [&] { SwAny const any(unlisted); }},
        {"from a raw pointer", [&] { SwAny::fromRawPointer(SwAny::nameOf<std::string>(), &bytes); }},
        {"converted to itself", [&] { text.convert<SwString>(); }},
        {"toString", [&] { text.toString(); }},
        {"toString by conversion", [any = SwAny(bytes)] { any.toString(); }},
        {"converters", [] { SwAny::getConverters(); }},
        {"rules", [] { SwAny::getConversionRules(); }},
    };
    for (Row const& row : rows) {
        expectEachFailureComesThrough(row);
    }
}

// A stream swallowed the failure and gave "" or the beginning of the number.
TEST(MemoryFailure, OfConversionsComesThrough)
{
    SwString const long_ = kLong;
    SwList<unsigned char> bytes;
    bytes.assign(20, 7);
    Row const rows[] = {
        conversion<SwString>("1", kLong),
        conversion<SwString>("2", std::string(kLong)),
        conversion<std::string>("3", long_),
        conversion<char const*>("4", long_),
        conversion<std::vector<unsigned char>>("5", long_),
        conversion<SwString>("6", SwJsonObject{{kLong, kLong}}),
        conversion<SwString>("7", SwJsonArray{kLong}),
        conversion<SwString>("8", SwJsonValue(kLong)),
        conversion<SwString>("8 of an array", SwJsonValue(SwJsonArray{kLong})),
        conversion<SwList<unsigned char>>("9", SwString("0102")),
        conversion<SwString>("10", bytes),
        conversion<int>("11", SwString("000000000000000000000017")),
        conversion<SwString>("12", -2147483647),
        conversion<unsigned int>("13", SwString("17")),
        conversion<SwString>("14", 4294967295U),
        conversion<long>("15", SwString("17")),
        conversion<SwString>("16", -9223372036854775807L),
        conversion<unsigned long>("17", SwString("17")),
        conversion<SwString>("18", 18446744073709551615UL),
        conversion<float>("19", SwString("1.500000000000000000000000")),
        conversion<SwString>("20", -1.23456789e-30F),
        conversion<double>("21", SwString("1.500000000000000000000000")),
        conversion<SwString>("22", -1.23456789012345e-300),
        conversion<bool>("23", SwString("true")),
        conversion<SwString>("24", true),
        conversion<std::vector<std::string>>("25", SwString("a piece longer than short strings, another")),
        conversion<SwString>("26", std::vector<std::string>{kLong, kLong}),
        {"toString of a double", [any = SwAny(-1.23456789012345e-300)] { any.toString(); }},
    };
    for (Row const& row : rows) {
        expectEachFailureComesThrough(row);
    }
}

// A type's name once stood without operations, and storing them again read from null.
TEST(MemoryFailure, OfATypesRegistrationLeavesItKnownOrUnknown)
{
    int const value = 17;
    bool failed = true;
    for (std::size_t allocation = 1; failed; ++allocation) {
        SCOPED_TRACE(allocation);
        ASSERT_LT(allocation, 100U);
        for (int of = 0; of < 40; ++of) {
            std::string const name =
                "a type of the memory test " + std::to_string(of) + "/" + std::to_string(allocation);
            auto const store = [&] { EXPECT_NE(SwAny::storeOps(name, SwAny::opsOf<int>()), nullptr); };
            failed = failsAt(allocation, store);
            EXPECT_EQ(SwAny::findOps(name) != nullptr, !failed);
            store();
            EXPECT_EQ(SwAny::fromRawPointer(name, &value).data() == nullptr, false);
        }
    }
}

TEST(MemoryFailure, OfAConversionsRegistrationLeavesItListedOrUnknown)
{
    bool failed = true;
    for (std::size_t allocation = 1; failed; ++allocation) {
        SCOPED_TRACE(allocation);
        ASSERT_LT(allocation, 100U);
        std::string const from = "a source type of the memory test " + std::to_string(allocation);
        std::string const to = "a target type of the memory test";
        auto const add = [&] { SwAny::addConverter(from, to, [](SwAny const& source) { return source; }); };
        failed = failsAt(allocation, add);
        SwAny::ConversionRules const rules = SwAny::getConversionRules();
        bool const listed = rules.count(from) == 1 && std::count(rules.at(from).begin(), rules.at(from).end(), to) == 1;
        EXPECT_EQ(listed, !failed);
        EXPECT_EQ(SwAny::getConverters().count({from, to}), failed ? 0U : 1U);
        add();
        EXPECT_EQ(SwAny::getConversionRules().at(from).size(), 1U);
    }
}

TEST(MemoryFailure, OfEncryptionComesThrough)
{
    std::string const cipherText = SwCrypto::encryptText(kLong, kPhrase);
    SwCrypto::Bytes const key(32, 7);
    Row const rows[] = {
        {"cryptAES_ECB", [&] { SwCrypto::cryptAES_ECB(key, key, true); }},
        {"deriveKey", [] { SwCrypto::deriveKey(kPhrase); }},
        {"encodeBase64", [&] { SwCrypto::encodeBase64(key); }},
        {"decodeBase64", [&] { SwCrypto::decodeBase64(cipherText); }},
        {"encryptText", [] { SwCrypto::encryptText(kLong, kPhrase); }},
        {"decryptText", [&] { SwCrypto::decryptText(cipherText, kPhrase); }},
        {"encryptOrReport", [] { SwCrypto::encryptOrReport(kLong, kPhrase); }},
        {"decryptOrReport", [&] { SwCrypto::decryptOrReport(cipherText, kPhrase); }},
    };
    EXPECT_EQ(framework_test::standardErrorOf([&] {
                  for (Row const& row : rows) {
                      expectEachFailureComesThrough(row);
                  }
              }),
              "");
}

TEST(MemoryFailure, OfTheStringsOwnEncryptionIsReportedLikeAnyOther)
{
    SwString const plain = kLong;
    SwString const phrase = kPhrase;
    SwString const cipherText = plain.encryptAES(phrase);
    SwString result = "before";
    std::function<void()> const encrypt = [&] { result = plain.encryptAES(phrase); };
    std::function<void()> const decrypt = [&] { result = cipherText.decryptAES(phrase); };
    for (auto const& [action, line] : {std::pair(encrypt, "Encryption error: std::bad_alloc\n"),
                                       std::pair(decrypt, "Decryption error: std::bad_alloc\n")}) {
        std::size_t const count = allocationsOf(action);
        for (std::size_t allocation = 1; allocation <= count; ++allocation) {
            SCOPED_TRACE(testing::Message() << line << "allocation " << allocation << " of " << count);
            result = "before";
            testing::internal::CaptureStderr();
            EXPECT_FALSE(failsAt(allocation, action));
            EXPECT_EQ(testing::internal::GetCapturedStderr(), line);
            EXPECT_EQ(result.toStdString(), "");
        }
    }
}

// A value under a key became "", or "Unable to decrypt string value".
TEST(MemoryFailure, OfADocumentUnderAKeyIsNoMatterOfItsValues)
{
    std::string const cipherText = SwCrypto::encryptText(kLong, kPhrase);
    SwString const text = "[\"" + cipherText + "\"," + cipherText + "]";
    SwString const key = kPhrase;
    SwJsonValue const value = SwJsonObject{{"text", kLong}, {"number", 1.5}, {"flag", true}};
    SwString error;
    EXPECT_EQ(framework_test::standardErrorOf([&] {
                  expectEachFailureComesThrough({"read", [&] { SwJsonDocument::fromJson(text, key, error); }});
                  expectEachFailureComesThrough({"written", [&] {
                                                     SwString out;
                                                     SwJsonDocument::generateJson(value, out, false, 0, key);
                                                 }});
              }),
              "");
    EXPECT_EQ(error.toStdString(), "");
}
