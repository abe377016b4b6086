#include "HoldRun.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <mutex>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

namespace gputune::test {

namespace {

using Json = nlohmann::json;

std::string Text(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Json FaultsOf(Cell const& cell) {
    Json atCall = {{"entryPoint", cell.step.entryPoint}, {"call", cell.step.call}};
    Json later = {{"from", kFaultBegins}};
    switch (cell.strike) {
        case Strike::Crash:
            atCall["crash"] = true;
            return Json::array({atCall});
        case Strike::Fail:
            atCall["result"] = -1;
            return Json::array({atCall});
        case Strike::Forget:
            atCall["forget"] = "everything";
            return Json::array({atCall});
        case Strike::Absent:
            later["entryPoint"] = cell.step.entryPoint;
            later["result"] = -1;
            return Json::array({later});
        case Strike::Implausible:
            later["entryPoint"] = cell.step.entryPoint;
            later["garbage"] = "extreme-values";
            return Json::array({later});
        case Strike::Stuck:
            later["stuck"] = "temperature";
            return Json::array({later});
        case Strike::Drop:
            return Json::array({{{"entryPoint", cell.step.entryPoint}, {"forget", "other-settings"}}});
        default:
            break;
    }
    Json faults = Json::array({{{"forget", "everything"}, {"from", kFaultBegins}}});
    for (std::string const& entryPoint : cell.entryPoints) {
        faults.push_back({{"entryPoint", entryPoint}, {"result", -1}, {"from", kFaultBegins}, {"until", kFaultEnds}});
    }
    return faults;
}

// The board, with readings that never change, so that every run makes the same calls; a stuck sensor needs a load that
// rises.
void WriteBoard(std::filesystem::path const& from, std::filesystem::path const& to, Cell const* cell) {
    Json board = Json::parse(Text(from));
    if (cell != nullptr && cell->strike == Strike::Stuck) {
        board["model"]["load"] = {{{"seconds", 40}, {"percent", 5}}, {{"seconds", 1000}, {"percent", 100}}};
    } else {
        board["model"] = {{"fixed", true},
                          {"readings",
                           {{"temperature", 65},
                            {"hotspotTemperature", 70},
                            {"memoryTemperature", 66},
                            {"load", 60},
                            {"fanRpm", 1500},
                            {"fanPercent", 50},
                            {"engineClock", 1200},
                            {"memoryClock", 1900}}}};
    }
    if (cell != nullptr && cell->IsFault()) {
        board["faults"] = FaultsOf(*cell);
    }
    std::ofstream(to, std::ios::binary) << board;
}

bool IsRunning(HandleOwner const& process) {
    return process.Get() != nullptr && WaitForSingleObject(process.Get(), 0) == WAIT_TIMEOUT;
}

void End(HandleOwner const& process) {
    constexpr DWORD kPatience = 60000;
    if (process.Get() != nullptr) {
        TerminateProcess(process.Get(), 99);
        WaitForSingleObject(process.Get(), kPatience);
    }
}

// name: "NtSuspendProcess" or "NtResumeProcess".
void Tell(HandleOwner const& process, char const* name) {
    using Function = LONG(WINAPI*)(HANDLE);
    auto const tell =
        reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
    tell(process.Get());
}

std::wstring Wide(std::string const& ascii) {
    return {ascii.begin(), ascii.end()};
}

}  // namespace

HoldRun::HoldRun(std::filesystem::path const& tool, std::filesystem::path const& boards,
                 std::filesystem::path const& folder, std::string const& board, Cell const* cell)
    : tool_(tool),
      folder_(folder),
      name_("gputune-kill-" + std::to_string(GetCurrentProcessId()) + "-" + folder.filename().string()) {
    std::filesystem::create_directories(folder_);
    WriteBoard(boards / (board + ".json"), folder_ / "board.json", cell);
    board_ = std::make_unique<HeldBoard>((folder_ / "board.json").string(), (folder_ / "board.state").string());
    reached_ = HandleOwner(CreateEventA(nullptr, TRUE, FALSE, (name_ + "-reached").c_str()));
    go_ = HandleOwner(CreateEventA(nullptr, TRUE, FALSE, (name_ + "-go").c_str()));
    environment_ = {L"GPUTUNE_STATE_DIRECTORY=" + (folder_ / "journals").wstring(),
                    L"GPUTUNE_SIM_TRACE=" + (folder_ / "trace.txt").wstring()};
    if (cell != nullptr && cell->HasStep()) {
        environment_.push_back(L"GPUTUNE_SIM_PAUSE=" + std::wstring(cell->before ? L"before " : L"after ") +
                               std::to_wstring(cell->step.call) + L" " + Wide(cell->step.entryPoint) + L" " +
                               Wide(name_));
    }
    supervisor_ = Start(L"--simulate \"" + (folder_ / "board.json").wstring() + L"\" --board-state \"" +
                            (folder_ / "board.state").wstring() +
                            L"\" --yes hold --fan 40:30 60:50 80:100 --power 5 --interval 0.2",
                        L"hold.txt");
}

HoldRun::~HoldRun() {
    End(supervisor_);
    Continue();
    End(worker_);
    FindWorker();
    End(worker_);
}

HandleOwner HoldRun::Start(std::wstring const& arguments, std::wstring const& output) const {
    std::wstring environment;
    for (std::wstring const& variable : environment_) {
        environment += variable + L'\0';
    }
    wchar_t* const own = GetEnvironmentStringsW();
    for (wchar_t const* variable = own; *variable != L'\0'; variable += wcslen(variable) + 1) {
        environment += variable;
        environment += L'\0';
    }
    FreeEnvironmentStringsW(own);
    environment += L'\0';

    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HandleOwner const file(CreateFileW((folder_ / output).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited,
                                       CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    HandleOwner const nothing(CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                          OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = nothing.Get();
    startup.hStdOutput = file.Get();
    startup.hStdError = file.Get();
    PROCESS_INFORMATION process{};
    std::wstring line = L"\"" + tool_.wstring() + L"\" " + arguments;
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW | CREATE_UNICODE_ENVIRONMENT,
                       environment.data(), nullptr, &startup, &process) == 0) {
        return HandleOwner();
    }
    CloseHandle(process.hThread);
    return HandleOwner(process.hProcess);
}

bool HoldRun::Eventually(std::function<bool()> const& condition, unsigned long milliseconds) {
    constexpr DWORD kLookAgain = 15;
    for (ULONGLONG const end = GetTickCount64() + milliseconds;;) {
        if (condition()) {
            return true;
        }
        if (GetTickCount64() >= end) {
            return false;
        }
        Sleep(kLookAgain);
    }
}

bool HoldRun::WaitUntilStep() {
    bool const reached =
        Eventually([this] { return WaitForSingleObject(reached_.Get(), 0) == WAIT_OBJECT_0 || !SupervisorRuns(); });
    FindWorker();
    return reached && WaitForSingleObject(reached_.Get(), 0) == WAIT_OBJECT_0 && worker_.Get() != nullptr;
}

bool HoldRun::WaitUntilHeld() {
    return Eventually([this] { return !IsAutomatic(); });
}

bool HoldRun::WaitUntilSupervisorEnded() {
    return Eventually([this] { return !SupervisorRuns(); });
}

void HoldRun::FindWorker() {
    auto const trace = Trace();
    if (trace.empty() || trace.back().process == workerId_) {
        return;
    }
    workerId_ = trace.back().process;
    worker_ = HandleOwner(OpenProcess(PROCESS_ALL_ACCESS, FALSE, workerId_));
}

void HoldRun::KillWorker() {
    End(worker_);
}
void HoldRun::KillSupervisor() {
    End(supervisor_);
}
void HoldRun::SuspendWorker() {
    Tell(worker_, "NtSuspendProcess");
}
void HoldRun::SuspendSupervisor() {
    Tell(supervisor_, "NtSuspendProcess");
}
void HoldRun::StandStill(unsigned long milliseconds) {
    FindWorker();
    SuspendSupervisor();
    SuspendWorker();
    Sleep(milliseconds);
    Tell(worker_, "NtResumeProcess");
    Tell(supervisor_, "NtResumeProcess");
}
void HoldRun::Continue() {
    SetEvent(go_.Get());
}
void HoldRun::Interrupt() {
    // A process has one console at a time, and every run has its own.
    static std::mutex one;
    std::lock_guard const guard(one);
    FreeConsole();
    if (Eventually([this] { return AttachConsole(GetProcessId(supervisor_.Get())) != 0; })) {
        GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
        FreeConsole();
    }
}

bool HoldRun::Restore() {
    HandleOwner const restore = Start(L"restore", L"restore.txt");
    DWORD code = 1;
    return Eventually([&] { return !IsRunning(restore); }) && GetExitCodeProcess(restore.Get(), &code) != 0 &&
           code == 0;
}

bool HoldRun::IsAutomatic() const {
    return Look().isAutomatic;
}
BoardView HoldRun::Look() const {
    return board_->Look().value_or(BoardView());
}
bool HoldRun::HasSaid(std::string const& text) const {
    return Text(folder_ / "hold.txt").find(text) != std::string::npos;
}
bool HoldRun::SupervisorRuns() const {
    return IsRunning(supervisor_);
}
bool HoldRun::WorkerRuns() const {
    return IsRunning(worker_);
}

bool HoldRun::AnotherWorkerHolds() const {
    auto const trace = Trace();
    return !IsAutomatic() && !trace.empty() && trace.back().process != workerId_;
}

std::vector<HoldRun::Call> HoldRun::Trace() const {
    std::istringstream lines(Text(folder_ / "trace.txt"));
    std::vector<Call> calls;
    Call call{};
    while (lines >> call.process >> call.entryPoint) {
        calls.push_back(call);
    }
    return calls;
}

std::vector<std::string> HoldRun::Calls() const {
    std::vector<std::string> names;
    for (Call const& call : Trace()) {
        names.push_back(call.entryPoint);
    }
    return names;
}

std::string HoldRun::Output() const {
    constexpr std::size_t kEnough = 2000;
    std::string const text = Text(folder_ / "hold.txt");
    return text.substr(text.size() - std::min(text.size(), kEnough)) + Text(folder_ / "restore.txt");
}

}  // namespace gputune::test
