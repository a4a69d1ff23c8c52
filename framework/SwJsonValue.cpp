// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// The JSON value and its short text form. The reader fills trees of such values, the writer walks them,
// configuration and payload live in them. What goes through a whole tree stands in SwJsonTree.cpp.
#include "SwJsonValue.h"

#include "SwJsonArray.h"
#include "SwJsonObject.h"
#include "sw_fixed_number.h"
#include "sw_json_tree.h"

SwJsonValue::SwJsonValue(SwJsonObject object)
    : type_(Object)
    , object_(std::make_shared<SwJsonObject>(std::move(object)))
{
}
SwJsonValue::SwJsonValue(SwJsonArray array) : type_(Array), array_(std::make_shared<SwJsonArray>(std::move(array))) {}
SwJsonValue::SwJsonValue(std::shared_ptr<SwJsonObject> object) noexcept : type_(Object), object_(std::move(object)) {}
SwJsonValue::SwJsonValue(std::shared_ptr<SwJsonArray> array) noexcept : type_(Array), array_(std::move(array)) {}

void SwJsonValue::copyContainer_(SwJsonValue const& other)
{
    SwJsonTree::copyContainers(other, *this);
}

void SwJsonValue::releaseContainer_() noexcept
{
    SwJsonTree::release(*this);
}

std::string SwJsonValue::toString() const
{
    switch (type_) {
    case String:
        return string_;
    case Bool:
        return bool_ ? "true" : "false";
    case Int:
        return std::to_string(int_);
    case Double: {
        std::string text;
        sw_detail::appendFixed(text, double_, 6);
        return text;
    }
    case Null:
        return "null";
    case Object:
    case Array:
        break;
    }
    return "{}";
}

SwJsonObject const& SwJsonValue::toObject() const noexcept
{
    static SwJsonObject const empty;
    return object_ ? *object_ : empty;
}
SwJsonArray const& SwJsonValue::toArray() const noexcept
{
    static SwJsonArray const empty;
    return array_ ? *array_ : empty;
}
