// Runs the current test once more in a child process, whose exit code the parent checks.
//
//     TEST(Unload, EndOfTheProcessIsClean) {
//         if (!IsChild()) {
//             EXPECT_EQ(RunAsChild(), 0U);
//             return;
//         }
//         ...
//     }
#pragma once

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

#include "sim/host/module_path.h"

namespace gputune::test {

inline constexpr char kChildVariable[] = "GPUTUNE_TEST_CHILD";

inline bool IsChild() {
    return ::GetEnvironmentVariableA(kChildVariable, nullptr, 0) != 0;
}

// Returns the child's exit code; ~0 when it could not be started.
inline DWORD RunAsChild() {
    testing::TestInfo const& test = *testing::UnitTest::GetInstance()->current_test_info();
    std::string const name = std::string(test.test_suite_name()) + "." + test.name();
    std::wstring command =
        L"\"" + sim::ModulePath().wstring() + L"\" --gtest_filter=" + std::wstring(name.begin(), name.end());
    ::SetEnvironmentVariableA(kChildVariable, "1");
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
        return ~DWORD{0};
    }
    ::WaitForSingleObject(process.hProcess, INFINITE);
    DWORD code = ~DWORD{0};
    ::GetExitCodeProcess(process.hProcess, &code);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    return code;
}

}  // namespace gputune::test
