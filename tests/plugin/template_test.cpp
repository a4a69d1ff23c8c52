// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Template expansion: which bytes are names, which are copied, and that every placeholder is one lookup.
#include "stanag_overlay_format.h"

#include <gtest/gtest.h>

#include <string>

namespace stanag_overlay {
namespace {

struct Row {
    char const* name;
    std::string tmpl;
    std::string expected;
};

// Each of these keys has its own name in brackets as value; every other key is missing.
SwJsonObject const& root()
{
    static SwJsonObject const kRoot = [] {
        SwJsonObject object;
        for (char const* key :
             {"a",     "b",    "ab",   "lat",        "lon",  "a%b",          "lat%lon", "a.b-c",
              "A",     "a b",  " a ",  "Sensor Lat", "{a",   "x%{y",         "a\nb",    "\xC3\xA9t\xC3\xA9",
              "a\x01", "a\vb", "a\fb", "%",          "a+*=", "?@!#$&^`|~_9", "a{b"}) {
            object[key] = "<" + std::string(key) + ">";
        }
        return object;
    }();
    return kRoot;
}

std::string expand(std::string const& tmpl, SwJsonObject const* object = &root(),
                   std::vector<std::string> const& availableKeys = {})
{
    OverlayCfg cfg;
    OverlayRuntime runtime;
    return OverlayTextFormatter().expandTemplate(tmpl, object, cfg, runtime, 1, availableKeys);
}

void check(std::vector<Row> const& rows)
{
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(expand(row.tmpl), row.expected) << row.tmpl;
    }
}

TEST(Template, Literals)
{
    check({
        {"plain text", "Alt: 120 m", "Alt: 120 m"},
        {"blank", " ", " "},
        {"line feeds stay", "a\nb\n", "a\nb\n"},
        {"braces without percent", "{a} }{", "{a} }{"},
        {"zero byte", std::string("x\0y", 3), std::string("x\0y", 3)},
        {"escaped percent", "100%%", "100%"},
        {"percent at the end", "100%", "100%"},
        {"percent alone", "%", "%"},
        {"two percents", "%%", "%"},
        {"three percents", "%%%", "%%"},
        {"four percents", "%%%%", "%%"},
        {"percent before a blank", "a % b", "a % b"},
        {"percent before a colon", "%:x", "%:x"},
        {"escaped percent before a name", "%%a", "%a"},
        {"escaped percent and a placeholder", "%%%a", "%<a>"},
    });
}

TEST(Template, BareNames)
{
    check({
        {"between blanks", "Lat: %lat deg", "Lat: <lat> deg"},
        {"at the end", "%lat", "<lat>"},
        {"missing", "%alt m", "-- m"},
        {"case counts", "%A%", "--"},
        {"case counts, the other key", "%A %a", "<A> <a>"},
        {"in brackets", "(%lat,%lon)", "(<lat>,<lon>)"},
        {"twice", "%a %a", "<a> <a>"},
        {"percent belongs to a name", "%a%b", "<a%b>"},
        {"percent between two names", "%lat%lon", "<lat%lon>"},
        {"percent at the end of a name", "%lat%", "--"},
        {"escaped percent in a name is two percents of it", "%a%%b", "--"},
        {"dots and dashes", "%a.b-c", "<a.b-c>"},
        {"UTF-8", "%\xC3\xA9t\xC3\xA9!", "--"},
        {"UTF-8 before a blank", "%\xC3\xA9t\xC3\xA9 !", "<\xC3\xA9t\xC3\xA9> !"},
        {"other control bytes", "%a\x01", "<a\x01>"},
        {"vertical tab and form feed", "%a\vb %a\fb", "<a\vb> <a\fb>"},
        {"operators", "%a+*=", "<a+*=>"},
        {"other punctuation", "%?@!#$&^`|~_9", "<?@!#$&^`|~_9>"},
        {"directly before a braced name", "%a{b}", "<a>{b}"},
        {"a percent inside does not open a brace", "%a%{b}", "--{b}"},
    });
}

TEST(Template, BytesThatEndABareName)
{
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        std::string const text(1, static_cast<char>(byte));
        bool const ends = std::string("\t\n\r \"'(),/:;<>[\\]{}").find(text) != std::string::npos && byte != 0;
        SwJsonObject object{{"n", "<n>"}};
        object["n" + text + "x"] = "<long>";
        EXPECT_EQ(expand("%n" + text + "x", &object), ends ? "<n>" + text + "x" : "<long>");
        // After the percent itself such a byte leaves the percent as text.
        if (ends && byte != '{') {
            EXPECT_EQ(expand("%" + text + "x", &object), "%" + text + "x");
        }
    }
}

TEST(Template, BracedNames)
{
    check({
        {"with a blank", "%{Sensor Lat}", "<Sensor Lat>"},
        {"no trimming", "%{ a }%{a}", "< a ><a>"},
        {"empty name", "%{}", "--"},
        {"text around", "x%{a}y", "x<a>y"},
        {"two in a row", "%{a}%{b}", "<a><b>"},
        {"percent inside", "%{%}", "<%>"},
        {"open brace inside", "%{{a}", "<{a>"},
        {"placeholder inside is part of the name", "%{x%{y}", "<x%{y>"},
        {"line feed inside", "%{a\nb}", "<a\nb>"},
        {"second closing brace is text", "%{a}}", "<a>}"},
        {"missing", "%{c}", "--"},
        {"before a percent", "%{a}%", "<a>%"},
        {"before an escaped percent", "%{a}%%", "<a>%"},
    });
}

TEST(Template, UnterminatedBraces)
{
    check({
        {"brace alone", "%{", "%{"},
        {"brace at the end", "x%{", "x%{"},
        {"name without end", "%{abc", "%{abc"},
        {"nothing after it is expanded", "x %{a %b", "x %{a %b"},
        {"not even escapes", "%{a %% %b", "%{a %% %b"},
        {"what stands before is", "%a %{b", "<a> %{b"},
        {"the second brace", "%{a}%{b", "<a>%{b"},
    });
}

TEST(Template, FormattedValues)
{
    OverlayTextFormatter const formatter;
    OverlayCfg cfg;
    cfg.formats["alt"].decimals = 0;
    OverlayRuntime runtime;
    SwJsonObject const object{{"alt", 119.7}};
    EXPECT_EQ(formatter.expandTemplate("Alt: %alt m", &object, cfg, runtime, 1, {}), "Alt: 120 m");
}

TEST(Template, ValuesAreNotExpandedAgain)
{
    SwJsonObject const object{{"a", "%b %{b} %%"}, {"b", "x"}};
    EXPECT_EQ(expand("%a", &object), "%b %{b} %%");
}

TEST(Template, WithoutARootEveryNameIsMissing)
{
    EXPECT_EQ(expand("%a %{b} %%", nullptr), "-- -- %");
}

TEST(Template, EmptyTemplateListsTheKeys)
{
    SwJsonObject const object{{"a", 1}, {"b", 2.5}};
    SwJsonObject const empty;
    EXPECT_EQ(expand("", &object, {"a", "b"}), "a: 1\nb: 2.500000");
    EXPECT_EQ(expand("", &object, {"b", "a"}), "b: 2.500000\na: 1") << "in the order of the list";
    EXPECT_EQ(expand("", &object, {"a"}), "a: 1");
    EXPECT_EQ(expand("", &object, {"c", "a"}), "c: --\na: 1") << "absent keys are listed too";
    EXPECT_EQ(expand("", &object, {"a", "a"}), "a: 1\na: 1");
    EXPECT_EQ(expand("", &object, {""}), ": --");
    EXPECT_EQ(expand("", &object, {}), "");
    EXPECT_EQ(expand("", &empty, {"a", "b"}), "");
    EXPECT_EQ(expand("", nullptr, {"a", "b"}), "");
}

TEST(Template, EveryPlaceholderIsOneLookupFromLeftToRight)
{
    OverlayTextFormatter const formatter;
    OverlayCfg cfg;
    cfg.formats["a"].holdLastNs = 10;
    cfg.formats["b"].holdLastNs = 10;
    OverlayRuntime runtime;
    SwJsonObject const object{{"a", 1}, {"b", 2}};
    EXPECT_EQ(formatter.expandTemplate("x", &object, cfg, runtime, 5, {"a"}), "x");
    EXPECT_TRUE(runtime.heldValues.empty());
    EXPECT_EQ(formatter.expandTemplate("%{b} %%a", &object, cfg, runtime, 6, {"a"}), "2 %a");
    EXPECT_EQ(runtime.heldValues.size(), 1U);
    EXPECT_EQ(runtime.heldValues.at("b").timeNs, 6U);
    EXPECT_EQ(formatter.expandTemplate("", &object, cfg, runtime, 7, {"a", "b"}), "a: 1\nb: 2");
    EXPECT_EQ(runtime.heldValues.size(), 2U);
    EXPECT_EQ(runtime.heldValues.at("b").timeNs, 7U);
}

TEST(Template, LongTemplates)
{
    std::string tmpl;
    std::string expected;
    for (int i = 0; i < 20000; ++i) {
        tmpl += "%a %{lat}%%\n";
        expected += "<a> <lat>%\n";
    }
    EXPECT_EQ(expand(tmpl), expected);
}

}  // namespace
}  // namespace stanag_overlay
