// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The published JSON Schema of the configuration: a fixed text around the list of keys seen so far. Hosts
// build their editing form from it; nothing in the plugin checks a configuration against it.
#include "stanag_overlay_schema.h"

#include <string_view>

namespace stanag_overlay {

namespace {

constexpr std::string_view kHead = R"json({
  "$schema": "http://json-schema.org/draft-07/schema#",
  "title": "StanagOverlayPlugin configuration",
  "type": "object",
  "properties": {
    "availableKeys": {
      "type": "array",
      "items": { "type": "string" },
      "readOnly": true,
      "description": "Cles actuellement disponibles, derivees du payload STANAG vu a l'execution.",
      "default": )json";

constexpr std::string_view kTail = R"json(
    },
    "overlay": {
      "type": "array",
      "description": "Liste d'overlays a dessiner.",
      "items": {
        "type": "object",
        "additionalProperties": false,
        "properties": {
          "formatString": {
            "type": "string",
            "description": "Gabarit texte. Placeholders : %Nom ou %{Nom Complet}. Echappement du pourcent avec %% .",
            "x-ui-widget": "textarea"
          },
          "decimals": {
            "type": "integer",
            "minimum": 0,
            "maximum": 12,
            "default": -1,
            "description": "Nombre de decimales global pour les nombres de cet overlay."
          },
          "trimTrailingZeros": {
            "type": "boolean",
            "default": true,
            "description": "Supprime les zeros finaux des decimales pour cet overlay."
          },
          "missingPlaceholder": {
            "type": "string",
            "default": "--",
            "description": "Texte affiche quand une cle du gabarit n'est pas presente dans le payload STANAG."
          },
          "condition": {
            "type": "object",
            "additionalProperties": false,
            "description": "Condition optionnelle d'affichage du bloc. showAfterMs retarde l'affichage tant que la condition n'est pas stable; keepAfterMs garde le dernier texte apres perte de condition.",
            "properties": {
              "key": { "type": "string" },
              "operator": { "type": "string", "enum": ["exists", "equals", "notEquals", "greaterThan", "greaterOrEqual", "lessThan", "lessOrEqual"], "default": "equals" },
              "value": { "type": ["string", "number", "boolean"] },
              "bitmask": { "type": ["integer", "string"], "description": "Masque bit a appliquer a la valeur numerique avant comparaison. Ex: 16 ou \"0x10\"." },
              "equals": { "type": ["string", "number", "boolean"], "description": "Raccourci pour operator=equals." },
              "notEquals": { "type": ["string", "number", "boolean"], "description": "Raccourci pour operator=notEquals." },
              "showAfterMs": { "type": "integer", "minimum": 0, "maximum": 600000, "default": 0 },
              "keepAfterMs": { "type": "integer", "minimum": 0, "maximum": 600000, "default": 0 }
            }
          },
          "formats": {
            "type": "object",
            "additionalProperties": {
              "type": "object",
              "additionalProperties": false,
              "properties": {
                "date": { "type": "boolean", "default": false },
                "decimals": { "type": "integer", "minimum": 0, "maximum": 12 },
                "trimTrailingZeros": { "type": "boolean", "default": true },
                "dateFormat": { "type": "string", "default": "%H:%M:%S %d-%m-%Y" },
                "timestampUnit": { "type": "string", "enum": ["s", "ms", "us"], "default": "us" },
                "timezone": { "type": "string", "enum": ["utc", "local"], "default": "utc" },
                "minValue": { "type": "number", "description": "Valeur minimum acceptee pour l'affichage." },
                "maxValue": { "type": "number", "description": "Valeur maximum acceptee pour l'affichage." },
                "invalidValues": {
                  "type": "array",
                  "items": { "type": ["string", "number", "boolean"] },
                  "description": "Valeurs a traiter comme indisponibles et a remplacer par missingPlaceholder. Ex: [0]."
                },
                "holdLastMs": {
                  "type": "integer",
                  "minimum": 0,
                  "maximum": 600000,
                  "default": 0,
                  "description": "Garde la derniere valeur valide de cette cle pendant N ms si elle disparait du payload."
                },
                "refreshEveryMs": {
                  "type": "integer",
                  "minimum": 0,
                  "maximum": 600000,
                  "default": 0,
                  "description": "Limite la cadence de remplacement de la valeur affichee pour cette cle. Ex: 1000 garde chaque valeur affichee au moins 1 seconde."
                },
                "missingPlaceholder": { "type": "string", "description": "Texte affiche pour cette cle si elle n'est pas presente.", "default": "--" }
              }
            },
            "description": "Overrides par cle."
          },
          "textColor": { "type": "string", "pattern": "^#([0-9A-Fa-f]{6})$", "default": "#ffffff" },
          "textSize": { "type": "integer", "minimum": 6, "maximum": 256, "default": 12 },
          "thickness": { "type": "integer", "minimum": 1, "maximum": 16, "default": 1 },
          "position": {
            "type": "object",
            "additionalProperties": false,
            "properties": {
              "x": { "type": "number", "minimum": 0.0, "maximum": 1.0, "default": 0.005 },
              "y": { "type": "number", "minimum": 0.0, "maximum": 1.0, "default": 0.009 }
            }
          },
          "bgColor": { "type": "string", "pattern": "^#([0-9A-Fa-f]{6})$", "default": "#000000" },
          "bgAlpha": { "type": "number", "minimum": 0.0, "maximum": 1.0, "default": 0.5 },
          "updateEveryNFrames": {
            "type": "integer",
            "minimum": 1,
            "maximum": 120,
            "default": 1,
            "description": "Met a jour le texte tous les N frames."
          }
        }
      },
      "default": []
    }
  },
  "additionalProperties": false
})json";

// Hosts compare the text; a change of a byte is a change of the interface.
static_assert(kHead.size() == 368);
static_assert(kTail.size() == 5549);

// Only these seven are escaped; other control bytes stay as they are.
void appendEscaped(std::string& out, std::string_view key)
{
    constexpr std::string_view kSpecial = "\"\\\b\f\n\r\t";
    constexpr std::string_view kLetters = "\"\\bfnrt";
    for (char const byte : key) {
        std::size_t const index = kSpecial.find(byte);
        if (index == std::string_view::npos) {
            out += byte;
        } else {
            out += '\\';
            out += kLetters[index];
        }
    }
}

}  // namespace

std::string ConfigSchemaBuilder::build(std::vector<std::string> const& keys) const
{
    std::string schema(kHead);
    schema += '[';
    char const* separator = "";
    for (std::string const& key : keys) {
        schema += separator;
        schema += '"';
        appendEscaped(schema, key);
        schema += '"';
        separator = ",";
    }
    schema += ']';
    schema += kTail;
    return schema;
}

}  // namespace stanag_overlay
