// The JSON value tree: storage, deep copies, destruction and comparison without recursion, the short
// text form. The reader fills such trees, the writer walks them, configuration and payload live in them.
#include "SwJson.h"

#include <charconv>

namespace {

std::string fixedText(double number)
{
    // The largest double has 309 digits before the point; six after it, the point and a sign follow.
    char buffer[320];
    std::to_chars_result const end = std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, 6);
    return std::string(buffer, end.ptr);
}

}  // namespace

SwJsonValue::SwJsonValue(SwJsonObject object)
    : type_(Object)
    , object_(std::make_shared<SwJsonObject>(std::move(object)))
{
}
SwJsonValue::SwJsonValue(SwJsonArray array) : type_(Array), array_(std::make_shared<SwJsonArray>(std::move(array))) {}
SwJsonValue::SwJsonValue(std::shared_ptr<SwJsonObject> object) noexcept : type_(Object), object_(std::move(object)) {}
SwJsonValue::SwJsonValue(std::shared_ptr<SwJsonArray> array) noexcept : type_(Array), array_(std::move(array)) {}

SwJsonValue::SwJsonValue(SwJsonValue const& other)
    : type_(other.type_)
    , bool_(other.bool_)
    , int_(other.int_)
    , double_(other.double_)
    , string_(other.string_)
    , object_(other.object_ ? std::make_shared<SwJsonObject>(*other.object_) : nullptr)
    , array_(other.array_ ? std::make_shared<SwJsonArray>(*other.array_) : nullptr)
{
}
SwJsonValue::SwJsonValue(SwJsonValue&& other) noexcept
    : type_(std::exchange(other.type_, Null))
    , bool_(std::exchange(other.bool_, false))
    , int_(std::exchange(other.int_, 0))
    , double_(std::exchange(other.double_, 0.0))
    , string_(std::move(other.string_))
    , object_(std::move(other.object_))
    , array_(std::move(other.array_))
{
    other.string_.clear();
}
SwJsonValue& SwJsonValue::operator=(SwJsonValue const& other)
{
    return *this = SwJsonValue(other);
}
SwJsonValue& SwJsonValue::operator=(SwJsonValue&& other) noexcept
{
    SwJsonValue taken(std::move(other));
    std::swap(type_, taken.type_);
    std::swap(bool_, taken.bool_);
    std::swap(int_, taken.int_);
    std::swap(double_, taken.double_);
    string_.swap(taken.string_);
    object_.swap(taken.object_);
    array_.swap(taken.array_);
    return *this;
}
SwJsonValue::~SwJsonValue() = default;

std::string SwJsonValue::toString() const
{
    switch (type_) {
    case String:
        return string_;
    case Bool:
        return bool_ ? "true" : "false";
    case Int:
        return std::to_string(int_);
    case Double:
        return fixedText(double_);
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

bool operator==(SwJsonValue const& a, SwJsonValue const& b)
{
    return a.type_ == b.type_ && a.bool_ == b.bool_ && a.int_ == b.int_ && a.double_ == b.double_ &&
           a.string_ == b.string_ && a.toObject() == b.toObject() && a.toArray() == b.toArray();
}

SwJsonObject::SwJsonObject(std::initializer_list<std::pair<std::string const, SwJsonValue>> members)
{
    for (auto const& member : members) {
        members_.insert_or_assign(member.first, member.second);
    }
}
SwJsonValue const& SwJsonObject::operator[](std::string_view key) const
{
    static SwJsonValue const nullValue;
    auto const found = members_.find(key);
    return found == members_.end() ? nullValue : found->second;
}
SwJsonValue& SwJsonObject::operator[](std::string_view key)
{
    auto const found = members_.lower_bound(key);
    if (found != members_.end() && found->first == key) {
        return found->second;
    }
    return members_.emplace_hint(found, std::string(key), SwJsonValue())->second;
}
void SwJsonObject::insertOrAssign(std::string key, SwJsonValue value)
{
    members_.insert_or_assign(std::move(key), std::move(value));
}
std::size_t SwJsonObject::erase(std::string_view key)
{
    auto const found = members_.find(key);
    if (found == members_.end()) {
        return 0;
    }
    members_.erase(found);
    return 1;
}
std::vector<std::string> SwJsonObject::keys() const
{
    std::vector<std::string> names;
    for (auto const& member : members_) {
        names.push_back(member.first);
    }
    return names;
}
