// The libraries that the careful loading loads first on every system, but not in the protected media process.
#include <gtest/gtest.h>

#include "Files.h"
#include "nvidia/HardenedLoader.h"
#include "platform/last_error.h"

namespace gputune::test {
namespace {

using nvidia::HardenedLoader;

bool IsProtectedHost() {
    return sim::ModulePath().filename() == L"mfpmp.exe";
}

TEST(Load, SupportLibrariesAreLoadedFromTheSystemDirectoryFirst) {
    // Those that Wine has.
    for (wchar_t const* name : {L"msasn1.dll", L"cryptnet.dll"}) {
        ASSERT_FALSE(IsLoaded(name));
    }
    EXPECT_EQ(HardenedLoader().Load(L"gputune-absent.dll", 0), nullptr);
    EXPECT_EQ(platform::LastError(), 126U);
    for (wchar_t const* name : {L"msasn1.dll", L"cryptnet.dll"}) {
        EXPECT_EQ(IsLoaded(name), !IsProtectedHost());
        if (!IsProtectedHost()) {
            EXPECT_EQ(sim::ModulePath(::GetModuleHandleW(name)).parent_path(), System32());
        }
    }
}

}  // namespace
}  // namespace gputune::test
