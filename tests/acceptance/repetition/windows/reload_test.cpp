// Hosts that load the library for a single reading load, use and unload it very often: nothing stays behind.
#include <gtest/gtest.h>

#include <filesystem>

#include "../repetition.h"
#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::test {
namespace {

// The library under test, which the machine has not touched yet.
std::wstring PathOfUnloadedLibrary() {
    auto const path = sim::ModulePath(LibraryUnderTest());
    ::FreeLibrary(LibraryUnderTest());
    EXPECT_EQ(::GetModuleHandleW(L"gputune.dll"), nullptr);
    return path;
}

// While one exists, the library is loaded.
class LoadedLibrary {
public:
    explicit LoadedLibrary(std::wstring const& path)
        : module_(::LoadLibraryW(path.c_str())), api_(FindExports(module_)) {}
    ~LoadedLibrary() {
        ::FreeLibrary(module_);
        EXPECT_EQ(::GetModuleHandleW(L"gputune.dll"), nullptr) << "somebody still holds it";
    }
    LoadedLibrary(LoadedLibrary const&) = delete;
    LoadedLibrary& operator=(LoadedLibrary const&) = delete;

    Exports const& Api() const { return api_; }

private:
    HMODULE module_;
    Exports api_;
};

class Reload : public testing::TestWithParam<Board> {
protected:
    // Loads, starts, calls everything, unloads; the log must not be open then.
    bool UseOnce() {
        bool started = false;
        {
            LoadedLibrary const library(path_);
            started = library.Api().InitVGAHelper(GPUTUNE_LOG_FILE);
            CallEverything(library.Api());
        }
        std::error_code error;
        EXPECT_TRUE(std::filesystem::remove("debug.log", error)) << error.message();
        machine_.Scripted().ClearCalls();
        EXPECT_EQ(Wmi().LiveObjects(), 0);
        return started;
    }

    Machine machine_ = GetParam().make();
    std::wstring path_ = PathOfUnloadedLibrary();
};

TEST_P(Reload, LeavesNothingBehind) {
    machine_.InstallCaptions();
    EXPECT_EQ(LeftBehindBy(100, [&](int) { ASSERT_TRUE(UseOnce()); }), "");
}

// In each round another call fails, from the first of a start to the last of an unload, those of the binding included.
TEST_P(Reload, AfterAFailingCallLeavesNothingBehind) {
    machine_.InstallCaptions();
    FailingCall failing(machine_.Scripted());
    int position = 0;
    int passes = 0;
    EXPECT_EQ(LeftBehindBy(150,
                           [&](int) {
                               failing.FailAt(position++);
                               UseOnce();
                               if (!failing.HasFailed()) {
                                   position = 0;
                                   ++passes;
                               }
                           }),
              "");
    EXPECT_GT(passes, 0) << "not every call has failed";
}

INSTANTIATE_TEST_SUITE_P(Of, Reload, testing::ValuesIn(kBoards),
                         [](auto const& test) { return std::string(test.param.name); });

// In each round another step of the detection fails.
TEST(ReloadWith, AFailingDetectionLeavesNothingBehind) {
    Machine machine(Machine::Library::None);
    std::wstring const path = PathOfUnloadedLibrary();
    Wmi().SetCaptions({{sim::WmiCaption::Kind::Text, L"AMD Radeon RX 580 Series"}, {sim::WmiCaption::Kind::Null, L""}});
    EXPECT_EQ(LeftBehindBy(150,
                           [&](int number) {
                               Wmi().ClearFailures();
                               Wmi().Fail(static_cast<sim::WmiStep>(number % 6), E_FAIL, 5);
                               LoadedLibrary const library(path);
                               library.Api().InitVGAHelper(GPUTUNE_LOG_NONE);
                               EXPECT_EQ(Wmi().LiveObjects(), 0);
                           }),
              "");
}

}  // namespace
}  // namespace gputune::test
