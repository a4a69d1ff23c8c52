// The life of a document. The tree of a large one goes without a walk through it, unless its root was taken.
#include "SwJson.h"

#include "sw_json_memory.h"
#include "sw_json_tree.h"

#include <utility>

SwJsonDocument::SwJsonDocument() noexcept = default;
SwJsonDocument::SwJsonDocument(SwJsonValue root) : root_(std::move(root)) {}
SwJsonDocument::SwJsonDocument(SwJsonDocument const& other) : root_(other.root_) {}
SwJsonDocument::SwJsonDocument(SwJsonDocument&& other) noexcept = default;

SwJsonDocument& SwJsonDocument::operator=(SwJsonDocument const& other)
{
    return *this = SwJsonDocument(other);
}

SwJsonDocument& SwJsonDocument::operator=(SwJsonDocument&& other) noexcept
{
    SwJsonDocument taken(std::move(other));
    root_.swap(taken.root_);
    memory_.swap(taken.memory_);
    return *this;
}

SwJsonDocument::~SwJsonDocument()
{
    if (memory_ != nullptr) {
        SwJsonTree::releaseAll(root_, *memory_);
    }
}

SwJsonValue SwJsonDocument::takeRoot()
{
    // From now on anybody may change it.
    memory_.reset();
    return std::move(root_);
}
