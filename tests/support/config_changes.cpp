// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The text form of configuration records that the parser tests compare.
#include "config_changes.h"

#include <cstdio>
#include <map>

namespace stanag_overlay {

namespace {

std::string valueText(bool value)
{
    return value ? "true" : "false";
}

std::string valueText(std::string const& value)
{
    return '"' + value + '"';
}

std::string valueText(std::int32_t value)
{
    return std::to_string(value);
}

std::string valueText(std::uint8_t value)
{
    return std::to_string(value);
}

std::string valueText(std::uint64_t value)
{
    return std::to_string(value);
}

std::string valueText(double value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

std::string valueText(TimestampUnit value)
{
    return std::to_string(static_cast<int>(value));
}

std::string valueText(ConditionOp value)
{
    return std::to_string(static_cast<int>(value));
}

std::string valueText(std::vector<std::string> const& value)
{
    std::string text = "[";
    for (std::string const& item : value) {
        text += (text.size() > 1 ? "," : "") + valueText(item);
    }
    return text + "]";
}

class ChangeList {
public:
    template <typename T>
    void add(char const* name, T const& value, T const& usual)
    {
        if (!(value == usual)) {
            addText(std::string(name) + "=" + valueText(value));
        }
    }
    void addText(std::string const& text) { text_ += (text_.empty() ? "" : " ") + text; }
    std::string const& text() const { return text_; }

private:
    std::string text_;
};

std::string changes(FormatSpec const& spec)
{
    FormatSpec const usual;
    ChangeList list;
    list.add("date", spec.date, usual.date);
    list.add("decimals", spec.decimals, usual.decimals);
    list.add("trimTrailingZeros", spec.trimTrailingZeros, usual.trimTrailingZeros);
    list.add("dateFormat", spec.dateFormat, usual.dateFormat);
    list.add("timestampUnit", spec.timestampUnit, usual.timestampUnit);
    list.add("localTime", spec.localTime, usual.localTime);
    list.add("missingPlaceholder", spec.missingPlaceholder, usual.missingPlaceholder);
    list.add("hasMin", spec.hasMin, usual.hasMin);
    list.add("hasMax", spec.hasMax, usual.hasMax);
    list.add("minValue", spec.minValue, usual.minValue);
    list.add("maxValue", spec.maxValue, usual.maxValue);
    list.add("invalidValues", spec.invalidValues, usual.invalidValues);
    list.add("holdLastNs", spec.holdLastNs, usual.holdLastNs);
    list.add("refreshEveryNs", spec.refreshEveryNs, usual.refreshEveryNs);
    return list.text();
}

std::string changes(ConditionCfg const& condition)
{
    ConditionCfg const usual;
    ChangeList list;
    list.add("enabled", condition.enabled, usual.enabled);
    list.add("key", condition.key, usual.key);
    list.add("op", condition.op, usual.op);
    list.add("value", condition.value, usual.value);
    list.add("hasBitmask", condition.hasBitmask, usual.hasBitmask);
    list.add("bitmask", condition.bitmask, usual.bitmask);
    list.add("showAfterNs", condition.showAfterNs, usual.showAfterNs);
    list.add("keepAfterNs", condition.keepAfterNs, usual.keepAfterNs);
    return list.text();
}

}  // namespace

std::string changes(OverlayCfg const& record)
{
    OverlayCfg const usual;
    ChangeList list;
    list.add("thickness", record.thickness, usual.thickness);
    list.add("textR", record.textR, usual.textR);
    list.add("textG", record.textG, usual.textG);
    list.add("textB", record.textB, usual.textB);
    list.add("textSize", record.textSize, usual.textSize);
    list.add("posX", record.posX, usual.posX);
    list.add("posY", record.posY, usual.posY);
    list.add("bgR", record.bgR, usual.bgR);
    list.add("bgG", record.bgG, usual.bgG);
    list.add("bgB", record.bgB, usual.bgB);
    list.add("bgAlpha", record.bgAlpha, usual.bgAlpha);
    list.add("formatString", record.formatString, usual.formatString);
    list.add("decimals", record.decimals, usual.decimals);
    list.add("trimTrailingZeros", record.trimTrailingZeros, usual.trimTrailingZeros);
    list.add("missingPlaceholder", record.missingPlaceholder, usual.missingPlaceholder);
    std::string const condition = changes(record.condition);
    if (!condition.empty()) {
        list.addText("condition{" + condition + "}");
    }
    for (auto const& [key, spec] : std::map<std::string, FormatSpec>(record.formats.begin(), record.formats.end())) {
        list.addText("formats[" + key + "]{" + changes(spec) + "}");
    }
    list.add("updateEveryNFrames", record.updateEveryNFrames, usual.updateEveryNFrames);
    return list.text();
}

}  // namespace stanag_overlay
