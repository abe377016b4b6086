// Cases of every outcome, for the test of the kit. No part of the kit.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

TEST(Planted, Passes) {
    // A folder of its own, which is empty.
    EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::current_path()));
    std::ofstream("mark") << "of this case";
}

TEST(Planted, PassesToo) {
    EXPECT_TRUE(std::filesystem::is_empty(std::filesystem::current_path()));
    std::ofstream("mark") << "of this case";
}

TEST(Planted, Skips) {
    GTEST_SKIP() << "there is a reason";
}

// With what a report must not have: the names and the paths.
TEST(Planted, FailsAndTellsWhoAndWhere) {
    char name[256];
    DWORD size = sizeof name;
    ASSERT_TRUE(::GetUserNameA(name, &size));
    std::cout << "I am <" << name << ">.\n";
    size = sizeof name;
    ASSERT_TRUE(::GetComputerNameA(name, &size));
    std::cout << "This is <" << name << ">.\n";
    FAIL() << "in " << std::filesystem::current_path();
}

TEST(Planted, Crashes) {
    std::cout << "before the crash" << std::endl;
    ::RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

TEST(Planted, IsEndedByWindows) {
    constexpr UINT kStackOverrun = 0xC0000409;
    ::TerminateProcess(::GetCurrentProcess(), kStackOverrun);
}

TEST(Planted, Hangs) {
    std::cout << "before the wait" << std::endl;
    ::Sleep(INFINITE);
}

TEST(Planted, EndsBeforeItsTestDoes) {
    std::_Exit(0);
}

}  // namespace
