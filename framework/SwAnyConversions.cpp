// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The registry's contents: the framework's own types and their 26 conversions, in the order in which
// they are listed per source type. SwAny looks them up by type name.
#include "sw_any_registry.h"
#include "sw_diagnostic.h"
#include "sw_numbers.h"
#include "sw_text.h"

#include <charconv>
#include <iterator>
#include <limits>

namespace sw_detail {

namespace {

/// The whole value as compact text.
template <typename Container>
SwString compactText(Container const& container)
{
    SwString text;
    SwJsonDocument::generateJson(SwJsonValue(container), text, false, 0, SwString());
    return text;
}

/// The text form of a JSON value: scalars as they are displayed, containers written out.
SwString jsonValueText(SwJsonValue const& value)
{
    if (value.isObject() || value.isArray()) {
        if (!value.hasContainer()) {
            return value.isObject() ? "SwJsonValue(Object)" : "SwJsonValue(Array)";
        }
        SwString text;
        SwJsonDocument::generateJson(value, text, false, 0, SwString());
        return text;
    }
    return value.toString();
}

/// The bytes of hexadecimal text, up to the first pair that is incomplete or holds another byte.
SwList<unsigned char> bytesOfHex(SwString const& text)
{
    std::string const digits = text.trimmed();
    SwList<unsigned char> bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        int const high = hexDigitValue(digits[i]);
        int const low = hexDigitValue(digits[i + 1]);
        if (high < 0 || low < 0) {
            break;
        }
        bytes.push_back(static_cast<unsigned char>(high * 16 + low));
    }
    return bytes;
}

SwString hexOfBytes(SwList<unsigned char> const& bytes)
{
    constexpr std::string_view kHexDigits = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (unsigned char const byte : bytes) {
        text.push_back(kHexDigits[byte >> 4U]);
        text.push_back(kHexDigits[byte & 15U]);
    }
    return text;
}

/// The text as double, 0 with `complaint` and the text on standard error when it is no number.
double doubleOf(SwString const& text, std::string_view complaint)
{
    double number = 0.0;
    if (!text.parseNumericDouble(number)) {
        writeDiagnostic(complaint, text.toStdString());
        return 0.0;
    }
    return number;
}

SwString joined(std::vector<std::string> const& pieces)
{
    std::string text;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        text.append(i == 0 ? "" : ",").append(pieces[i]);
    }
    return text;
}

std::vector<std::string> listOf(SwString const& text)
{
    std::vector<std::string> pieces;
    for (SwString const& piece : text.split(',')) {
        pieces.push_back(piece.trimmed());
    }
    return pieces;
}

}  // namespace

std::string generalNumberText(double number, int digits)
{
    // Sign, digits, point and exponent, or the four zeros that fixed notation may need in front.
    char text[kDoubleTextDigits + 16];
    std::to_chars_result const end =
        std::to_chars(std::begin(text), std::end(text), number, std::chars_format::general, digits);
    return std::string(text, end.ptr);
}

AnyRegistry& AnyRegistry::instance()
{
    // Never destroyed: values in other static objects may outlive it.
    static AnyRegistry& registry = *new AnyRegistry();
    return registry;
}

AnyRegistry::AnyRegistry()
{
    writeDiagnostic("********************CALL ONCE NOT TWICE********************", "");
    registerMetaTypes_();
    registerTextConversions_();
    registerJsonConversions_();
    registerIntegerConversions_();
    registerFloatConversions_();
    registerListConversions_();
    builtInDone_ = true;
}

template <typename T>
void AnyRegistry::addType_()
{
    storeOps(SwAny::nameOf<T>(), SwAny::opsOf<T>());
}

template <typename From, typename To, typename Function>
void AnyRegistry::add_(Function function)
{
    addType_<From>();
    addType_<To>();
    addConverter(SwAny::nameOf<From>(), SwAny::nameOf<To>(),
                 [function](SwAny const& source) { return SwAny(To(function(source.get<From>()))); });
}

void AnyRegistry::registerMetaTypes_()
{
    addType_<SwString>();
    addType_<SwList<unsigned char>>();
    addType_<SwJsonValue>();
    addType_<SwJsonObject>();
    addType_<SwJsonArray>();
    addType_<SwJsonDocument>();
    addType_<std::vector<std::string>>();
    addType_<SwFlagSet<WindowFlag>>();
    addType_<SwFlagSet<EntryType>>();
    addType_<SwFlagSet<DrawTextFormat>>();
}

void AnyRegistry::registerTextConversions_()
{
    add_<char const*, SwString>([](char const* text) { return SwString(text); });
    add_<std::string, SwString>([](std::string const& text) { return SwString(text); });
    add_<SwString, std::string>([](SwString const& text) { return text.toStdString(); });
    // Points into the source value and lives as long as that one.
    add_<SwString, char const*>([](SwString const& text) { return text.c_str(); });
    add_<SwString, std::vector<unsigned char>>([](SwString const& text) {
        std::string const& bytes = text.toStdString();
        return std::vector<unsigned char>(bytes.begin(), bytes.end());
    });
}

void AnyRegistry::registerJsonConversions_()
{
    add_<SwJsonObject, SwString>([](SwJsonObject const& object) { return compactText(object); });
    add_<SwJsonArray, SwString>([](SwJsonArray const& array) { return compactText(array); });
    add_<SwJsonValue, SwString>([](SwJsonValue const& value) { return jsonValueText(value); });
    add_<SwString, SwList<unsigned char>>([](SwString const& text) { return bytesOfHex(text); });
    add_<SwList<unsigned char>, SwString>([](SwList<unsigned char> const& bytes) { return hexOfBytes(bytes); });
}

void AnyRegistry::registerIntegerConversions_()
{
    add_<SwString, int>([](SwString const& text) { return text.toInt(); });
    add_<int, SwString>([](int number) { return SwString(std::to_string(number)); });
    add_<SwString, unsigned int>([](SwString const& text) {
        return static_cast<unsigned int>(text.toUnsigned(std::numeric_limits<unsigned int>::max()));
    });
    add_<unsigned int, SwString>([](unsigned int number) { return SwString(std::to_string(number)); });
    add_<SwString, long>([](SwString const& text) { return text.toLong(); });
    add_<long, SwString>([](long number) { return SwString(std::to_string(number)); });
    add_<SwString, unsigned long>(
        [](SwString const& text) { return text.toUnsigned(std::numeric_limits<unsigned long>::max()); });
    add_<unsigned long, SwString>([](unsigned long number) { return SwString(std::to_string(number)); });
}

void AnyRegistry::registerFloatConversions_()
{
    add_<SwString, float>(
        [](SwString const& text) { return nearestFloat(doubleOf(text, "Invalid float conversion in SwString: ")); });
    add_<float, SwString>(
        [](float number) { return SwString(generalNumberText(static_cast<double>(number), kFloatTextDigits)); });
    add_<SwString, double>(
        [](SwString const& text) { return doubleOf(text, "Invalid double conversion in SwString: "); });
    add_<double, SwString>([](double number) { return SwString(generalNumberText(number, kDoubleTextDigits)); });
    add_<SwString, bool>([](SwString const& text) { return text == SwString("true"); });
    add_<bool, SwString>([](bool value) { return SwString(value ? "true" : "false"); });
}

void AnyRegistry::registerListConversions_()
{
    add_<SwString, std::vector<std::string>>([](SwString const& text) { return listOf(text); });
    add_<std::vector<std::string>, SwString>([](std::vector<std::string> const& pieces) { return joined(pieces); });
}

}  // namespace sw_detail
