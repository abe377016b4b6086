// The question to the system's management data, step by step, against a locator that is told what to answer.
#include <gtest/gtest.h>

#include <objbase.h>
#include <wbemidl.h>

#include <functional>

#include "ImportHook.h"
#include "boards.h"
#include "machine_windows.h"

namespace gputune::test {
namespace {

using sim::WmiCaption;
using sim::WmiRequests;
using sim::WmiStep;

constexpr char kBegin[] = "[GetVendor()] >>>>>>> display devices";
constexpr char kEnd[] = "[GetVendor()] <<<<<<< display devices";
constexpr char kUnknown[] = "[GetVendor()] ... UNKNOWN";

HRESULT Result(unsigned long code) {
    return static_cast<HRESULT>(code);
}

Machine NvidiaMachine() {
    Machine machine(Machine::Library::None);
    machine.Captions({L"NVIDIA GeForce RTX 4070"});
    return machine;
}

// The lines of a detection that finds nothing.
Lines Nothing(Lines lines) {
    lines.insert(lines.end(), {kBegin, kEnd, kUnknown});
    return lines;
}

std::uint32_t Vendor(Machine& machine) {
    return static_cast<std::uint32_t>(machine.Api().GetVendorInfo());
}

// The calling thread has no apartment of its own.
bool ThreadIsWithoutCom() {
    HRESULT const result = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    if (SUCCEEDED(result)) {
        ::CoUninitialize();
    }
    return result == S_OK;
}

TEST(Wmi, AsksForTheVideoControllersOneAtATime) {
    Machine machine(Machine::Library::None);
    machine.Captions({L"First", L"NVIDIA GeForce RTX 4070", L"Third"});
    Wmi().ClearRequests();
    machine.Init();

    WmiRequests const asked = Wmi().Requests();
    EXPECT_EQ(asked.createCount, 1);
    EXPECT_EQ(asked.connectCount, 1);
    EXPECT_EQ(asked.nameSpace, L"root\\CIMV2");
    EXPECT_FALSE(asked.connectWithExtras);

    EXPECT_EQ(asked.blanketCount, 1);
    EXPECT_EQ(asked.authenticationService, 10U);
    EXPECT_EQ(asked.authorizationService, 0U);
    EXPECT_FALSE(asked.principalNameGiven);
    EXPECT_EQ(asked.authenticationLevel, 3U);
    EXPECT_EQ(asked.impersonationLevel, 3U);
    EXPECT_FALSE(asked.identityGiven);
    EXPECT_EQ(asked.blanketCapabilities, 0U);

    EXPECT_EQ(asked.queryCount, 1);
    EXPECT_EQ(asked.language, L"WQL");
    EXPECT_EQ(asked.query, L"SELECT * FROM Win32_VideoController");
    EXPECT_EQ(asked.queryFlags, 0x30);

    EXPECT_EQ(asked.nextCount, 4);
    EXPECT_EQ(asked.nextTimeout, -1);
    EXPECT_EQ(asked.nextWanted, 1U);
    EXPECT_EQ(asked.getCount, 3);
    EXPECT_EQ(asked.property, L"Caption");
    EXPECT_EQ(asked.getFlags, 0);

    EXPECT_EQ(Vendor(machine), 3U);
    EXPECT_EQ(DetectionOf(machine.TakeLog()),
              Lines({kBegin, "First", "NVIDIA GeForce RTX 4070", "Third", kEnd, "[GetVendor()] ... NVIDIA"}));
    EXPECT_EQ(Wmi().LiveObjects(), 0);
    EXPECT_TRUE(ThreadIsWithoutCom());
}

TEST(Wmi, IsAskedOncePerStart) {
    Machine machine = NvidiaMachine();
    machine.Init();
    machine.Init();
    machine.Init();
    EXPECT_EQ(Wmi().Requests().queryCount, 3);
    EXPECT_EQ(Wmi().LiveObjects(), 0);
}

TEST(Wmi, EachFailingStepIsLoggedWithTheLastErrorCode) {
    struct Row {
        WmiStep step;
        HRESULT result;
        DWORD lastError;
        Lines lines;
        // Steps that are reached: create, connect, blanket, query, next.
        int reached;
    };
    std::string const tag = "[GetWmiData()] ";
    Row const rows[] = {
        {WmiStep::CreateInstance, E_FAIL, 1001, {tag + "CoCreateInstance ... failed: 1001"}, 1},
        {WmiStep::CreateInstance, E_OUTOFMEMORY, 4294967295, {tag + "CoCreateInstance ... failed: 4294967295"}, 1},
        {WmiStep::ConnectServer, Result(0x80041003), 1002, {tag + "ConnectServer ... failed: 1002"}, 2},
        {WmiStep::ConnectServer, E_ACCESSDENIED, 0, {tag + "ConnectServer ... failed: 0"}, 2},
        {WmiStep::SetBlanket, E_INVALIDARG, 1003, {tag + "CoSetProxyBlanket ... failed: 1003"}, 3},
        {WmiStep::SetBlanket, E_NOINTERFACE, 5, {tag + "CoSetProxyBlanket ... failed: 5"}, 3},
        {WmiStep::ExecQuery, Result(0x80041017), 1004, {tag + "ExecQuery ... failed: 1004"}, 4},
        {WmiStep::ExecQuery, E_FAIL, 2147483648U, {tag + "ExecQuery ... failed: 2147483648"}, 4},
        // The end of the list is what it looks like; no entry.
        {WmiStep::Next, Result(0x80041032), 1005, {}, 5},
        {WmiStep::Next, E_FAIL, 1006, {}, 5},
    };
    Machine machine = NvidiaMachine();
    for (Row const& row : rows) {
        SCOPED_TRACE(row.lines.empty() ? "Next" : row.lines[0]);
        Wmi().ClearFailures();
        Wmi().ClearRequests();
        Wmi().Fail(row.step, row.result, row.lastError);

        EXPECT_FALSE(machine.Init());
        EXPECT_EQ(machine.Api().GetVendorInfo(), 0U);
        EXPECT_EQ(machine.TakeLog(), Nothing(row.lines));

        WmiRequests const asked = Wmi().Requests();
        EXPECT_EQ(asked.createCount, 1);
        EXPECT_EQ(asked.connectCount, row.reached >= 2 ? 1 : 0);
        EXPECT_EQ(asked.blanketCount, row.reached >= 3 ? 1 : 0);
        EXPECT_EQ(asked.queryCount, row.reached >= 4 ? 1 : 0);
        EXPECT_EQ(asked.nextCount, row.reached >= 5 ? 1 : 0);
        EXPECT_EQ(asked.getCount, 0);
        EXPECT_EQ(Wmi().LiveObjects(), 0);
        EXPECT_TRUE(ThreadIsWithoutCom());
    }
    // Nothing of it lasts.
    Wmi().ClearFailures();
    machine.Init();
    EXPECT_EQ(Vendor(machine), 3U);
}

TEST(Wmi, ControllersWhoseCaptionCannotBeReadAreSkipped) {
    Machine machine = NvidiaMachine();
    Wmi().Fail(WmiStep::Get, Result(0x80041002), 1007);
    EXPECT_FALSE(machine.Init());
    EXPECT_EQ(machine.TakeLog(), Nothing({}));
    EXPECT_EQ(Wmi().Requests().getCount, 1);
    EXPECT_EQ(Wmi().Requests().nextCount, 2);
    EXPECT_EQ(Wmi().LiveObjects(), 0);
}

TEST(Wmi, ControllersWithoutATextAsCaptionAreSkipped) {
    Machine machine = NvidiaMachine();
    machine.Init();
    machine.TakeLog();
    Wmi().SetCaptions({{WmiCaption::Kind::Null, L""},
                       {WmiCaption::Kind::Number, L""},
                       {WmiCaption::Kind::Text, L"Intel(R) Arc(TM) A770 Graphics"},
                       {WmiCaption::Kind::Null, L""}});
    // Not through the machine, which would install its own captions again.
    machine.Api().InitVGAHelper(GPUTUNE_LOG_FILE);
    EXPECT_EQ(Vendor(machine), 2U);
    EXPECT_EQ(DetectionOf(machine.TakeLog()),
              Lines({kBegin, "Intel(R) Arc(TM) A770 Graphics", kEnd, "[GetVendor()] ... INTEL"}));
    EXPECT_EQ(Wmi().LiveObjects(), 0);
}

TEST(Wmi, CaptionsAreLoggedInTheAnsiCodePage) {
    std::string accent;
    switch (::GetACP()) {
        case 1252:
            accent = "\xE9";
            break;
        case CP_UTF8:
            accent = "\xC3\xA9";
            break;
        default:
            GTEST_SKIP() << "nothing is known of code page " << ::GetACP();
    }
    Machine machine(Machine::Library::None);
    machine.Captions({L"Carte vid\x00E9o NVIDIA"});
    machine.Init();
    EXPECT_EQ(Vendor(machine), 3U);
    EXPECT_EQ(DetectionOf(machine.TakeLog()),
              Lines({kBegin, "Carte vid" + accent + "o NVIDIA", kEnd, "[GetVendor()] ... NVIDIA"}));
}

TEST(Wmi, CaptionThatTheCodePageLacksStillDecides) {
    Machine machine(Machine::Library::None);
    machine.Captions({L"\x663E\x5361 nvidia \x30AB", L"Other"});
    machine.Init();
    EXPECT_EQ(Vendor(machine), 3U);
    Lines const lines = DetectionOf(machine.TakeLog());
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_NE(lines[1].find(" nvidia "), std::string::npos);
    EXPECT_EQ(lines[2], "Other");
}

// ---- The thread's apartment ----

TEST(Wmi, ThreadOfASingleThreadedApartmentWorksAndStaysThat) {
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    Machine machine = NvidiaMachine();
    machine.Init();
    EXPECT_EQ(Vendor(machine), 3U);
    EXPECT_EQ(DetectionOf(machine.TakeLog()),
              Lines({"[GetWmiData()] CoInitializeEx ... CoInitializeEx initialized as different mode beforehand, skip "
                     "uninitialize after using",
                     kBegin, "NVIDIA GeForce RTX 4070", kEnd, "[GetVendor()] ... NVIDIA"}));
    EXPECT_EQ(Wmi().LiveObjects(), 0);
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    ASSERT_EQ(::CoGetApartmentType(&type, &qualifier), S_OK);
    EXPECT_TRUE(type == APTTYPE_STA || type == APTTYPE_MAINSTA);
    // Not once too often either: the apartment is still entered, once.
    EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
    ::CoUninitialize();
}

TEST(Wmi, ThreadOfTheMultithreadedApartmentStaysThat) {
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    Machine machine = NvidiaMachine();
    machine.Init();
    EXPECT_EQ(Vendor(machine), 3U);
    EXPECT_EQ(machine.TakeLog().front(), kBegin);
    EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
    ::CoUninitialize();
    EXPECT_TRUE(ThreadIsWithoutCom());
}

// ---- COM itself ----

struct ComCalls {
    int initialize = 0;
    int uninitialize = 0;
    int security = 0;
    bool initializeAsExpected = false;
    bool securityAsExpected = false;
    bool createAsExpected = false;
    HRESULT initializeResult = S_OK;
    HRESULT securityResult = S_OK;
};
ComCalls g_com;

HRESULT WINAPI InitializeCom(void* reserved, DWORD model) {
    ++g_com.initialize;
    g_com.initializeAsExpected = reserved == nullptr && model == COINIT_MULTITHREADED;
    return g_com.initializeResult == S_OK ? ::CoInitializeEx(reserved, model) : g_com.initializeResult;
}

void WINAPI UninitializeCom() {
    ++g_com.uninitialize;
    if (g_com.initializeResult == S_OK) {
        ::CoUninitialize();
    }
}

HRESULT WINAPI InitializeSecurity(void* descriptor, LONG services, void* service, void* reserved1, DWORD level,
                                  DWORD impersonation, void* list, DWORD capabilities, void* reserved3) {
    ++g_com.security;
    constexpr DWORD kDefault = 0;
    constexpr DWORD kImpersonate = 3;
    g_com.securityAsExpected = descriptor == nullptr && services == -1 && service == nullptr && reserved1 == nullptr &&
                               level == kDefault && impersonation == kImpersonate && list == nullptr &&
                               capabilities == 0 && reserved3 == nullptr;
    return g_com.securityResult;
}

HRESULT WINAPI CreateInstance(REFCLSID classId, IUnknown* outer, DWORD context, REFIID id, void** out) {
    g_com.createAsExpected = IsEqualCLSID(classId, CLSID_WbemLocator) && outer == nullptr &&
                             context == CLSCTX_INPROC_SERVER && IsEqualIID(id, IID_IWbemLocator);
    return ::CoCreateInstance(classId, outer, context, id, out);
}

class WmiCom : public testing::Test {
protected:
    WmiCom() {
        g_com = {};
        machine_.Api();
    }

    Machine machine_ = NvidiaMachine();
    ImportHook initialize_{"CoInitializeEx", &InitializeCom};
    ImportHook uninitialize_{"CoUninitialize", &UninitializeCom};
    ImportHook security_{"CoInitializeSecurity", &InitializeSecurity};
    ImportHook create_{"CoCreateInstance", &CreateInstance};
};

TEST_F(WmiCom, IsEnteredAndLeftOnce) {
    machine_.Init();
    EXPECT_EQ(Vendor(machine_), 3U);
    EXPECT_EQ(g_com.initialize, 1);
    EXPECT_TRUE(g_com.initializeAsExpected);
    EXPECT_EQ(g_com.security, 1);
    EXPECT_TRUE(g_com.securityAsExpected);
    EXPECT_TRUE(g_com.createAsExpected);
    EXPECT_EQ(g_com.uninitialize, 1);
}

TEST_F(WmiCom, ThatAThreadHasEnteredBeforeIsLeftOnceAsWell) {
    g_com.initializeResult = S_FALSE;
    machine_.Init();
    EXPECT_EQ(Vendor(machine_), 3U);
    EXPECT_EQ(g_com.uninitialize, 1);
}

TEST_F(WmiCom, ThatCannotBeEnteredEndsTheQuestion) {
    for (HRESULT const result : {E_OUTOFMEMORY, E_INVALIDARG, E_FAIL}) {
        g_com = {};
        g_com.initializeResult = result;
        EXPECT_FALSE(machine_.Init());
        EXPECT_EQ(machine_.Api().GetVendorInfo(), 0U);
        EXPECT_EQ(machine_.TakeLog(),
                  Nothing({"[GetWmiData()] CoInitializeEx ... failed: FAILED(hres) && (hres != RPC_E_CHANGED_MODE)"}));
        EXPECT_EQ(g_com.security, 0);
        EXPECT_EQ(g_com.uninitialize, 0);
        EXPECT_EQ(Wmi().Requests().createCount, 0);
    }
}

TEST_F(WmiCom, SecurityThatTheHostHasSetServesAsWell) {
    g_com.securityResult = RPC_E_TOO_LATE;
    machine_.Init();
    EXPECT_EQ(Vendor(machine_), 3U);
    EXPECT_EQ(DetectionOf(machine_.TakeLog()),
              Lines({"[GetWmiData()] CoInitializeSecurity ... failed: RPC_E_TOO_LATE",
                     "[GetWmiData()] CoInitializeSecurity ... Ignore RPC_E_TOO_LATE, continue...", kBegin,
                     "NVIDIA GeForce RTX 4070", kEnd, "[GetVendor()] ... NVIDIA"}));
    EXPECT_EQ(g_com.uninitialize, 1);
}

TEST_F(WmiCom, SecurityThatFailsEndsTheQuestion) {
    struct Row {
        HRESULT result;
        std::string message;
    };
    for (auto const& [result, message] :
         {Row{RPC_E_NO_GOOD_SECURITY_PACKAGES, "failed: RPC_E_NO_GOOD_SECURITY_PACKAGES"},
          Row{E_FAIL, "failed: something else"}, Row{E_OUTOFMEMORY, "failed: something else"}}) {
        g_com = {};
        g_com.securityResult = result;
        EXPECT_FALSE(machine_.Init());
        EXPECT_EQ(machine_.Api().GetVendorInfo(), 0U);
        EXPECT_EQ(machine_.TakeLog(), Nothing({"[GetWmiData()] CoInitializeSecurity ... " + message}));
        EXPECT_EQ(g_com.uninitialize, 1);
        EXPECT_EQ(Wmi().Requests().createCount, 0);
    }
}

TEST_F(WmiCom, IsLeftOnceAfterEveryFailingStep) {
    for (WmiStep const step : {WmiStep::CreateInstance, WmiStep::ConnectServer, WmiStep::SetBlanket, WmiStep::ExecQuery,
                               WmiStep::Next, WmiStep::Get}) {
        SCOPED_TRACE(static_cast<int>(step));
        g_com = {};
        Wmi().ClearFailures();
        Wmi().Fail(step, E_FAIL, 1);
        EXPECT_FALSE(machine_.Init());
        EXPECT_EQ(g_com.initialize, 1);
        EXPECT_EQ(g_com.uninitialize, 1);
        EXPECT_EQ(Wmi().LiveObjects(), 0);
    }
}

}  // namespace
}  // namespace gputune::test
