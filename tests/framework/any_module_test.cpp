// SPDX-FileCopyrightText: 2026 The stanag-overlay authors
// SPDX-License-Identifier: Apache-2.0

// Values of the framework's types outlive the module that made them, and the module can be loaded again.
#include "SwAny.h"

#include "test_support.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

namespace {

class Module {
public:
    Module() : handle_(dlopen(OVERLAY_ANY_TEST_MODULE, RTLD_NOW | RTLD_LOCAL)) {}
    Module(Module const&) = delete;
    Module& operator=(Module const&) = delete;
    ~Module() { dlclose(handle_); }

    template <typename Function>
    Function* function(char const* name) const
    {
        return reinterpret_cast<Function*>(dlsym(handle_, name));
    }

private:
    void* handle_;
};

bool moduleIsLoaded()
{
    void* const handle = dlopen(OVERLAY_ANY_TEST_MODULE, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) {
        dlclose(handle);
    }
    return handle != nullptr;
}

}  // namespace

TEST(SwAnyModule, ValuesOfTheFrameworksTypesOutliveTheModule)
{
    for (int round = 0; round < 3; ++round) {
        SCOPED_TRACE(round);
        SwAny object;
        SwAny text;
        {
            Module const module;
            ASSERT_TRUE(moduleIsLoaded());
            module.function<void(SwAny*)>("makeObject")(&object);
            module.function<void(SwAny*)>("makeText")(&text);
            EXPECT_EQ(module.function<int(int)>("roundTripOwnType")(round), round);
        }
        ASSERT_FALSE(moduleIsLoaded());
        SwAny copy = object;
        EXPECT_EQ(copy.toString().toStdString(), "{\"key beyond the short form\": \"value beyond the short form\"}");
        EXPECT_EQ(text.get<std::string>(), "a text beyond the short form");
        SwAny const again = SwAny::fromRawPointer(object.typeName(), object.data());
        EXPECT_TRUE(again.get<SwJsonObject>() == object.get<SwJsonObject>());
        object.clear();
        text = SwAny();
        copy.copyFrom(SwAny(1));
    }
}
