// What is shared by the framework's tests: captured diagnostics, a global locale for one scope, a small thread.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <locale>
#include <pthread.h>
#include <string>

namespace framework_test {

/// What `action` writes to standard error.
inline std::string standardErrorOf(std::function<void()> const& action)
{
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
}

/// Decimal comma and "." between groups of three digits: what a number looks like when a stream follows it.
class CommaPunctuation : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Makes a locale with a decimal comma the global C++ locale while it lives.
class CommaLocale {
public:
    CommaLocale() : previous_(std::locale::global(std::locale(std::locale::classic(), new CommaPunctuation))) {}
    CommaLocale(CommaLocale const&) = delete;
    CommaLocale& operator=(CommaLocale const&) = delete;
    ~CommaLocale() { std::locale::global(previous_); }

private:
    std::locale previous_;
};

/// Runs `action` on a thread whose stack has 256 kB.
inline void runOnSmallStack(std::function<void()> action)
{
    constexpr std::size_t kStackBytes = std::size_t{256} * 1024;
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, kStackBytes), 0);
    pthread_t thread{};
    auto const start = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &action), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

}  // namespace framework_test
