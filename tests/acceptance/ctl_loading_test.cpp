// The three functions with behaviour of their own: they load the control library, close it, and say where it is.
#include "ctl_client.h"

namespace gputune::test {
namespace {

// ---- Loading ----

TEST(CtlInit, LoadsTheLibraryFromTheSystemDirectoryAndCallsItsOwn) {
    Machine machine = ControlLibrary();
    machine.Reports(ApiHandle{kIntelApi});
    InitArgs args;
    Handle handle{};
    EXPECT_EQ(machine.Ctl("ctlInit", &args, &handle), 0);
    EXPECT_EQ(handle, kIntelApi);
    ExpectLoads(machine, {kName});
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].entryPoint, "ctlInit");
    EXPECT_EQ(calls[0].args[0], Number(&args)) << "the caller's record";
    EXPECT_EQ(calls[0].args[1], Number(&handle));
    EXPECT_EQ(machine.TakeLog(), Lines{});
    EXPECT_EQ(machine.UnloadCount(), 0);
}

TEST(CtlInit, WithoutTheLibraryIsALoadFailureEachTime) {
    Machine machine(Machine::Library::None);
    EXPECT_EQ(Init(machine), kLoadFailed);
    EXPECT_EQ(Init(machine), kLoadFailed);
    ExpectLoads(machine, {kName, kName});
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 2, 3), kNotInitialized);
    EXPECT_EQ(Close(machine), kNotInitialized);
    EXPECT_EQ(machine.UnloadCount(), 0);
}

TEST(CtlInit, MajorVersionAboveOneIsRefusedBeforeLoading) {
    Machine machine = ControlLibrary();
    for (std::uint32_t const version : {0x00020000U, 0x00020001U, 0x80000000U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(version);
        EXPECT_EQ(Init(machine, InitArgs(version)), kUnsupportedVersion);
    }
    ExpectLoads(machine, {});
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 2, 3), kNotInitialized);
}

TEST(CtlInit, NullRecordIsAFailureThatLoadsNothing) {
    Machine machine = ControlLibrary();
    void* handle = nullptr;
    EXPECT_NE(machine.Ctl("ctlInit", nullptr, &handle), 0);
    EXPECT_NE(machine.Ctl("ctlInit", nullptr, nullptr), 0);
    ExpectLoads(machine, {});
}

TEST(CtlInit, MajorVersionsUpToOneAreAccepted) {
    Machine machine = ControlLibrary();
    for (std::uint32_t const version : {0x0001FFFFU, 0x00000000U, 0x0000FFFFU}) {
        SCOPED_TRACE(version);
        EXPECT_EQ(Init(machine, InitArgs(version)), 0);
        ExpectLoads(machine, {kName});
        EXPECT_EQ(Close(machine), 0);
    }
}

TEST(CtlInit, SecondCallGoesToTheLoadedLibraryWhateverTheVersion) {
    Machine machine = ControlLibrary();
    ASSERT_EQ(Init(machine), 0);
    machine.TakeLoads();
    machine.TakeCalls();
    machine.Then("ctlInit").Result("ctlInit", kFailure);
    EXPECT_EQ(Init(machine, InitArgs(0x00020000)), kFailure);
    ExpectLoads(machine, {});
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit"}));
}

TEST(CtlInit, FailureOfTheLibrarysOwnIsReturnedAndKeepsItLoaded) {
    Machine machine = ControlLibrary();
    machine.Result("ctlInit", kFailure);
    machine.Result("ctlEnumFans", 77);
    EXPECT_EQ(Init(machine), kFailure);
    EXPECT_EQ(machine.UnloadCount(), 0);
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 77);
}

TEST(CtlInit, LibraryWithoutItsOwnIsASuccessOnlyWhenItIsLoaded) {
    Machine machine = ControlLibrary();
    machine.Hide("ctlInit");
    EXPECT_EQ(Init(machine), 0);
    EXPECT_EQ(Init(machine), kNotInitialized);
    ExpectLoads(machine, {kName});
    EXPECT_EQ(Close(machine), 0);
    EXPECT_EQ(Init(machine), 0);
}

// ---- Closing ----

TEST(CtlClose, PassesTheHandleAndUnloads) {
    Machine machine = ControlLibrary();
    ASSERT_EQ(Init(machine), 0);
    machine.TakeCalls();
    EXPECT_EQ(Close(machine, Handle{0x1234}), 0);
    EXPECT_EQ(machine.UnloadCount(), 1);
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(calls[0].entryPoint, "ctlClose");
    EXPECT_EQ(calls[0].HandleArgument(0), Handle{0x1234});

    // Whoever else still has a handle.
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), kNotInitialized);
    EXPECT_EQ(Close(machine), kNotInitialized);
    EXPECT_EQ(machine.UnloadCount(), 1);
    EXPECT_EQ(machine.TakeCallNames(), Lines{});
}

TEST(CtlClose, BeforeInitReachesNothing) {
    Machine machine = ControlLibrary();
    EXPECT_EQ(Close(machine), kNotInitialized);
    ExpectLoads(machine, {});
    EXPECT_EQ(machine.UnloadCount(), 0);
}

TEST(CtlClose, FailureKeepsTheLibraryWorking) {
    Machine machine = ControlLibrary();
    ASSERT_EQ(Init(machine), 0);
    for (int const failure : {kFailure, -1, 1}) {
        machine.Result("ctlClose", failure);
        EXPECT_EQ(Close(machine), failure);
        machine.Then("ctlClose");
    }
    EXPECT_EQ(machine.UnloadCount(), 0);
    machine.Result("ctlWaitForPropertyChange", 5);
    EXPECT_EQ(machine.Ctl("ctlWaitForPropertyChange", 1, 2), 5);
    EXPECT_EQ(Close(machine), 0);
    EXPECT_EQ(machine.UnloadCount(), 1);
}

TEST(CtlClose, LibraryWithoutItsOwnStaysLoaded) {
    Machine machine = ControlLibrary();
    ASSERT_EQ(Init(machine), 0);
    machine.Hide("ctlClose");
    machine.Result("ctlEnumFans", 6);
    EXPECT_EQ(Close(machine), kNotInitialized);
    EXPECT_EQ(machine.UnloadCount(), 0);
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 6);
}

TEST(CtlClose, NextInitLoadsAgain) {
    Machine machine = ControlLibrary();
    machine.Result("ctlEnumFans", 6);
    for (int round = 1; round <= 3; ++round) {
        SCOPED_TRACE(round);
        ASSERT_EQ(Init(machine), 0);
        ExpectLoads(machine, {kName});
        EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 6);
        ASSERT_EQ(Close(machine), 0);
        EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), kNotInitialized);
        EXPECT_EQ(machine.UnloadCount(), round);
    }
}

TEST(CtlClose, WhatTheNextLibraryLacksIsNotRemembered) {
    Machine machine = ControlLibrary();
    ASSERT_EQ(Init(machine), 0);
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 0);
    ASSERT_EQ(Close(machine), 0);
    machine.Hide("ctlEnumFans");
    ASSERT_EQ(Init(machine), 0);
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), kNotInitialized);
    ASSERT_EQ(Close(machine), 0);
    machine.Show("ctlEnumFans");
    machine.Result("ctlEnumFans", 6);
    ASSERT_EQ(Init(machine), 0);
    EXPECT_EQ(machine.Ctl("ctlEnumFans", 1, 0, 0), 6);
}

// ---- The runtime path ----

TEST(CtlSetRuntimePath, BeforeInitIsRememberedForTheLoad) {
    Machine machine = ControlLibrary();
    PathArgs path(L"C:\\Nowhere\\AtAll\\Other.dll");
    EXPECT_EQ(SetPath(machine, path), 0);
    ExpectLoads(machine, {});
    EXPECT_EQ(Init(machine), kLoadFailed);
    // It is still remembered, and the version is not looked at.
    EXPECT_EQ(Init(machine, InitArgs(0x00020000)), kLoadFailed);
    ExpectLoads(machine, {L"C:\\Nowhere\\AtAll\\Other.dll", L"C:\\Nowhere\\AtAll\\Other.dll"});
}

TEST(CtlSetRuntimePath, ReachesTheLoadedLibraryBeforeItsInit) {
    Machine machine = ControlLibrary();
    machine.Result("ctlSetRuntimePath", kFailure);  // ignored
    machine.Result("ctlInit", 3);
    PathArgs path(kName.c_str());
    ASSERT_EQ(SetPath(machine, path), 0);
    EXPECT_EQ(Init(machine, InitArgs(0x00050000)), 3);
    ExpectLoads(machine, {kName});
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].entryPoint, "ctlSetRuntimePath");
    EXPECT_EQ(calls[0].args[0], Number(&path)) << "the caller's record";
    ASSERT_EQ(calls[0].record.size(), sizeof path.words);
    EXPECT_EQ(std::memcmp(calls[0].record.data(), path.words, sizeof path.words), 0);
    EXPECT_EQ(calls[1].entryPoint, "ctlInit");

    // Only a load passes it on.
    EXPECT_EQ(Init(machine), 3);
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit"}));
}

TEST(CtlSetRuntimePath, LibraryWithoutItIsLoadedAllTheSame) {
    Machine machine = ControlLibrary();
    machine.Hide("ctlSetRuntimePath");
    PathArgs path(kName.c_str());
    ASSERT_EQ(SetPath(machine, path), 0);
    EXPECT_EQ(Init(machine), 0);
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit"}));
    EXPECT_EQ(SetPath(machine, path), kNotInitialized);
}

TEST(CtlSetRuntimePath, NullPathBeforeInitIsRefusedAndChangesNothing) {
    Machine machine = ControlLibrary();
    PathArgs none(nullptr);
    EXPECT_EQ(SetPath(machine, none), kNotInitialized);
    EXPECT_EQ(Init(machine), 0);
    ExpectLoads(machine, {kName});
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit"}));
    EXPECT_EQ(Close(machine), 0);

    PathArgs path(L"C:\\Nowhere\\AtAll\\Other.dll");
    ASSERT_EQ(SetPath(machine, path), 0);
    EXPECT_EQ(SetPath(machine, none), kNotInitialized);
    EXPECT_EQ(Init(machine), kLoadFailed);
    ExpectLoads(machine, {L"C:\\Nowhere\\AtAll\\Other.dll"});
}

TEST(CtlSetRuntimePath, NullRecordBeforeInitIsRefused) {
    Machine machine = ControlLibrary();
    EXPECT_EQ(machine.Ctl("ctlSetRuntimePath", nullptr), kNotInitialized);
    EXPECT_EQ(Init(machine), 0);
    ExpectLoads(machine, {kName});
}

TEST(CtlSetRuntimePath, NewestRequestHolds) {
    Machine machine = ControlLibrary();
    PathArgs first(L"C:\\Nowhere\\First.dll");
    PathArgs second(L"C:\\Nowhere\\Second.dll");
    ASSERT_EQ(SetPath(machine, first), 0);
    ASSERT_EQ(SetPath(machine, second), 0);
    EXPECT_EQ(Init(machine), kLoadFailed);
    ExpectLoads(machine, {L"C:\\Nowhere\\Second.dll"});
}

TEST(CtlSetRuntimePath, RecordIsReadAtTheLoadNotCopied) {
    Machine machine = ControlLibrary();
    PathArgs path(L"C:\\Nowhere\\First.dll");
    ASSERT_EQ(SetPath(machine, path), 0);
    path.SetPath(L"C:\\Nowhere\\Second.dll");
    EXPECT_EQ(Init(machine), kLoadFailed);
    ExpectLoads(machine, {L"C:\\Nowhere\\Second.dll"});

    // Without a path in it, it is the library by its name, and the version counts.
    path.SetPath(nullptr);
    EXPECT_EQ(Init(machine, InitArgs(0x00020000)), kUnsupportedVersion);
    ExpectLoads(machine, {});
    EXPECT_EQ(Init(machine), 0);
    ExpectLoads(machine, {kName});
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlSetRuntimePath", "ctlInit"}));
}

// So it has to live on: until a ctlInit has succeeded, or ctlClose was called.
TEST(CtlSetRuntimePath, RecordIsReadByTheBackendAfterAFailedLoad) {
    Machine machine = IntelBoard();
    PathArgs path(L"C:\\Nowhere\\Other.dll");
    ASSERT_EQ(SetPath(machine, path), 0);
    EXPECT_EQ(Init(machine), kLoadFailed);
    path.SetPath(kName.c_str());
    ASSERT_TRUE(machine.Init());
    EXPECT_TRUE(machine.Api().IsInitOk());
    EXPECT_EQ(machine.LastCall("ctlSetRuntimePath").args[0], Number(&path));

    // Loaded, it is read no more; and a close ends it in any case.
    path.SetPath(L"C:\\Nowhere\\Other.dll");
    EXPECT_EQ(Init(machine), 0);
    EXPECT_EQ(Close(machine), 0);
    machine.TakeLoads();
    EXPECT_EQ(Init(machine), 0);
    ExpectLoads(machine, {kName});
}

TEST(CtlSetRuntimePath, IsCutAt511Characters) {
    Machine machine = ControlLibrary();
    for (std::size_t const length : {511U, 512U, 513U, 5000U}) {
        SCOPED_TRACE(length);
        std::wstring text = L"C:\\";
        for (std::size_t index = text.size(); index < length; ++index) {
            text.push_back(static_cast<wchar_t>(L'a' + index % 26));
        }
        PathArgs path(text.c_str());
        ASSERT_EQ(SetPath(machine, path), 0);
        EXPECT_EQ(Init(machine), kLoadFailed);
        ExpectLoads(machine, {text.substr(0, 511)});
    }
}

TEST(CtlSetRuntimePath, CloseForgetsItWhateverComesOfIt) {
    std::wstring const other = L"C:\\Nowhere\\Other.dll";
    Machine machine = ControlLibrary();
    PathArgs path(other.c_str());

    // Not loaded.
    ASSERT_EQ(SetPath(machine, path), 0);
    EXPECT_EQ(Close(machine), kNotInitialized);
    EXPECT_EQ(Init(machine), 0);
    ExpectLoads(machine, {kName});
    EXPECT_EQ(Close(machine), 0);

    // Closed.
    PathArgs same(kName.c_str());
    ASSERT_EQ(SetPath(machine, same), 0);
    ASSERT_EQ(Init(machine), 0);
    EXPECT_EQ(Close(machine), 0);
    machine.TakeCalls();
    machine.TakeLoads();
    EXPECT_EQ(Init(machine, InitArgs(0x00020000)), kUnsupportedVersion);
    EXPECT_EQ(Init(machine), 0);
    EXPECT_EQ(machine.TakeCallNames(), Lines({"ctlInit"}));
    EXPECT_EQ(Close(machine), 0);
}

TEST(CtlSetRuntimePath, WithTheLibraryLoadedIsPassedOn) {
    Machine machine = ControlLibrary();
    ASSERT_EQ(Init(machine), 0);
    machine.TakeCalls();
    machine.Result("ctlSetRuntimePath", kFailure);
    PathArgs path(L"C:\\Nowhere\\Other.dll");
    EXPECT_EQ(SetPath(machine, path), kFailure);
    PathArgs none(nullptr);
    EXPECT_EQ(SetPath(machine, none), kFailure);
    std::vector<Call> const calls = machine.TakeCalls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].args[0], Number(&path));
    EXPECT_EQ(calls[1].args[0], Number(&none));

    // And not remembered.
    EXPECT_EQ(Close(machine), 0);
    machine.TakeLoads();
    EXPECT_EQ(Init(machine), 0);
    ExpectLoads(machine, {kName});
}

}  // namespace
}  // namespace gputune::test
