// The careful loading of a library by its bare name: what it asks of the system, in which order and with which flags,
// and the last error after it.
#include <gtest/gtest.h>

#include "FakeSystem.h"
#include "nvidia/HardenedLoader.h"
#include "platform/last_error.h"

namespace gputune {
namespace {

using nvidia::HardenedLoader;
using test::TheSystem;
using test::Trace;

constexpr std::uint32_t kSystemDirectoryOnly = 0x800;
constexpr std::uint32_t kAllFlags = 0xFFFFFFFF;

constexpr wchar_t kClass[] = L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}";
constexpr wchar_t kBuildValue[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\CurrentBuildNumber";
constexpr wchar_t kStored[] = L"C:\\Windows\\system32\\DriverStore\\FileRepository\\nv_dispi.inf_x86_1\\nvapi.dll";

// The trace's line of a load.
std::wstring Load(std::wstring const& what, wchar_t const* flags) {
    return L"load " + what + L" " + flags;
}

// One display driver whose package holds nvapi.dll.
void InstallDriver() {
    TheSystem().subkeys[kClass] = {0, {L"0000"}};
    TheSystem().values[std::wstring(kClass) + L"\\0000\\UserModeDriverName"] = {
        0, {L"C:\\Windows\\System32\\DriverStore\\FileRepository\\nv_dispi.inf_x86_1\\nvldumd.dll"}};
}

class HardenedLoad : public testing::Test {
protected:
    HardenedLoad() {
        TheSystem() = {};
        TheSystem().build = 10000;  // before drivers kept their libraries in their packages
        TheSystem().libraries[L"probe.dll"];
        TheSystem().libraries[L"nvapi.dll"];
    }

    void* LoadFile(std::wstring const& name, std::uint32_t flags = 0) {
        TheSystem().trace.clear();
        platform::SetLastError(4711);
        return loader_.Load(name, flags);
    }

    void* Handle(std::wstring const& what) { return &TheSystem().libraries.at(what); }

    HardenedLoader loader_;
};

// ---- The name ----

TEST_F(HardenedLoad, PathIsRefusedWithBadArguments) {
    for (wchar_t const* name : {L"C:\\Windows\\nvapi.dll", L"sub\\probe.dll", L"sub/probe.dll", L"\\probe.dll",
                                L"/probe.dll", L"probe.dll\\", L"..\\probe.dll", L"C:probe.dll", L"probe.dll:stream"}) {
        EXPECT_EQ(LoadFile(name), nullptr);
        EXPECT_EQ(platform::LastError(), 160U);
        EXPECT_EQ(TheSystem().trace, Trace{});
    }
}

TEST_F(HardenedLoad, LastErrorIsClearedFirst) {
    // No system call of this load fails.
    TheSystem().build = 14308;
    TheSystem().hostExecutable = L"C:\\Windows\\system32\\mfpmp.exe";
    EXPECT_EQ(LoadFile(L"probe.dll"), Handle(L"probe.dll"));
    EXPECT_EQ(platform::LastError(), 0U);
}

TEST_F(HardenedLoad, MissingLibraryIsModuleNotFound) {
    EXPECT_EQ(LoadFile(L"absent.dll"), nullptr);
    EXPECT_EQ(platform::LastError(), 126U);
}

TEST_F(HardenedLoad, FailureOfTheLoadKeepsItsCode) {
    TheSystem().loadErrors[L"probe.dll"] = 193;
    EXPECT_EQ(LoadFile(L"probe.dll"), nullptr);
    EXPECT_EQ(platform::LastError(), 193U);
}

// ---- The system's directory ----

TEST_F(HardenedLoad, Windows8SearchesTheSystemDirectoryByName) {
    struct {
        std::uint32_t flags;
        wchar_t const* passed;
    } const rows[] = {{0, L"800"},      {0x800, L"800"}, {0x1, L"801"},    {0x8, L"800"},
                      {0x100, L"800"},  {0x200, L"800"}, {0x400, L"800"},  {0x1000, L"800"},
                      {0x1708, L"800"}, {0x2, L"802"},   {0x1F0A, L"802"}, {kAllFlags, L"FFFFE8F7"}};
    for (auto const& row : rows) {
        EXPECT_EQ(LoadFile(L"probe.dll", row.flags), Handle(L"probe.dll"));
        EXPECT_EQ(TheSystem().trace.back(), Load(L"probe.dll", row.passed));
    }
}

TEST_F(HardenedLoad, Windows7LoadsByThePathOfTheSystemDirectory) {
    TheSystem().isWindows8 = false;
    TheSystem().libraries[L"C:\\Windows\\system32\\probe.dll"];
    struct {
        std::uint32_t flags;
        wchar_t const* passed;
    } const rows[] = {{0, L"0"},     {0x800, L"0"}, {0x1, L"1"},    {0x8, L"0"}, {0x100, L"0"},
                      {0x200, L"0"}, {0x400, L"0"}, {0x1000, L"0"}, {0x2, L"2"}, {kAllFlags, L"FFFFE0F7"}};
    for (auto const& row : rows) {
        EXPECT_EQ(LoadFile(L"probe.dll", row.flags), Handle(L"C:\\Windows\\system32\\probe.dll"));
        EXPECT_EQ(TheSystem().trace.back(), Load(L"C:\\Windows\\system32\\probe.dll", row.passed));
    }
}

TEST_F(HardenedLoad, Windows7WithoutItsSystemDirectoryLoadsNothing) {
    TheSystem().isWindows8 = false;
    TheSystem().systemDirectory.clear();
    EXPECT_EQ(LoadFile(L"probe.dll"), nullptr);
    EXPECT_EQ(TheSystem().TraceOf(L"load"), Trace{});
}

TEST_F(HardenedLoad, Windows8IsAskedForOnce) {
    for (bool const isWindows8 : {true, false}) {
        HardenedLoader loader;
        TheSystem().isWindows8 = isWindows8;
        TheSystem().trace.clear();
        EXPECT_EQ(loader.IsWindows8OrLater(), isWindows8);
        EXPECT_EQ(TheSystem().trace, Trace({L"version 6.2"}));
        TheSystem().isWindows8 = !isWindows8;
        EXPECT_EQ(loader.IsWindows8OrLater(), isWindows8);
        EXPECT_EQ(TheSystem().trace.size(), 1U);
    }
}

// ---- The support libraries ----

TEST_F(HardenedLoad, SupportLibrariesComeFirstInTheirOrder) {
    EXPECT_NE(LoadFile(L"probe.dll", 0x8), nullptr);
    EXPECT_EQ(TheSystem().TraceOf(L"load"),
              Trace({L"load msasn1.dll 800", L"load cryptnet.dll 800", L"load drvstore.dll 800", L"load devobj.dll 800",
                     L"load wldp.dll 800", L"load cryptbase.dll 800", L"load probe.dll 800"}));
}

TEST_F(HardenedLoad, Windows7LoadsSupportLibrariesByPath) {
    TheSystem().isWindows8 = false;
    LoadFile(L"probe.dll", 0x8);
    std::wstring const at = L"load C:\\Windows\\system32\\";
    EXPECT_EQ(TheSystem().TraceOf(L"load"),
              Trace({at + L"msasn1.dll 0", at + L"cryptnet.dll 0", at + L"drvstore.dll 0", at + L"devobj.dll 0",
                     at + L"wldp.dll 0", at + L"cryptbase.dll 0", at + L"probe.dll 0"}));
}

TEST_F(HardenedLoad, SupportLibrariesAreLoadedOnceAndStay) {
    for (wchar_t const* name :
         {L"msasn1.dll", L"cryptnet.dll", L"drvstore.dll", L"devobj.dll", L"wldp.dll", L"cryptbase.dll"}) {
        TheSystem().libraries[name];
    }
    EXPECT_NE(LoadFile(L"probe.dll"), nullptr);
    EXPECT_NE(LoadFile(L"probe.dll"), nullptr);
    EXPECT_EQ(TheSystem().TraceOf(L"load"), Trace({L"load probe.dll 800"}));
    for (wchar_t const* name :
         {L"msasn1.dll", L"cryptnet.dll", L"drvstore.dll", L"devobj.dll", L"wldp.dll", L"cryptbase.dll"}) {
        EXPECT_EQ(TheSystem().libraries[name].loads, 1);
    }
}

TEST_F(HardenedLoad, OneSupportLibraryIsEnoughToBeDone) {
    TheSystem().libraries[L"cryptbase.dll"];
    LoadFile(L"probe.dll");
    EXPECT_EQ(TheSystem().TraceOf(L"load").size(), 7U);
    LoadFile(L"probe.dll");
    EXPECT_EQ(TheSystem().TraceOf(L"load").size(), 1U);
}

TEST_F(HardenedLoad, AsLongAsNoneIsThereSupportLibrariesAreTriedAgain) {
    LoadFile(L"probe.dll");
    EXPECT_NE(LoadFile(L"probe.dll"), nullptr);
    EXPECT_EQ(TheSystem().TraceOf(L"load").size(), 7U);
}

TEST_F(HardenedLoad, SupportLibraryThatCannotBeLoadedEndsTheLoad) {
    TheSystem().libraries[L"msasn1.dll"];
    TheSystem().loadErrors[L"drvstore.dll"] = 5;
    EXPECT_EQ(LoadFile(L"probe.dll"), nullptr);
    EXPECT_EQ(platform::LastError(), 5U);
    EXPECT_EQ(TheSystem().TraceOf(L"load"),
              Trace({L"load msasn1.dll 800", L"load cryptnet.dll 800", L"load drvstore.dll 800"}));

    // One of them is loaded, so this step is not done again, and its result stays.
    TheSystem().loadErrors.clear();
    EXPECT_EQ(LoadFile(L"probe.dll"), nullptr);
    EXPECT_EQ(platform::LastError(), 5U);
    EXPECT_EQ(TheSystem().TraceOf(L"load"), Trace{});
}

TEST_F(HardenedLoad, FailureWithNoneLoadedIsTriedAgain) {
    TheSystem().loadErrors[L"msasn1.dll"] = 5;
    EXPECT_EQ(LoadFile(L"probe.dll"), nullptr);
    EXPECT_EQ(platform::LastError(), 5U);
    TheSystem().loadErrors.clear();
    EXPECT_NE(LoadFile(L"probe.dll"), nullptr);
}

TEST_F(HardenedLoad, ProtectedMediaHostLoadsNoSupportLibraries) {
    for (wchar_t const* host : {L"C:\\Windows\\system32\\mfpmp.exe", L"C:\\WINDOWS\\SYSTEM32\\MFPMP.EXE"}) {
        HardenedLoader loader;
        TheSystem().hostExecutable = host;
        TheSystem().trace.clear();
        EXPECT_NE(loader.Load(L"probe.dll", 0), nullptr);
        EXPECT_EQ(TheSystem().TraceOf(L"load"), Trace({L"load probe.dll 800"}));
    }
}

TEST_F(HardenedLoad, OtherHostsLoadSupportLibraries) {
    for (wchar_t const* host : {L"C:\\Host\\notmfpmp.exe", L"mfpmp.exe", L"C:\\mfpmp.exe\\host.exe",
                                L"C:\\mfpmp.exe.exe", L"C:\\mfpmp", L""}) {
        HardenedLoader loader;
        TheSystem().hostExecutable = host;
        TheSystem().trace.clear();
        EXPECT_NE(loader.Load(L"probe.dll", 0), nullptr);
        EXPECT_EQ(TheSystem().TraceOf(L"load").size(), 7U);
    }
}

TEST_F(HardenedLoad, ProtectedMediaHostKeepsTheEarlierResult) {
    TheSystem().loadErrors[L"msasn1.dll"] = 5;
    EXPECT_EQ(LoadFile(L"probe.dll"), nullptr);
    TheSystem().hostExecutable = L"C:\\Windows\\system32\\mfpmp.exe";
    TheSystem().loadErrors.clear();
    EXPECT_EQ(LoadFile(L"probe.dll"), nullptr);
    EXPECT_EQ(platform::LastError(), 5U);
    EXPECT_EQ(TheSystem().TraceOf(L"load"), Trace{});
}

// ---- The build number ----

TEST_F(HardenedLoad, BuildThatTheSystemConfirmsNeedsNoRegistry) {
    TheSystem().build = 14308;
    EXPECT_TRUE(loader_.IsBuildAtLeast(14308));
    EXPECT_EQ(TheSystem().trace, Trace({L"build 14308"}));
    EXPECT_TRUE(loader_.IsBuildAtLeast(14308));
    EXPECT_EQ(TheSystem().trace.size(), 1U);
    // A number that the system has confirmed is taken for the build number.
    EXPECT_TRUE(loader_.IsBuildAtLeast(100));
    EXPECT_FALSE(loader_.IsBuildAtLeast(14309));
    EXPECT_EQ(TheSystem().trace.size(), 1U);
}

TEST_F(HardenedLoad, BuildThatTheSystemDeniesIsReadFromTheRegistry) {
    struct {
        std::vector<std::wstring> texts;
        std::uint32_t build;
        bool isAtLeast;
    } const rows[] = {
        {{L"19045"}, 14308, true},
        {{L"14308"}, 14308, true},
        {{L"14307"}, 14308, false},
        {{L"9600"}, 14308, false},
        {{L"019045"}, 14308, true},
        {{L"4294967295"}, 0xFFFFFFFF, true},
        {{L"4294967296"}, 1, false},
        {{L"99999999999999999999"}, 1, false},
        // Not a number.
        {{L"19045a"}, 1, false},
        {{L"a19045"}, 1, false},
        {{L"19 45"}, 1, false},
        {{L"-19045"}, 1, false},
        {{L"+19045"}, 1, false},
        {{L"1904\x0665"}, 1, false},
        {{L" 19045"}, 1, false},
        {{L""}, 1, false},
        {{}, 1, false},
    };
    TheSystem().build = 0;
    for (auto const& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.texts));
        HardenedLoader loader;
        TheSystem().values[kBuildValue] = {0, row.texts};
        EXPECT_EQ(loader.IsBuildAtLeast(row.build), row.isAtLeast);
    }
}

TEST_F(HardenedLoad, BuildOfTheRegistryIsReadOnce) {
    TheSystem().build = 9200;
    TheSystem().values[kBuildValue] = {0, {L"19045"}};
    EXPECT_TRUE(loader_.IsBuildAtLeast(14308));
    EXPECT_TRUE(loader_.IsBuildAtLeast(19045));
    EXPECT_FALSE(loader_.IsBuildAtLeast(19046));
    EXPECT_EQ(TheSystem().trace, Trace({L"build 14308", std::wstring(L"value ") + kBuildValue}));
}

TEST_F(HardenedLoad, BuildThatCannotBeReadIsAskedForAgain) {
    TheSystem().build = 9200;
    EXPECT_FALSE(loader_.IsBuildAtLeast(14308));
    TheSystem().values[kBuildValue] = {5, {L"19045"}};
    TheSystem().values[kBuildValue].texts.clear();
    EXPECT_FALSE(loader_.IsBuildAtLeast(14308));
    TheSystem().build = 14308;
    EXPECT_TRUE(loader_.IsBuildAtLeast(14308));
}

// ---- The driver's package ----

TEST_F(HardenedLoad, DriverLibraryComesFromItsPackage) {
    TheSystem().build = 14308;
    InstallDriver();
    TheSystem().files[kStored] = 0;
    // In the registry's spelling.
    std::wstring stored = kStored;
    stored.replace(stored.find(L"system32"), 8, L"System32");
    TheSystem().files[stored] = 0;
    TheSystem().trustedFiles.insert(stored);
    TheSystem().libraries[stored];
    TheSystem().libraries[L"wintrust.dll"];
    struct {
        std::uint32_t flags;
        wchar_t const* passed;
    } const rows[] = {{0, L"0"}, {0x8, L"0"}, {0x1708, L"0"}, {0x1, L"1"}, {0xFFFFF7FF, L"FFFFE0F7"}};
    for (auto const& row : rows) {
        EXPECT_EQ(LoadFile(L"nvapi.dll", row.flags), Handle(stored));
        EXPECT_EQ(TheSystem().TraceOf(L"load"), Trace({L"load wintrust.dll 800", Load(stored, row.passed)}));
        EXPECT_EQ(TheSystem().TraceOf(L"trust"), Trace({L"trust " + stored}));
    }
}

TEST_F(HardenedLoad, DriverLibraryThatIsNotTrustedIsNotReplacedByAnother) {
    TheSystem().build = 14308;
    InstallDriver();
    TheSystem().files[L"C:\\Windows\\System32\\DriverStore\\FileRepository\\nv_dispi.inf_x86_1\\nvapi.dll"] = 0;
    TheSystem().libraries[L"wintrust.dll"];
    EXPECT_EQ(LoadFile(L"nvapi.dll"), nullptr);
    EXPECT_EQ(platform::LastError(), 161U);
    EXPECT_EQ(TheSystem().TraceOf(L"load"), Trace({L"load wintrust.dll 800"}));
}

TEST_F(HardenedLoad, PackageIsNotLookedAtOnOldBuildsForOtherNamesOrForTheSystemDirectory) {
    struct {
        std::uint32_t build;
        wchar_t const* name;
        std::uint32_t flags;
        bool asksForTheBuild;  // only where neither flags nor name have decided
        bool looks;
    } const rows[] = {{14308, L"nvapi.dll", 0, true, true},
                      {14307, L"nvapi.dll", 0, true, false},
                      {14308, L"nvapi.dll", kSystemDirectoryOnly, false, false},
                      {14308, L"probe.dll", 0, false, false},
                      {14308, L"n", 0, false, false},
                      {14308, L"xnv.dll", 0, false, false},
                      {14308, L"nv", 0, true, true},
                      {14308, L"NVAPI.DLL", 0, true, true}};
    for (auto const& row : rows) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(row.name)));
        HardenedLoader loader;
        TheSystem().build = row.build;
        InstallDriver();
        TheSystem().trace.clear();
        loader.Load(row.name, row.flags);
        EXPECT_EQ(!TheSystem().TraceOf(L"build").empty(), row.asksForTheBuild);
        EXPECT_EQ(!TheSystem().TraceOf(std::wstring(L"value ") + kClass).empty(), row.looks);
        // The package does not have it: it comes from the system's directory.
        EXPECT_EQ(TheSystem().trace.back(), Load(row.name, L"800"));
    }
}

TEST_F(HardenedLoad, SearchThatFailsEndsTheLoad) {
    TheSystem().build = 14308;
    TheSystem().subkeys[kClass] = {5, {}};
    EXPECT_EQ(LoadFile(L"nvapi.dll"), nullptr);
    EXPECT_EQ(platform::LastError(), 5U);
    EXPECT_EQ(TheSystem().TraceOf(L"load"), Trace{});
}

// ---- By full path ----

TEST_F(HardenedLoad, OnlyAFullPathIsAFullPath) {
    TheSystem().libraries[L"wintrust.dll"];
    for (wchar_t const* path : {L"", L"n", L"nvapi.dll", L"sub\\nvapi.dll", L"C:", L"C:nvapi.dll", L"1:\\nvapi.dll",
                                L"C\\:nvapi.dll", L":\\nvapi.dll", L"[:\\nvapi.dll", L"\x00C4:\\nvapi.dll"}) {
        platform::SetLastError(0);
        EXPECT_EQ(loader_.LoadByFullPath(path, 0), nullptr);
        EXPECT_EQ(platform::LastError(), 160U);
    }
    EXPECT_EQ(TheSystem().trace, Trace{});
    for (wchar_t const* path : {L"C:\\nvapi.dll", L"c:/nvapi.dll", L"Z:\\x", L"a:\\", L"\\nvapi.dll", L"/nvapi.dll",
                                L"\\\\server\\share\\nvapi.dll", L"\\"}) {
        platform::SetLastError(0);
        EXPECT_EQ(loader_.LoadByFullPath(path, 0), nullptr);
        EXPECT_EQ(platform::LastError(), 161U);
    }
}

TEST_F(HardenedLoad, WithoutTheTrustLibraryNoFileIsTrusted) {
    TheSystem().trustedFiles.insert(kStored);
    TheSystem().libraries[kStored];
    EXPECT_EQ(loader_.LoadByFullPath(kStored, 0), nullptr);
    EXPECT_EQ(platform::LastError(), 161U);
    TheSystem().libraries[L"wintrust.dll"];
    EXPECT_EQ(loader_.LoadByFullPath(kStored, 0x800), Handle(kStored));
    EXPECT_EQ(TheSystem().trace.back(), Load(kStored, L"800"));
}

TEST_F(HardenedLoad, Windows7TakesTheTrustLibraryByPath) {
    TheSystem().isWindows8 = false;
    loader_.LoadByFullPath(kStored, 0);
    EXPECT_EQ(TheSystem().TraceOf(L"load"), Trace({L"load C:\\Windows\\system32\\wintrust.dll 0"}));
}

}  // namespace
}  // namespace gputune
