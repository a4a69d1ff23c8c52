// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The grammar of RFC 8259, production by production: what the reader accepts, what it rejects, and where it
// differs on purpose. Rows are written from the grammar itself.
#include "SwJson.h"

#include "tree_text.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

enum class Verdict {
    Accept,           ///< valid by the grammar and read as what it says
    Reject,           ///< invalid by the grammar and refused
    AcceptOnPurpose,  ///< invalid by the grammar, read all the same
    RejectOnPurpose,  ///< valid by the grammar, refused all the same
    ReadDifferently,  ///< valid by the grammar, read as something else
};

/// Why a row differs.
constexpr char const* kTrailingComma = "a trailing comma is accepted: people leave one behind when they edit";
constexpr char const* kMoreSpace = "white space is that of the C library";
constexpr char const* kCoercion = "strings that look like literals or numbers are typed: configurations quote them";
constexpr char const* kIntRange = "whole numbers are signed 64-bit integers";
constexpr char const* kDoubleRange = "a double that overflows or underflows is an error rather than another number";
constexpr char const* kRepeatedName = "the last of repeated members counts; the RFC leaves it open";
constexpr char const* kNoUtf8Check = "bytes of 0x80 and above pass unchecked";
constexpr char const* kLoneSurrogate = "a surrogate without its partner has no UTF-8 form";

struct Row {
    char const* name;
    std::string text;
    Verdict verdict;
    std::string tree;  ///< what is read, for the accepting verdicts
    char const* reason = "";
};

std::string bytes(std::initializer_list<int> values)
{
    std::string text;
    for (int const value : values) {
        text.push_back(static_cast<char>(static_cast<unsigned char>(value)));
    }
    return text;
}

void expectRows(std::vector<Row> const& rows)
{
    std::set<std::string> names;
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_TRUE(names.insert(row.name).second) << "two rows of one name";
        bool const differs = row.verdict != Verdict::Accept && row.verdict != Verdict::Reject;
        EXPECT_EQ(differs, *row.reason != '\0') << "a difference needs its reason, and only a difference";
        std::string const read = framework_test::readText(row.text);
        if (row.verdict == Verdict::Reject || row.verdict == Verdict::RejectOnPurpose) {
            EXPECT_EQ(read.substr(0, 7), "error: ") << read;
        } else {
            EXPECT_EQ(read, row.tree);
        }
    }
}

constexpr Verdict kAccept = Verdict::Accept;
constexpr Verdict kReject = Verdict::Reject;

}  // namespace

// JSON-text = ws value ws; ws = *( space / tab / line feed / return )
TEST(JsonConformance, TextAndWhiteSpace)
{
    expectRows({
        {"no text", "", kReject, ""},
        {"white space only", " \t\n\r", kReject, ""},
        {"space around", " 1 ", kAccept, "i1"},
        {"tab around", "\t1\t", kAccept, "i1"},
        {"line feed around", "\n1\n", kAccept, "i1"},
        {"return around", "\r1\r", kAccept, "i1"},
        {"all four around", " \t\n\r1 \t\n\r", kAccept, "i1"},
        {"vertical tab", "\v1", Verdict::AcceptOnPurpose, "i1", kMoreSpace},
        {"form feed", "1\f", Verdict::AcceptOnPurpose, "i1", kMoreSpace},
        {"zero byte in front", bytes({0, '1'}), kReject, ""},
        {"zero byte behind", bytes({'1', 0}), kReject, ""},
        {"no-break space",
         "\xC2\xA0"
         "1",
         kReject, ""},
        {"line separator U+2028",
         "\xE2\x80\xA8"
         "1",
         kReject, ""},
        {"next line U+0085",
         "\xC2\x85"
         "1",
         kReject, ""},
        {"byte order mark",
         "\xEF\xBB\xBF"
         "1",
         kReject, ""},
        {"UTF-16 text", bytes({'[', 0, ']', 0}), kReject, ""},
        {"two values", "1 2", kReject, ""},
        {"two containers", "{}[]", kReject, ""},
        {"comma behind", "1,", kReject, ""},
        {"line comment", "1 // one", kReject, ""},
        {"block comment", "/* one */ 1", kReject, ""},
        {"hash comment", "# one\n1", kReject, ""},
        {"bracket behind", "[]]", kReject, ""},
        {"brace behind", "{}}", kReject, ""},
    });
}

// value = false / null / true / object / array / number / string
TEST(JsonConformance, Literals)
{
    expectRows({
        {"true", "true", kAccept, "true"},
        {"false", "false", kAccept, "false"},
        {"null", "null", kAccept, "null"},
        {"capital true", "True", kReject, ""},
        {"upper case true", "TRUE", kReject, ""},
        {"upper case null", "NULL", kReject, ""},
        {"mixed case false", "fALSE", kReject, ""},
        {"short true", "tru", kReject, ""},
        {"short false", "fals", kReject, ""},
        {"short null", "nul", kReject, ""},
        {"one letter", "t", kReject, ""},
        {"letter behind", "truee", kReject, ""},
        {"digit behind", "true1", kReject, ""},
        {"underscore behind", "null_", kReject, ""},
        {"two literals", "nullnull", kReject, ""},
        {"undefined", "undefined", kReject, ""},
        {"nil", "nil", kReject, ""},
        {"none", "None", kReject, ""},
        {"bare word", "word", kReject, ""},
        {"true in single quotes", "'true'", kReject, ""},
        {"true and a string", "true\"\"", kReject, ""},
    });
}

// object = begin-object [ member *( value-separator member ) ] end-object
TEST(JsonConformance, Objects)
{
    expectRows({
        {"empty", "{}", kAccept, "{}"},
        {"empty with space", "{ \n }", kAccept, "{}"},
        {"one member", "{\"a\":1}", kAccept, "{a:i1}"},
        {"two members", "{\"a\":1,\"b\":2}", kAccept, "{a:i1,b:i2}"},
        {"space everywhere", " { \"a\" : 1 , \"b\" : 2 } ", kAccept, "{a:i1,b:i2}"},
        {"empty name", "{\"\":1}", kAccept, "{:i1}"},
        {"name with escapes", "{\"\\u0061\\\\\":1}", kAccept, "{a\\:i1}"},
        {"name with zero", "{\"\\u0000\":1}", kAccept, "{" + bytes({0}) + ":i1}"},
        {"name in UTF-8", "{\"\xC3\xA9\":1}", kAccept, "{\xC3\xA9:i1}"},
        {"name that looks like a number", "{\"12\":1}", kAccept, "{12:i1}"},
        {"name that looks like a literal", "{\"true\":1}", kAccept, "{true:i1}"},
        {"nested", "{\"a\":{\"b\":{\"c\":{}}}}", kAccept, "{a:{b:{c:{}}}}"},
        {"every kind of value", "{\"a\":[],\"b\":{},\"c\":1,\"d\":1.5,\"e\":\"x\",\"f\":true,\"g\":null}", kAccept,
         "{a:[],b:{},c:i1,d:d1.5,e:'x',f:true,g:null}"},
        {"repeated name", "{\"a\":1,\"a\":2}", Verdict::ReadDifferently, "{a:i2}", kRepeatedName},
        {"names repeated through an escape", "{\"a\":1,\"\\u0061\":2}", Verdict::ReadDifferently, "{a:i2}",
         kRepeatedName},
        {"trailing comma", "{\"a\":1,}", Verdict::AcceptOnPurpose, "{a:i1}", kTrailingComma},
        {"trailing comma with space", "{\"a\":1 , }", Verdict::AcceptOnPurpose, "{a:i1}", kTrailingComma},
        {"two trailing commas", "{\"a\":1,,}", kReject, ""},
        {"leading comma", "{,\"a\":1}", kReject, ""},
        {"comma only", "{,}", kReject, ""},
        {"doubled comma", "{\"a\":1,,\"b\":2}", kReject, ""},
        {"no comma", "{\"a\":1 \"b\":2}", kReject, ""},
        {"semicolon", "{\"a\":1;\"b\":2}", kReject, ""},
        {"no colon", "{\"a\" 1}", kReject, ""},
        {"two colons", "{\"a\"::1}", kReject, ""},
        {"equals sign", "{\"a\"=1}", kReject, ""},
        {"comma for colon", "{\"a\",1}", kReject, ""},
        {"no value", "{\"a\":}", kReject, ""},
        {"no value and no colon", "{\"a\"}", kReject, ""},
        {"no name", "{:1}", kReject, ""},
        {"value only", "{1}", kReject, ""},
        {"bare name", "{a:1}", kReject, ""},
        {"name in single quotes", "{'a':1}", kReject, ""},
        {"number as name", "{1:1}", kReject, ""},
        {"literal as name", "{null:1}", kReject, ""},
        {"array as name", "{[]:1}", kReject, ""},
        {"open", "{", kReject, ""},
        {"open behind a name", "{\"a\"", kReject, ""},
        {"open behind a colon", "{\"a\":", kReject, ""},
        {"open behind a value", "{\"a\":1", kReject, ""},
        {"open behind a comma", "{\"a\":1,", kReject, ""},
        {"closed by a bracket", "{\"a\":1]", kReject, ""},
        {"closing brace only", "}", kReject, ""},
        {"comment inside", "{\"a\":/*x*/1}", kReject, ""},
    });
}

// array = begin-array [ value *( value-separator value ) ] end-array
TEST(JsonConformance, Arrays)
{
    expectRows({
        {"empty", "[]", kAccept, "[]"},
        {"empty with space", "[ \t]", kAccept, "[]"},
        {"one element", "[1]", kAccept, "[i1]"},
        {"two elements", "[1,2]", kAccept, "[i1,i2]"},
        {"space everywhere", " [ 1 , 2 ] ", kAccept, "[i1,i2]"},
        {"mixed kinds", "[null,true,1,1.5,\"x\",[],{}]", kAccept, "[null,true,i1,d1.5,'x',[],{}]"},
        {"nested", "[[[[]]]]", kAccept, "[[[[]]]]"},
        {"a hundred levels", std::string(100, '[') + std::string(100, ']'), kAccept,
         std::string(100, '[') + std::string(100, ']')},
        {"trailing comma", "[1,]", Verdict::AcceptOnPurpose, "[i1]", kTrailingComma},
        {"trailing comma with space", "[1 , ]", Verdict::AcceptOnPurpose, "[i1]", kTrailingComma},
        {"two trailing commas", "[1,,]", kReject, ""},
        {"leading comma", "[,1]", kReject, ""},
        {"comma only", "[,]", kReject, ""},
        {"doubled comma", "[1,,2]", kReject, ""},
        {"no comma", "[1 2]", kReject, ""},
        {"strings without comma", "[\"a\" \"b\"]", kReject, ""},
        {"colon", "[1:2]", kReject, ""},
        {"member", "[\"a\":1]", kReject, ""},
        {"open", "[", kReject, ""},
        {"open behind an element", "[1", kReject, ""},
        {"open behind a comma", "[1,", kReject, ""},
        {"open behind a comma and space", "[1, ", kReject, ""},
        {"inner one open", "[[1]", kReject, ""},
        {"closed by a brace", "[1}", kReject, ""},
        {"closing bracket only", "]", kReject, ""},
        {"bracket of another kind", "(1)", kReject, ""},
        {"star", "[*]", kReject, ""},
    });
}

// number = [ minus ] int [ frac ] [ exp ]
TEST(JsonConformance, Numbers)
{
    expectRows({
        {"zero", "0", kAccept, "i0"},
        {"minus zero", "-0", kAccept, "i0"},
        {"digit", "7", kAccept, "i7"},
        {"digits", "1234567890", kAccept, "i1234567890"},
        {"negative", "-12", kAccept, "i-12"},
        {"fraction", "1.5", kAccept, "d1.5"},
        {"zero fraction", "0.0", kAccept, "d0"},
        {"minus zero fraction", "-0.0", kAccept, "d-0"},
        {"fraction with zeros", "1.050", kAccept, "d1.05"},
        {"exponent", "1e2", kAccept, "d100"},
        {"capital exponent", "1E2", kAccept, "d100"},
        {"exponent with plus", "1e+2", kAccept, "d100"},
        {"exponent with minus", "1e-2", kAccept, "d0.01"},
        {"exponent with zeros", "1e0002", kAccept, "d100"},
        {"zero with exponent", "0e1", kAccept, "d0"},
        {"fraction and exponent", "-1.25E-1", kAccept, "d-0.125"},
        {"more digits than a double holds", "0.1000000000000000055511151231257827", kAccept, "d0.1"},
        {"half way between two doubles", "9007199254740993.0", kAccept, "d9007199254740992"},
        {"largest integer", "9223372036854775807", kAccept, "i9223372036854775807"},
        {"smallest integer", "-9223372036854775808", kAccept, "i-9223372036854775808"},
        {"largest double", "1.7976931348623157e308", kAccept, "d1.7976931348623157e+308"},
        {"smallest normal double", "2.2250738585072014e-308", kAccept, "d2.2250738585072014e-308"},
        {"integer above 64 bits", "9223372036854775808", Verdict::RejectOnPurpose, "", kIntRange},
        {"integer below 64 bits", "-9223372036854775809", Verdict::RejectOnPurpose, "", kIntRange},
        {"integer of a hundred digits", std::string(100, '9'), Verdict::RejectOnPurpose, "", kIntRange},
        {"double above its range", "1e309", Verdict::RejectOnPurpose, "", kDoubleRange},
        {"double far above", "1e99999", Verdict::RejectOnPurpose, "", kDoubleRange},
        {"double below its range", "1e-400", Verdict::RejectOnPurpose, "", kDoubleRange},
        {"double below the normal range", "1e-310", Verdict::RejectOnPurpose, "", kDoubleRange},
        {"leading zero", "01", kReject, ""},
        {"two zeros", "00", kReject, ""},
        {"minus and leading zero", "-01", kReject, ""},
        {"leading zero and fraction", "00.5", kReject, ""},
        {"minus only", "-", kReject, ""},
        {"two minus signs", "--1", kReject, ""},
        {"plus", "+1", kReject, ""},
        {"space behind minus", "- 1", kReject, ""},
        {"no digit before the point", ".5", kReject, ""},
        {"minus and point", "-.5", kReject, ""},
        {"no digit behind the point", "1.", kReject, ""},
        {"no digit between point and exponent", "1.e2", kReject, ""},
        {"two points", "1.2.3", kReject, ""},
        {"point only", ".", kReject, ""},
        {"no digit in the exponent", "1e", kReject, ""},
        {"sign but no digit in the exponent", "1e+", kReject, ""},
        {"two exponents", "1e2e3", kReject, ""},
        {"fraction in the exponent", "1e2.5", kReject, ""},
        {"exponent only", "e2", kReject, ""},
        {"hexadecimal", "0x1F", kReject, ""},
        {"binary", "0b1", kReject, ""},
        {"octal with letter", "0o7", kReject, ""},
        {"digit separator", "1_000", kReject, ""},
        {"decimal comma", "1,5", kReject, ""},
        {"thousands with space", "1 000", kReject, ""},
        {"suffix", "1f", kReject, ""},
        {"infinity", "Infinity", kReject, ""},
        {"minus infinity", "-Infinity", kReject, ""},
        {"short infinity", "inf", kReject, ""},
        {"not a number", "NaN", kReject, ""},
        {"small nan", "nan", kReject, ""},
        {"full-width digit", "\xEF\xBC\x91", kReject, ""},
    });
}

// string = quotation-mark *char quotation-mark
TEST(JsonConformance, Strings)
{
    expectRows({
        {"empty", "\"\"", kAccept, "''"},
        {"letters", "\"text\"", kAccept, "'text'"},
        {"space and marks", "\" !#$%&'()*+,-./:;<=>?@[]^_`{|}~\"", kAccept, "' !#$%&'()*+,-./:;<=>?@[]^_`{|}~'"},
        {"escaped quote", "\"\\\"\"", kAccept, "'\"'"},
        {"escaped backslash", "\"\\\\\"", kAccept, "'\\'"},
        {"escaped solidus", "\"\\/\"", kAccept, "'/'"},
        {"plain solidus", "\"/\"", kAccept, "'/'"},
        {"escaped backspace", "\"\\b\"", kAccept, "'\b'"},
        {"escaped form feed", "\"\\f\"", kAccept, "'\f'"},
        {"escaped line feed", "\"\\n\"", kAccept, "'\n'"},
        {"escaped return", "\"\\r\"", kAccept, "'\r'"},
        {"escaped tab", "\"\\t\"", kAccept, "'\t'"},
        {"escape of a letter", "\"\\u0041\"", kAccept, "'A'"},
        {"escape in lower and upper hex", "\"\\u00eF\"", kAccept, "'\xC3\xAF'"},
        {"escape of zero", "\"\\u0000\"", kAccept, "'" + bytes({0}) + "'"},
        {"escape of a control character", "\"\\u001f\"", kAccept, "'\x1F'"},
        {"escape of three bytes", "\"\\u20AC\"", kAccept, "'\xE2\x82\xAC'"},
        {"escape of a non-character", "\"\\uFFFF\"", kAccept, "'\xEF\xBF\xBF'"},
        {"surrogate pair", "\"\\uD834\\uDD1E\"", kAccept, "'\xF0\x9D\x84\x9E'"},
        {"last code point", "\"\\uDBFF\\uDFFF\"", kAccept, "'\xF4\x8F\xBF\xBF'"},
        {"delete character", "\"\x7F\"", kAccept, "'\x7F'"},
        {"two bytes of UTF-8", "\"\xC3\xA9\"", kAccept, "'\xC3\xA9'"},
        {"three bytes of UTF-8", "\"\xE2\x82\xAC\"", kAccept, "'\xE2\x82\xAC'"},
        {"four bytes of UTF-8", "\"\xF0\x9F\x98\x80\"", kAccept, "'\xF0\x9F\x98\x80'"},
        {"line separator", "\"\xE2\x80\xA8\"", kAccept, "'\xE2\x80\xA8'"},
        {"escaped digits are no number", "\"x12\"", kAccept, "'x12'"},
        {"text with exponent", "\"1e5\"", kAccept, "'1e5'"},
        {"text that is an integer", "\"12\"", Verdict::ReadDifferently, "i12", kCoercion},
        {"text that is a negative integer", "\"-12\"", Verdict::ReadDifferently, "i-12", kCoercion},
        {"text with leading zero", "\"010\"", Verdict::ReadDifferently, "i8", kCoercion},
        {"text that is a decimal number", "\"1.5\"", Verdict::ReadDifferently, "d1.5", kCoercion},
        {"text that is no float", "\"0.1\"", Verdict::ReadDifferently, "d0.10000000149011612", kCoercion},
        {"text true", "\"true\"", Verdict::ReadDifferently, "true", kCoercion},
        {"text false", "\"false\"", Verdict::ReadDifferently, "false", kCoercion},
        {"text null", "\"null\"", Verdict::ReadDifferently, "null", kCoercion},
        {"invalid UTF-8", "\"\xFF\xC3\"", Verdict::AcceptOnPurpose, "'\xFF\xC3'", kNoUtf8Check},
        {"overlong UTF-8", "\"\xC0\x80\"", Verdict::AcceptOnPurpose, "'\xC0\x80'", kNoUtf8Check},
        {"surrogate in UTF-8", "\"\xED\xA0\x80\"", Verdict::AcceptOnPurpose, "'\xED\xA0\x80'", kNoUtf8Check},
        {"lone high surrogate", "\"\\uD834\"", Verdict::RejectOnPurpose, "", kLoneSurrogate},
        {"lone low surrogate", "\"\\uDD1E\"", Verdict::RejectOnPurpose, "", kLoneSurrogate},
        {"surrogates swapped", "\"\\uDD1E\\uD834\"", Verdict::RejectOnPurpose, "", kLoneSurrogate},
        {"two high surrogates", "\"\\uD834\\uD834\"", Verdict::RejectOnPurpose, "", kLoneSurrogate},
        {"high surrogate and a letter", "\"\\uD834x\"", Verdict::RejectOnPurpose, "", kLoneSurrogate},
        {"open", "\"", kReject, ""},
        {"open with text", "\"text", kReject, ""},
        {"open behind an escaped quote", "\"text\\\"", kReject, ""},
        {"ends in a backslash", "\"text\\", kReject, ""},
        {"plain line feed", "\"a\nb\"", kReject, ""},
        {"plain return", "\"a\rb\"", kReject, ""},
        {"plain tab", "\"a\tb\"", kReject, ""},
        {"plain zero", "\"" + bytes({'a', 0, 'b'}) + "\"", kReject, ""},
        {"plain unit separator", "\"\x1F\"", kReject, ""},
        {"single quotes", "'text'", kReject, ""},
        {"back quotes", "`text`", kReject, ""},
        {"quotation marks of print", "\xE2\x80\x9Ctext\xE2\x80\x9D", kReject, ""},
        {"escape of another letter", "\"\\a\"", kReject, ""},
        {"escape of a single quote", "\"\\'\"", kReject, ""},
        {"escape of a digit", "\"\\0\"", kReject, ""},
        {"hex escape", "\"\\x41\"", kReject, ""},
        {"capital u", "\"\\U0041\"", kReject, ""},
        {"escaped line end", "\"a\\\nb\"", kReject, ""},
        {"escape of UTF-8", "\"\\\xC3\xA9\"", kReject, ""},
        {"no hex digits", "\"\\u\"", kReject, ""},
        {"three hex digits", "\"\\u004\"", kReject, ""},
        {"three hex digits and a letter", "\"\\u004g\"", kReject, ""},
        {"hex digits with sign", "\"\\u+041\"", kReject, ""},
        {"braced escape", "\"\\u{41}\"", kReject, ""},
        {"text behind the string", "\"a\"b", kReject, ""},
        {"two strings", "\"a\"\"b\"", kReject, ""},
    });
}
