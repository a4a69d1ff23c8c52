// Looks through a configuration for what may be names of keys, without knowing the rules of templates and conditions.
#include "telemetry/key_selection.h"

#include "SwJson.h"
#include "telemetry/second_keys.h"

#include <algorithm>
#include <vector>

namespace telemetry {
namespace {

/// Whether a block shows every key that is there.
bool listsAllKeys(SwJsonValue const& block)
{
    return block.isObject() && block.toObject()["formatString"].stringRef().empty();
}

/// Every text and every member's name below `root`, in any order.
std::string textsOf(SwJsonValue const& root)
{
    std::string texts;
    std::vector<SwJsonValue const*> open = {&root};
    while (!open.empty()) {
        SwJsonValue const& value = *open.back();
        open.pop_back();
        texts += value.stringRef() + "\n";
        for (SwJsonValue const& item : value.toArray()) {
            open.push_back(&item);
        }
        for (auto const& [name, member] : value.toObject()) {
            texts += name + "\n";
            open.push_back(&member);
        }
    }
    return texts;
}

/// The texts with the keys of which the named ones are made.
std::string withSources(std::string texts)
{
    for (SecondKey const& second : secondKeys()) {
        if (texts.find(second.key) != std::string::npos) {
            for (std::string const& source : second.sources) {
                texts += source + "\n";
            }
        }
    }
    return texts;
}

}  // namespace

KeySelection KeySelection::namedIn(std::string const& config)
{
    SwString error;
    SwJsonDocument const document = SwJsonDocument::fromJson(SwString(config), SwString(), error);
    SwJsonArray const& blocks = document.object()["overlay"].toArray();
    KeySelection keys;
    keys.all_ = std::any_of(blocks.begin(), blocks.end(), listsAllKeys);
    if (!keys.all_) {
        keys.texts_ = withSources(textsOf(document.root()));
    }
    return keys;
}

}  // namespace telemetry
