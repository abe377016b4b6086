// Registry, paths, locks, signatures: src/platform on the real system.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <thread>

#include "Files.h"
#include "platform/TrustedFile.h"
#include "platform/last_error.h"
#include "platform/library.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "platform/threads.h"

namespace gputune::test {
namespace {

using Texts = std::vector<std::wstring>;

TEST(Registry, TextsAreReadWithAndWithoutTheirTerminators) {
    struct {
        DWORD type;
        std::wstring stored;
        Texts texts;
    } const rows[] = {
        {REG_SZ, std::wstring(L"one\0", 4), {L"one"}},
        {REG_SZ, L"one", {L"one"}},
        {REG_SZ, L"", {}},
        {REG_SZ, std::wstring(L"\0", 1), {}},
        {REG_MULTI_SZ, std::wstring(L"one\0two\0three\0\0", 15), {L"one", L"two", L"three"}},
        {REG_MULTI_SZ, std::wstring(L"one\0two", 7), {L"one", L"two"}},
        {REG_MULTI_SZ, std::wstring(L"\0\0", 2), {}},
        {REG_SZ, std::wstring(5000, L'x'), {std::wstring(5000, L'x')}},
        // No texts.
        {REG_DWORD, L"ab", {}},
        {REG_BINARY, L"ab", {}},
    };
    std::wstring const path = L"Software\\gputune test\\" + sim::ModulePath().stem().wstring();
    MachineKey key(path);
    for (auto const& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.stored.substr(0, 20)));
        key.Set(L"value", row.type, row.stored);
        auto const answer = platform::ReadMachineTexts(path, L"value");
        EXPECT_EQ(answer.error, 0U);
        EXPECT_EQ(answer.texts, row.texts);
    }
}

TEST(Registry, VariablesInTextsAreExpanded) {
    ::SetEnvironmentVariableW(L"GPUTUNE_TEST", L"a value that is far longer than the name of its variable");
    std::wstring const path = L"Software\\gputune test\\expand " + sim::ModulePath().stem().wstring();
    MachineKey key(path);
    key.Set(L"value", REG_EXPAND_SZ, std::wstring(L"<%GPUTUNE_TEST%>\0", 17));
    auto const answer = platform::ReadMachineTexts(path, L"value");
    EXPECT_EQ(answer.texts, Texts({L"<a value that is far longer than the name of its variable>"}));
}

TEST(Registry, WhatIsAbsentIsFileNotFound) {
    EXPECT_EQ(platform::ReadMachineTexts(L"Software\\gputune test\\absent", L"value").error, 2U);
    EXPECT_EQ(platform::ReadMachineTexts(L"Software", L"gputune absent").error, 2U);
    EXPECT_EQ(platform::ReadMachineSubkeys(L"Software\\gputune test\\absent").error, 2U);
}

TEST(Registry, SubkeysAreListed) {
    std::wstring const path = L"Software\\gputune test\\list " + sim::ModulePath().stem().wstring();
    MachineKey const key(path);
    EXPECT_EQ(platform::ReadMachineSubkeys(path).texts, Texts{});
    MachineKey const first(path + L"\\0000");
    MachineKey const second(path + L"\\" + std::wstring(255, L'x'));
    auto const answer = platform::ReadMachineSubkeys(path);
    EXPECT_EQ(answer.error, 0U);
    EXPECT_EQ(answer.texts, Texts({L"0000", std::wstring(255, L'x')}));
}

TEST(Paths, AreTheSystems) {
    EXPECT_EQ(platform::SystemDirectory(), System32().wstring());
    EXPECT_EQ(platform::HostExecutable(), sim::ModulePath().wstring());
    EXPECT_EQ(platform::HostDirectory(), sim::ModulePath().parent_path().wstring());
}

TEST(Paths, OnlyFilesAreFound) {
    EXPECT_EQ(platform::FindFile(sim::ModulePath().wstring()), 0U);
    EXPECT_EQ(platform::FindFile(System32().wstring()), 2U);
    EXPECT_EQ(platform::FindFile((System32() / "gputune absent.dll").wstring()), 2U);
    EXPECT_EQ(platform::FindFile((System32() / "absent" / "absent.dll").wstring()), 3U);
}

TEST(LastError, IsWhatWasSet) {
    platform::SetLastError(4711);
    EXPECT_EQ(platform::LastError(), 4711U);
}

TEST(Lock, OneThreadAtATimeAndItAgain) {
    platform::Lock lock;
    int inside = 0;
    int most = 0;
    auto const work = [&] {
        for (int round = 0; round < 200; ++round) {
            std::lock_guard const outer(lock);
            std::lock_guard const inner(lock);
            ++inside;
            most = std::max(most, inside);
            ::SwitchToThread();
            --inside;
        }
    };
    std::thread threads[] = {std::thread(work), std::thread(work), std::thread(work), std::thread(work)};
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(most, 1);
}

TEST(Sleep, LastsAsLongAsAsked) {
    auto const start = std::chrono::steady_clock::now();
    platform::SleepMilliseconds(100);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(80));
}

// ---- Signatures ----

HMODULE WinTrust() {
    return ::LoadLibraryW(L"wintrust.dll");
}

TEST(Trust, UnsignedFileIsNotTrusted) {
    PlantedFile const planted(std::filesystem::current_path() / "unsigned.dll");
    EXPECT_FALSE(platform::TrustedFile(WinTrust(), planted.Path().wstring()).IsTrusted());
}

TEST(Trust, WhatIsNotThereIsNotTrusted) {
    EXPECT_FALSE(platform::TrustedFile(WinTrust(), L"C:\\absent.dll").IsTrusted());
    EXPECT_FALSE(platform::TrustedFile(nullptr, sim::ModulePath().wstring()).IsTrusted());
    // A library that has no such function.
    EXPECT_FALSE(platform::TrustedFile(::GetModuleHandleW(nullptr), sim::ModulePath().wstring()).IsTrusted());
}

TEST(Trust, FileCannotBeExchangedWhileItIsLookedAt) {
    PlantedFile const planted(std::filesystem::current_path() / "held.dll");
    auto const openForWriting = [&] {
        HANDLE const file =
            ::CreateFileW(planted.Path().c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                          nullptr, OPEN_EXISTING, 0, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            return ::GetLastError();
        }
        ::CloseHandle(file);
        return DWORD{0};
    };
    ASSERT_EQ(openForWriting(), 0U);
    {
        platform::TrustedFile const file(WinTrust(), planted.Path().wstring());
        EXPECT_EQ(openForWriting(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
        EXPECT_FALSE(::DeleteFileW(planted.Path().c_str()));
        EXPECT_FALSE(::MoveFileW(planted.Path().c_str(), (planted.Path().wstring() + L".old").c_str()));
    }
    EXPECT_EQ(openForWriting(), 0U);
}

}  // namespace
}  // namespace gputune::test
