// The inside of the value tree for the units that build and walk it: reader, writer, copies. Internal.
#pragma once

#include "SwJson.h"

class SwJsonTree {
public:
    // Each setter expects a Null value, as a fresh slot is.
    static void setBool(SwJsonValue& slot, bool value) noexcept
    {
        slot.type_ = SwJsonValue::Bool;
        slot.bool_ = value;
    }
    static void setInt(SwJsonValue& slot, std::int64_t value) noexcept
    {
        slot.type_ = SwJsonValue::Int;
        slot.int_ = value;
    }
    static void setDouble(SwJsonValue& slot, double value) noexcept
    {
        slot.type_ = SwJsonValue::Double;
        slot.double_ = value;
    }
    static void setString(SwJsonValue& slot, std::string_view text)
    {
        slot.string_.assign(text);
        slot.type_ = SwJsonValue::String;
    }
    static SwJsonObject& setObject(SwJsonValue& slot)
    {
        slot.object_ = std::make_shared<SwJsonObject>();
        slot.type_ = SwJsonValue::Object;
        return *slot.object_;
    }
    static SwJsonArray& setArray(SwJsonValue& slot)
    {
        slot.array_ = std::make_shared<SwJsonArray>();
        slot.type_ = SwJsonValue::Array;
        return *slot.array_;
    }

    /// The Null value to fill for `key`; what an earlier member of that name held is dropped.
    static SwJsonValue& memberSlot(SwJsonObject& object, std::string_view key)
    {
        SwJsonValue& slot = object[key];
        if (!slot.isNull()) {
            slot = SwJsonValue();
        }
        return slot;
    }
    /// A new Null element at the end.
    static SwJsonValue& elementSlot(SwJsonArray& array) { return array.items_.emplace_back(); }
};
