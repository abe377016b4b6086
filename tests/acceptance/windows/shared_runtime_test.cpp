// A host with the DLLs of the library's own compiler in its process, as one has that was built with it, or that loads a
// plug-in that was. The library has its runtime inside: its exceptions are caught, and it leaves those DLLs alone.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>

#include "ImportHook.h"
#include "boards.h"
#include "machine_windows.h"
#include "sim/host/module_path.h"

namespace gputune::test {
namespace {

// A DLL of tests/shared_runtime/, loaded for as long as the object lives.
class Guest {
public:
    explicit Guest(char const* file) {
        auto const guest = sim::ModulePath().parent_path() / "shared-runtime" / file;
        // What it needs is found beside it, not beside the host.
        module_ = ::LoadLibraryExW(guest.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        if (module_ == nullptr) {
            throw std::runtime_error("cannot load " + guest.string());
        }
    }
    ~Guest() { ::FreeLibrary(module_); }
    Guest(Guest const&) = delete;
    Guest& operator=(Guest const&) = delete;

    template <class Result>
    Result Call(char const* function) const {
        return reinterpret_cast<Result (*)()>(reinterpret_cast<void*>(::GetProcAddress(module_, function)))();
    }

private:
    HMODULE module_;
};

bool IsLoaded(wchar_t const* file) {
    return ::GetModuleHandleW(file) != nullptr;
}

constexpr wchar_t kUnwinder[] = L"libgcc_s_dw2-1.dll";
constexpr wchar_t kRuntime[] = L"libstdc++-6.dll";

enum class Runtime { Before, After, UnloadedAgain };

class SharedRuntime : public testing::TestWithParam<Runtime> {
protected:
    ~SharedRuntime() override { EXPECT_TRUE(!plugin_ || CatchesItsOwn()); }

    void Start(Machine& machine) {
        ASSERT_FALSE(IsLoaded(kUnwinder) || IsLoaded(kRuntime));
        if (GetParam() != Runtime::After) {
            plugin_.emplace("plugin.dll");
        }
        ASSERT_TRUE(machine.InitAndForget());
        if (GetParam() == Runtime::After) {
            plugin_.emplace("plugin.dll");
        }
        ASSERT_TRUE(IsLoaded(kUnwinder) && IsLoaded(kRuntime));
        ASSERT_TRUE(CatchesItsOwn());
        if (GetParam() == Runtime::UnloadedAgain) {
            plugin_.reset();
            // The unwinder keeps itself.
            ASSERT_FALSE(IsLoaded(kRuntime));
        }
    }

private:
    bool CatchesItsOwn() const { return plugin_->Call<bool>("Plugin_CatchesItsOwn"); }

    std::optional<Guest> plugin_;
};

constexpr char kOutOfRange[] = "stol argument out of range";

Machine WithoutUsableIdentifier(Machine machine) {
    OrderAdapters(machine, {{.udid = "&SUBSYS_E4571002", .name = "a"}});
    return machine;
}

TEST_P(SharedRuntime, MalformedIdentifierIsCaughtOnOverdriveN) {
    Machine machine = WithoutUsableIdentifier(OverdriveNBoard());
    ASSERT_NO_FATAL_FAILURE(Start(machine));
    EXPECT_EQ(machine.Api().GetVGAInfo().BusNumber, 3);
    EXPECT_EQ(machine.TakeLog().back(), std::string("[GetVGAInfo()] ... ") + kOutOfRange);
}

TEST_P(SharedRuntime, MalformedIdentifierIsCaughtOnOverdrive8) {
    Machine machine = WithoutUsableIdentifier(Overdrive8Board(0));
    ASSERT_NO_FATAL_FAILURE(Start(machine));
    EXPECT_EQ(machine.Api().GetVGAInfo().BusNumber, 3);
    EXPECT_EQ(machine.TakeLog().back(), std::string("[GetVGAInfo()] ... ") + kOutOfRange);
}

constexpr char kProfile[] = "profile.xml";

std::FILE* OpenProfile(wchar_t const* /*path*/, wchar_t const* /*mode*/) {
    return std::fopen(kProfile, "rb");
}

TEST_P(SharedRuntime, MalformedProfileIsCaught) {
    Machine machine = OverdriveNBoard();
    ASSERT_NO_FATAL_FAILURE(Start(machine));
    std::ofstream(kProfile) << R"(<Boards><Board Id="FFFFFFFFFF"><Value Name="GpuOC" Normal="1"/></Board></Boards>)";
    // In the place of the one profile file, which other tests write.
    ImportHook const hook("_wfopen", OpenProfile);
    EXPECT_FALSE(machine.Api().SetPerformanceOC());
    EXPECT_EQ(machine.TakeLog().back(), std::string("[SetPerformanceOC()] ... ") + kOutOfRange);
}

int g_refused = 0;

void* Refuse(std::size_t /*size*/) {
    ++g_refused;
    return nullptr;
}

TEST_P(SharedRuntime, LackOfMemoryIsCaught) {
    Machine machine = OverdriveNBoard();
    ASSERT_NO_FATAL_FAILURE(Start(machine));
    {
        ImportHook const hook("malloc", Refuse);
        EXPECT_FALSE(machine.Api().GetExternalPerformanceParameter(0x0B361002).Valid);
    }
    EXPECT_GT(g_refused, 0);
    EXPECT_EQ(machine.Api().GetVGAInfo().SubsystemId, 0x0B361002U);
}

TEST_P(SharedRuntime, OutlivesTheLibrary) {
    Machine machine = OverdriveNBoard();
    ASSERT_NO_FATAL_FAILURE(Start(machine));
    ASSERT_TRUE(::FreeLibrary(LibraryUnderTest()));
    EXPECT_FALSE(IsLoaded(L"gputune.dll"));
}

std::string NameOf(testing::TestParamInfo<Runtime> const& info) {
    switch (info.param) {
        case Runtime::Before:
            return "LoadedBefore";
        case Runtime::After:
            return "LoadedAfter";
        default:
            return "UnloadedAgain";
    }
}

INSTANTIATE_TEST_SUITE_P(Of, SharedRuntime, testing::Values(Runtime::Before, Runtime::After, Runtime::UnloadedAgain),
                         NameOf);

TEST(SharedUnwinder, IsNeitherAskedNorKept) {
    Machine machine = WithoutUsableIdentifier(OverdriveNBoard());
    std::optional<Guest> unwinder("counting/libgcc_s_dw2-1.dll");
    ASSERT_TRUE(IsLoaded(kUnwinder));
    int const ownCalls = unwinder->Call<int>("Unwinder_Calls");
    ASSERT_TRUE(machine.InitAndForget());
    EXPECT_EQ(machine.Api().GetVGAInfo().BusNumber, 3);
    EXPECT_EQ(unwinder->Call<int>("Unwinder_Calls"), ownCalls);
    unwinder.reset();
    EXPECT_FALSE(IsLoaded(kUnwinder));
    EXPECT_EQ(machine.Api().GetVGAInfo().BusNumber, 3);
}

}  // namespace
}  // namespace gputune::test
