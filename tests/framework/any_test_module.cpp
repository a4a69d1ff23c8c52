// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// A module like a plugin, hidden but for three functions: it makes values of the framework's types and one
// of its own, with whatever operations this module compiles.
#include "SwAny.h"

namespace {

struct ModuleValue {
    int number = 0;
};

}  // namespace

extern "C" __attribute__((visibility("default"))) void makeObject(SwAny* result)
{
    SwJsonObject object;
    object["key beyond the short form"] = "value beyond the short form";
    SwAny::registerMetaType<SwJsonObject>();
    *result = SwAny(std::move(object));
}

extern "C" __attribute__((visibility("default"))) void makeText(SwAny* result)
{
    *result = SwAny(SwString("a text beyond the short form")).convert<std::string>();
}

extern "C" __attribute__((visibility("default"))) int roundTripOwnType(int number)
{
    SwAny const any{ModuleValue{number}};
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the copy runs the operations of this module
    SwAny const copy = any;
    return SwAny::fromRawPointer(any.typeName(), copy.data()).get<ModuleValue>().number;
}
