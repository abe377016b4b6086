// In which folders a file of a display driver's package is searched.
#include <gtest/gtest.h>

#include "FakeSystem.h"
#include "nvidia/driver_store.h"
#include "platform/last_error.h"

namespace gputune {
namespace {

using test::TheSystem;
using test::Trace;
using Texts = std::vector<std::wstring>;

std::wstring const kClass = L"SYSTEM\\CurrentControlSet\\Control\\Class\\{4d36e968-e325-11ce-bfc1-08002be10318}";
std::wstring const kStore = L"C:\\Windows\\system32\\DriverStore\\FileRepository\\";
std::wstring const kPackage = kStore + L"nv_dispi.inf_amd64_1\\";

void SetValue(std::wstring const& adapter, std::wstring const& value, Texts texts) {
    TheSystem().values[kClass + L"\\" + adapter + L"\\" + value] = {0, std::move(texts)};
}

class DriverStore : public testing::Test {
protected:
    DriverStore() {
        TheSystem() = {};
        TheSystem().subkeys[kClass] = {0, {L"0000"}};
    }

    std::wstring Find(std::wstring const& name = L"nvapi.dll") {
        platform::SetLastError(4711);
        return nvidia::FindInDriverStore(name);
    }

    void ExpectNone(std::uint32_t error = 126) {
        EXPECT_EQ(Find(), std::wstring());
        EXPECT_EQ(platform::LastError(), error);
    }
};

TEST_F(DriverStore, WithoutAdaptersHoldsNothing) {
    TheSystem().subkeys.clear();
    ExpectNone();
    TheSystem().subkeys[kClass] = {0, {}};
    ExpectNone();
    TheSystem().subkeys[kClass] = {0, {L"0000"}};
    ExpectNone();
}

TEST_F(DriverStore, PackageIsTheOneThatTheInfWasInstalledFrom) {
    SetValue(L"0000", L"InfPath", {L"oem7.inf"});
    TheSystem().values[L"SYSTEM\\DriverDatabase\\DriverInfFiles\\oem7.inf\\Active"] = {0, {L"nv_dispi.inf_amd64_1"}};
    ExpectNone();
    TheSystem().files[kPackage + L"nvapi.dll"] = 0;
    EXPECT_EQ(Find(), kPackage + L"nvapi.dll");
}

TEST_F(DriverStore, PackageIsWhereTheDriversLibrariesAre) {
    TheSystem().files[kPackage + L"nvapi.dll"] = 0;
    for (wchar_t const* value :
         {L"UserModeDriverName", L"UserModeDriverNameWow", L"OpenGLDriverName", L"OpenGLDriverNameWow"}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(value)));
        TheSystem().values.clear();
        SetValue(L"0000", value, {kPackage + L"nvlib.dll"});
        EXPECT_EQ(Find(), kPackage + L"nvapi.dll");
    }
}

TEST_F(DriverStore, PackageOfThe32BitLibrariesGoesFirst) {
    std::wstring const other = kStore + L"nv_other.inf_1\\";
    TheSystem().files[kPackage + L"nvapi.dll"] = 0;
    TheSystem().files[other + L"nvapi.dll"] = 0;
    SetValue(L"0000", L"UserModeDriverName", {other + L"nvldumd.dll"});
    SetValue(L"0000", L"UserModeDriverNameWow", {kPackage + L"nvldumd.dll"});
    EXPECT_EQ(Find(), kPackage + L"nvapi.dll");
}

TEST_F(DriverStore, EveryLibraryOfTheListCounts) {
    TheSystem().files[kPackage + L"nvapi.dll"] = 0;
    SetValue(L"0000", L"UserModeDriverName", {L"nvldumd.dll", kStore + L"other.inf_1\\a.dll", kPackage + L"b.dll"});
    EXPECT_EQ(Find(), kPackage + L"nvapi.dll");
}

TEST_F(DriverStore, ModuleListTellsThePlaceInThePackage) {
    SetValue(L"0000", L"UserModeDriverName", {kPackage + L"nvldumd.dll"});
    TheSystem().files[kPackage + L"nvapi.dll"] = 0;
    TheSystem().files[kPackage + L"wow\\NvApi.dll"] = 0;
    TheSystem().files[kPackage + L"other.dll"] = 0;
    SetValue(L"0000", L"DriverSupportModules", {L"other.dll", L"wow\\NvApi.dll"});
    EXPECT_EQ(Find(), kPackage + L"wow\\NvApi.dll");

    // The list for 32-bit processes comes before the other one.
    TheSystem().files[kPackage + L"x86\\nvapi.dll"] = 0;
    SetValue(L"0000", L"DriverSupportModulesWow", {L"x86\\nvapi.dll"});
    EXPECT_EQ(Find(), kPackage + L"x86\\nvapi.dll");

    // A file that is listed but does not exist is searched beside the driver.
    TheSystem().files.erase(kPackage + L"x86\\nvapi.dll");
    TheSystem().files.erase(kPackage + L"wow\\NvApi.dll");
    EXPECT_EQ(Find(), kPackage + L"nvapi.dll");
}

TEST_F(DriverStore, ModuleMayBeListedByFullPath) {
    SetValue(L"0000", L"UserModeDriverName", {kPackage + L"nvldumd.dll"});
    SetValue(L"0000", L"DriverSupportModules", {kStore + L"extra.inf_1\\nvapi.dll"});
    TheSystem().files[kStore + L"extra.inf_1\\nvapi.dll"] = 0;
    EXPECT_EQ(Find(), kStore + L"extra.inf_1\\nvapi.dll");
}

TEST_F(DriverStore, AdaptersAreSearchedInTheirOrder) {
    TheSystem().subkeys[kClass] = {0, {L"0000", L"0001", L"0002"}};
    SetValue(L"0000", L"UserModeDriverName", {kStore + L"iigd.inf_1\\igd.dll"});
    SetValue(L"0001", L"UserModeDriverName", {kPackage + L"nvldumd.dll"});
    SetValue(L"0002", L"UserModeDriverName", {kStore + L"nv_old.inf_1\\nvldumd.dll"});
    TheSystem().files[kPackage + L"nvapi.dll"] = 0;
    TheSystem().files[kStore + L"nv_old.inf_1\\nvapi.dll"] = 0;
    EXPECT_EQ(Find(), kPackage + L"nvapi.dll");
}

TEST_F(DriverStore, OtherKeysAreNoAdapters) {
    TheSystem().files[kPackage + L"nvapi.dll"] = 0;
    for (wchar_t const* key : {L"Properties", L"Configuration", L"000", L"00000", L"000a", L""}) {
        TheSystem().subkeys[kClass] = {0, {key}};
        SetValue(key, L"UserModeDriverName", {kPackage + L"nvldumd.dll"});
        ExpectNone();
    }
}

TEST_F(DriverStore, FilesOutsideTheStoreDoNotCount) {
    for (std::wstring const directory :
         {L"C:\\Evil\\", L"C:\\Windows\\system32\\", L"", L"..\\", L"\\\\server\\share\\",
          L"C:\\Windows\\system32\\DriverStore\\FileRepository\\..\\..\\..\\Temp\\",
          L"C:\\Windows\\system32\\DriverStore\\FileRepositoryX\\nv\\", L"D:\\C:\\Windows\\system32\\"}) {
        TheSystem().values.clear();
        TheSystem().trace.clear();
        SetValue(L"0000", L"UserModeDriverName", {directory + L"nvldumd.dll"});
        TheSystem().files[directory + L"nvapi.dll"] = 0;
        ExpectNone();
        EXPECT_EQ(TheSystem().TraceOf(L"file"), Trace{});
    }
    TheSystem().values.clear();
    SetValue(L"0000", L"UserModeDriverName", {kPackage + L"nvldumd.dll"});
    for (wchar_t const* module : {L"..\\..\\nvapi.dll", L"C:\\Evil\\nvapi.dll", L"sub/../nvapi.dll"}) {
        SetValue(L"0000", L"DriverSupportModules", {module});
        TheSystem().files[module] = 0;
        TheSystem().files[kPackage + module] = 0;
        ExpectNone();
    }
}

TEST_F(DriverStore, StoreIsComparedWithoutCase) {
    std::wstring const spelled = L"c:\\WINDOWS\\System32\\driverstore\\FILEREPOSITORY\\nv_dispi.inf_amd64_1\\";
    SetValue(L"0000", L"UserModeDriverName", {spelled + L"nvldumd.dll"});
    TheSystem().files[spelled + L"nvapi.dll"] = 0;
    EXPECT_EQ(Find(), spelled + L"nvapi.dll");
}

TEST_F(DriverStore, WithoutTheSystemDirectoryHoldsNothing) {
    TheSystem().systemDirectory.clear();
    SetValue(L"0000", L"UserModeDriverName", {kPackage + L"nvldumd.dll"});
    SetValue(L"0000", L"InfPath", {L"oem7.inf"});
    TheSystem().values[L"SYSTEM\\DriverDatabase\\DriverInfFiles\\oem7.inf\\Active"] = {0, {L"nv_dispi.inf_amd64_1"}};
    TheSystem().files[L"\\DriverStore\\FileRepository\\nv_dispi.inf_amd64_1\\nvapi.dll"] = 0;
    ExpectNone();
}

TEST_F(DriverStore, WhatCannotBeReadIsTold) {
    TheSystem().subkeys[kClass] = {5, {}};
    ExpectNone(5);
    TheSystem().subkeys[kClass] = {0, {L"0000"}};
    TheSystem().values[kClass + L"\\0000\\OpenGLDriverName"] = {1450, {}};
    ExpectNone(1450);
    // The last error is that of the first failure.
    SetValue(L"0000", L"InfPath", {L"oem7.inf"});
    TheSystem().values[L"SYSTEM\\DriverDatabase\\DriverInfFiles\\oem7.inf\\Active"] = {5, {}};
    ExpectNone(5);
}

TEST_F(DriverStore, FileThatCannotBeLookedAtIsTold) {
    SetValue(L"0000", L"UserModeDriverName", {kPackage + L"nvldumd.dll"});
    for (std::uint32_t const absence : {2U, 3U, 123U}) {
        TheSystem().files[kPackage + L"nvapi.dll"] = absence;
        ExpectNone(126);
    }
    TheSystem().files[kPackage + L"nvapi.dll"] = 5;
    ExpectNone(5);
}

TEST_F(DriverStore, FailuresDoNotHideAFileThatIsFound) {
    TheSystem().subkeys[kClass] = {0, {L"0000", L"0001"}};
    TheSystem().values[kClass + L"\\0000\\InfPath"] = {5, {}};
    SetValue(L"0001", L"UserModeDriverName", {kPackage + L"nvldumd.dll"});
    TheSystem().files[kPackage + L"nvapi.dll"] = 0;
    EXPECT_EQ(Find(), kPackage + L"nvapi.dll");
}

}  // namespace
}  // namespace gputune
