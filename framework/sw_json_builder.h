// Builds a value tree from the reader's steps. Internal.
#pragma once

#include "SwJson.h"
#include "sw_json_memory.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace sw_detail {

/// Takes values in the order of the text. What stands in an open container is kept as small records, and
/// the container is made when it closes: then its size is known, its memory is taken at once and its
/// members are laid down in their order.
class JsonBuilder {
public:
    /// `textBytes` is how much text there is at most.
    explicit JsonBuilder(std::size_t textBytes);

    /// The name of the next value, which goes into an object. The bytes have to stay until it closes.
    void name(std::string_view name) { name_ = name; }
    /// A copy of bytes that would not stay, for `name` and `addString`.
    std::string_view keep(std::string_view bytes) { return kept_.emplace_back(bytes); }

    void addNull() { record_(SwJsonValue::Null); }
    void addBool(bool value) { record_(SwJsonValue::Bool).whole = value ? 1 : 0; }
    void addInt(std::int64_t value) { record_(SwJsonValue::Int).whole = value; }
    void addDouble(double value) { record_(SwJsonValue::Double).real = value; }
    /// The bytes have to stay like those of a name.
    void addString(std::string_view text) { record_(SwJsonValue::String).text = text; }

    void openObject() { open_(true); }
    void openArray() { open_(false); }
    void close();
    bool isOpen() const { return !levels_.empty(); }
    bool isInObject() const { return levels_.back().isObject; }

    /// The one value that was added; everything that was opened has to be closed.
    SwJsonValue takeRoot();

private:
    /// A value in waiting. A container is one of the finished ones and `whole` its place there.
    struct Record {
        Record(std::string_view valueName, SwJsonValue::Type valueType) : name(valueName), type(valueType) {}
        std::string_view name;
        std::string_view text;
        union {
            std::int64_t whole = 0;
            double real;
        };
        SwJsonValue::Type type;
    };
    /// An open container: its own name and where its values begin.
    struct Level {
        std::string_view name;
        std::size_t firstRecord = 0;
        std::size_t firstFinished = 0;
        bool isObject = false;
    };
    /// A member to be sorted: the first bytes of its name as a number, and which record it is.
    struct Rank {
        std::uint64_t prefix = 0;
        std::size_t record = 0;
    };

    Record& record_(SwJsonValue::Type type) { return records_.emplace_back(name_, type); }
    void open_(bool isObject);
    SwJsonValue makeObject_(std::size_t firstRecord);
    SwJsonValue makeArray_(std::size_t firstRecord);
    void rankMembers_(std::size_t firstRecord);
    bool ranksBefore_(Rank const& a, Rank const& b) const;
    void fill_(SwJsonValue& slot, Record const& record);

    JsonArena* arena_() { return isLarge_ ? &chunks_ : nullptr; }

    bool isLarge_;
    JsonArena chunks_;
    std::string_view name_;
    std::vector<Record> records_;
    std::vector<Level> levels_;
    std::vector<SwJsonValue> finished_;  ///< containers whose parent is open, in the order of the text
    std::vector<Rank> ranks_;
    std::deque<std::string> kept_;
};

}  // namespace sw_detail
