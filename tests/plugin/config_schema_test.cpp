// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The published schema: its bytes, its list of keys, and the places where it and the parser differ.
//
// After a wanted change of the text: OVERLAY_UPDATE_GOLDEN=1 <build>/bin/config_schema_test writes the
// golden file anew.
#include "stanag_overlay_config.h"

#include "config_changes.h"
#include "file_bytes.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdlib>
#include <random>
#include <string>

namespace stanag_overlay {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kHeadLength = 368;
constexpr std::size_t kTailLength = 5549;
char const* const kGoldenPath = OVERLAY_SOURCE_DIR "/tests/golden/config_schema.json";

std::string build(std::vector<std::string> const& keys)
{
    return ConfigSchemaBuilder().build(keys);
}

// The list of keys alone; the fixed text around it is checked on the way.
std::string keyList(std::vector<std::string> const& keys)
{
    std::string const empty = build({});
    std::string const text = build(keys);
    EXPECT_EQ(text.substr(0, kHeadLength), empty.substr(0, kHeadLength));
    EXPECT_EQ(text.substr(text.size() - kTailLength), empty.substr(empty.size() - kTailLength));
    return text.substr(kHeadLength, text.size() - kHeadLength - kTailLength);
}

Json const& overlayProperties(Json const& schema)
{
    return schema.at("properties").at("overlay").at("items").at("properties");
}

Json const& formatProperties(Json const& schema)
{
    return overlayProperties(schema).at("formats").at("additionalProperties").at("properties");
}

std::string names(Json const& object)
{
    std::string text;
    for (auto const& member : object.items()) {
        text += (text.empty() ? "" : " ") + member.key();
    }
    return text;
}

TEST(ConfigSchema, IsTheGoldenText)
{
    std::string const text = build({});
    if (std::getenv("OVERLAY_UPDATE_GOLDEN") != nullptr) {
        file_test::writeFile(kGoldenPath, text);
    }
    EXPECT_EQ(text, file_test::readFile(kGoldenPath)) << kGoldenPath;
}

TEST(ConfigSchema, HeadAndTailHaveTheirLengths)
{
    std::string const text = build({});
    EXPECT_EQ(text.size(), kHeadLength + 2 + kTailLength);
    EXPECT_EQ(text.substr(kHeadLength - 11, 15), "\"default\": []\n ");
    EXPECT_EQ(text.back(), '}');
}

TEST(ConfigSchema, KeyList)
{
    struct Row {
        char const* name;
        std::vector<std::string> keys;
        std::string expected;
    };
    std::vector<Row> const rows = {
        {"no keys", {}, "[]"},
        {"one key", {"alt"}, R"(["alt"])"},
        {"several keys in the given order", {"b", "a", "B", "a"}, R"(["b","a","B","a"])"},
        {"empty key", {"", ""}, R"(["",""])"},
        {"quote", {"a\"b"}, R"(["a\"b"])"},
        {"backslash", {"a\\b"}, R"(["a\\b"])"},
        {"backspace", {"a\bb"}, R"(["a\bb"])"},
        {"form feed", {"a\fb"}, R"(["a\fb"])"},
        {"line feed", {"a\nb"}, R"(["a\nb"])"},
        {"carriage return", {"a\rb"}, R"(["a\rb"])"},
        {"tab", {"a\tb"}, R"(["a\tb"])"},
        {"byte 0x01 stays raw", {"a\x01z"}, "[\"a\x01z\"]"},
        {"vertical tab stays raw", {"\v"}, "[\"\v\"]"},
        {"byte 0x7F and bytes above", {"\x7F\xC3\xA9"}, "[\"\x7F\xC3\xA9\"]"},
        {"slash", {"a/b"}, R"(["a/b"])"},
        {"zero byte", {std::string("a\0b", 3)}, std::string("[\"a\0b\"]", 7)},
        {"list punctuation inside a key", {"],[", ","}, R"(["],[",","])"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(keyList(row.keys), row.expected);
    }
}

TEST(ConfigSchema, IsJsonForAnyKeysWithoutOtherControlBytes)
{
    std::mt19937 random(7);
    std::string const bytes = "\"\\\b\f\n\r\t/ ,[]{}:%azAZ09_.-\x7F";
    for (int round = 0; round < 200; ++round) {
        std::vector<std::string> keys(random() % 5);
        for (std::string& key : keys) {
            for (std::size_t length = random() % 9; length > 0; --length) {
                key += bytes[random() % bytes.size()];
            }
        }
        Json const schema = Json::parse(build(keys));
        EXPECT_EQ(schema.at("properties").at("availableKeys").at("default"), Json(keys));
    }
}

TEST(ConfigSchema, Root)
{
    Json const schema = Json::parse(build({}));
    EXPECT_EQ(names(schema), "$schema title type properties additionalProperties");
    EXPECT_EQ(schema.at("$schema"), "http://json-schema.org/draft-07/schema#");
    EXPECT_EQ(schema.at("title"), "StanagOverlayPlugin configuration");
    EXPECT_EQ(schema.at("type"), "object");
    EXPECT_EQ(schema.at("additionalProperties"), false);
    EXPECT_EQ(names(schema.at("properties")), "availableKeys overlay");
    EXPECT_EQ(schema.at("properties").at("availableKeys").dump(),
              R"({"type":"array","items":{"type":"string"},"readOnly":true,"description":"Cles actuellement )"
              R"(disponibles, derivees du payload STANAG vu a l'execution.","default":[]})");
    Json const& overlay = schema.at("properties").at("overlay");
    EXPECT_EQ(names(overlay), "type description items default");
    EXPECT_EQ(overlay.at("type"), "array");
    EXPECT_EQ(overlay.at("description"), "Liste d'overlays a dessiner.");
    EXPECT_EQ(overlay.at("default"), Json::array());
    EXPECT_EQ(names(overlay.at("items")), "type additionalProperties properties");
    EXPECT_EQ(overlay.at("items").at("type"), "object");
    EXPECT_EQ(overlay.at("items").at("additionalProperties"), false);
}

struct PropertyRow {
    char const* name;
    char const* expected;  ///< the property's schema, compact
};

void checkProperties(Json const& properties, std::vector<PropertyRow> const& rows)
{
    std::string order;
    for (PropertyRow const& row : rows) {
        SCOPED_TRACE(row.name);
        order += (order.empty() ? "" : " ") + std::string(row.name);
        ASSERT_TRUE(properties.contains(row.name));
        EXPECT_EQ(properties.at(row.name).dump(), row.expected);
    }
    EXPECT_EQ(names(properties), order);
}

TEST(ConfigSchema, BlockProperties)
{
    Json schema = Json::parse(build({}));
    Json properties = overlayProperties(schema);
    // The two large objects have tests of their own.
    properties.at("condition").at("properties") = Json::object();
    properties.at("formats").at("additionalProperties") = Json::object();
    checkProperties(
        properties,
        {
            {"formatString", R"({"type":"string","description":"Gabarit texte. Placeholders : %Nom ou %{Nom Complet}. )"
                             R"(Echappement du pourcent avec %% .","x-ui-widget":"textarea"})"},
            {"decimals", R"({"type":"integer","minimum":0,"maximum":12,"default":-1,"description":"Nombre de )"
                         R"(decimales global pour les nombres de cet overlay."})"},
            {"trimTrailingZeros", R"({"type":"boolean","default":true,"description":"Supprime les zeros finaux des )"
                                  R"(decimales pour cet overlay."})"},
            {"missingPlaceholder", R"({"type":"string","default":"--","description":"Texte affiche quand une cle du )"
                                   R"(gabarit n'est pas presente dans le payload STANAG."})"},
            {"condition", R"({"type":"object","additionalProperties":false,"description":"Condition optionnelle )"
                          R"(d'affichage du bloc. showAfterMs retarde l'affichage tant que la condition n'est pas )"
                          R"(stable; keepAfterMs garde le dernier texte apres perte de condition.","properties":{}})"},
            {"formats", R"({"type":"object","additionalProperties":{},"description":"Overrides par cle."})"},
            {"textColor", R"({"type":"string","pattern":"^#([0-9A-Fa-f]{6})$","default":"#ffffff"})"},
            {"textSize", R"({"type":"integer","minimum":6,"maximum":256,"default":12})"},
            {"thickness", R"({"type":"integer","minimum":1,"maximum":16,"default":1})"},
            {"position", R"({"type":"object","additionalProperties":false,"properties":{)"
                         R"("x":{"type":"number","minimum":0.0,"maximum":1.0,"default":0.005},)"
                         R"("y":{"type":"number","minimum":0.0,"maximum":1.0,"default":0.009}}})"},
            {"bgColor", R"({"type":"string","pattern":"^#([0-9A-Fa-f]{6})$","default":"#000000"})"},
            {"bgAlpha", R"({"type":"number","minimum":0.0,"maximum":1.0,"default":0.5})"},
            {"updateEveryNFrames", R"({"type":"integer","minimum":1,"maximum":120,"default":1,"description":"Met a )"
                                   R"(jour le texte tous les N frames."})"},
        });
}

TEST(ConfigSchema, ConditionProperties)
{
    Json const schema = Json::parse(build({}));
    checkProperties(
        overlayProperties(schema).at("condition").at("properties"),
        {
            {"key", R"({"type":"string"})"},
            {"operator", R"({"type":"string","enum":["exists","equals","notEquals","greaterThan","greaterOrEqual",)"
                         R"("lessThan","lessOrEqual"],"default":"equals"})"},
            {"value", R"({"type":["string","number","boolean"]})"},
            {"bitmask", R"({"type":["integer","string"],"description":"Masque bit a appliquer a la valeur numerique )"
                        R"(avant comparaison. Ex: 16 ou \"0x10\"."})"},
            {"equals", R"({"type":["string","number","boolean"],"description":"Raccourci pour operator=equals."})"},
            {"notEquals",
             R"({"type":["string","number","boolean"],"description":"Raccourci pour operator=notEquals."})"},
            {"showAfterMs", R"({"type":"integer","minimum":0,"maximum":600000,"default":0})"},
            {"keepAfterMs", R"({"type":"integer","minimum":0,"maximum":600000,"default":0})"},
        });
}

TEST(ConfigSchema, FormatProperties)
{
    Json const schema = Json::parse(build({}));
    Json const& format = overlayProperties(schema).at("formats").at("additionalProperties");
    EXPECT_EQ(names(format), "type additionalProperties properties");
    EXPECT_EQ(format.at("type"), "object");
    EXPECT_EQ(format.at("additionalProperties"), false);
    checkProperties(
        formatProperties(schema),
        {
            {"date", R"({"type":"boolean","default":false})"},
            {"decimals", R"({"type":"integer","minimum":0,"maximum":12})"},
            {"trimTrailingZeros", R"({"type":"boolean","default":true})"},
            {"dateFormat", R"({"type":"string","default":"%H:%M:%S %d-%m-%Y"})"},
            {"timestampUnit", R"({"type":"string","enum":["s","ms","us"],"default":"us"})"},
            {"timezone", R"({"type":"string","enum":["utc","local"],"default":"utc"})"},
            {"minValue", R"({"type":"number","description":"Valeur minimum acceptee pour l'affichage."})"},
            {"maxValue", R"({"type":"number","description":"Valeur maximum acceptee pour l'affichage."})"},
            {"invalidValues", R"({"type":"array","items":{"type":["string","number","boolean"]},"description":)"
                              R"("Valeurs a traiter comme indisponibles et a remplacer par missingPlaceholder. )"
                              R"(Ex: [0]."})"},
            {"holdLastMs", R"({"type":"integer","minimum":0,"maximum":600000,"default":0,"description":"Garde la )"
                           R"(derniere valeur valide de cette cle pendant N ms si elle disparait du payload."})"},
            {"refreshEveryMs", R"({"type":"integer","minimum":0,"maximum":600000,"default":0,"description":"Limite )"
                               R"(la cadence de remplacement de la valeur affichee pour cette cle. Ex: 1000 garde )"
                               R"(chaque valeur affichee au moins 1 seconde."})"},
            {"missingPlaceholder", R"({"type":"string","description":"Texte affiche pour cette cle si elle n'est )"
                                   R"(pas presente.","default":"--"})"},
        });
}

OverlayCfg parseBlock(std::string const& item)
{
    auto records = OverlayConfigParser().parse("{\"overlay\":[" + item + "]}");
    EXPECT_EQ(records.size(), 1U) << item;
    return records.empty() ? OverlayCfg() : records.front();
}

// The schema describes the host's form, the parser what is drawn; both sides stay as they are.
TEST(ConfigSchema, WhereItDiffersFromTheParser)
{
    Json const schema = Json::parse(build({}));
    Json const& block = overlayProperties(schema);
    Json const& format = formatProperties(schema);

    EXPECT_EQ(block.at("decimals").at("minimum"), 0);
    EXPECT_EQ(block.at("decimals").at("default"), -1);
    EXPECT_EQ(parseBlock("{}").decimals, -1);
    EXPECT_EQ(parseBlock(R"({"decimals":-1})").decimals, -1);
    EXPECT_EQ(parseBlock(R"({"decimals":13})").decimals, 12);

    EXPECT_EQ(block.at("textSize").at("default"), 12);
    EXPECT_EQ(parseBlock("{}").textSize, 16);

    EXPECT_EQ(format.at("decimals").at("minimum"), 0);
    EXPECT_EQ(format.at("decimals").at("maximum"), 12);
    EXPECT_EQ(parseBlock(R"({"formats":{"k":{"decimals":20}}})").formats.at("k").decimals, 20);
    EXPECT_EQ(parseBlock(R"({"formats":{"k":{"decimals":-20}}})").formats.at("k").decimals, -20);

    EXPECT_EQ(format.at("trimTrailingZeros").at("default"), true);
    EXPECT_FALSE(parseBlock(R"({"formats":{"k":{}}})").formats.at("k").trimTrailingZeros);

    EXPECT_EQ(format.at("timestampUnit").at("default"), "us");
    EXPECT_EQ(parseBlock(R"({"formats":{"k":{}}})").formats.at("k").timestampUnit, TimestampUnit::Milliseconds);

    Json const& op = block.at("condition").at("properties").at("operator");
    EXPECT_EQ(op.at("enum").size(), 7U);
    EXPECT_EQ(op.at("default"), "equals");
    EXPECT_EQ(parseBlock(R"({"condition":{"key":"k","operator":"GREATERTHAN","value":1}})").condition.op,
              ConditionOp::GreaterThan);
    EXPECT_EQ(parseBlock(R"({"condition":{"key":"k","operator":"gt","value":1}})").condition.op,
              ConditionOp::GreaterThan);
    EXPECT_EQ(parseBlock(R"({"condition":{"key":"k"}})").condition.op, ConditionOp::Exists);
    EXPECT_EQ(parseBlock(R"({"condition":{"key":"k","value":1}})").condition.op, ConditionOp::Equals);

    EXPECT_EQ(block.at("textColor").at("pattern"), "^#([0-9A-Fa-f]{6})$");
    EXPECT_EQ(block.at("bgColor").at("pattern"), "^#([0-9A-Fa-f]{6})$");
    EXPECT_EQ(changes(parseBlock(R"({"textColor":"#12zzzz"})")), "textR=0 textG=0 textB=18");
}

// Apart from those places a form filled with the schema's defaults changes nothing.
TEST(ConfigSchema, OtherDefaultsAreTheParsers)
{
    Json const schema = Json::parse(build({}));
    Json item = Json::object();
    for (auto const& property : overlayProperties(schema).items()) {
        if (property.value().contains("default") && property.key() != "textSize") {
            item[property.key()] = property.value().at("default");
        }
    }
    for (auto const& axis : overlayProperties(schema).at("position").at("properties").items()) {
        item["position"][axis.key()] = axis.value().at("default");
    }
    for (auto const& property : formatProperties(schema).items()) {
        if (property.value().contains("default") && property.key() != "trimTrailingZeros" &&
            property.key() != "timestampUnit") {
            item["formats"]["k"][property.key()] = property.value().at("default");
        }
    }
    EXPECT_EQ(changes(parseBlock(item.dump())), "formats[k]{}");
}

}  // namespace
}  // namespace stanag_overlay
