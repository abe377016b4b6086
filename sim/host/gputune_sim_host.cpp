// The functions of gputune_sim_host.h; gputune_sim.def exports them.
#include <windows.h>

#include <map>
#include <stdexcept>
#include <string>

#include "gputune_sim_host.h"
#include "sim/board/BoardFile.h"
#include "sim/host/SimulatedMachine.h"
#include "sim/host/module_path.h"
#include "sim/standin/error_text.h"

namespace {

using gputune::sim::Board;
using gputune::sim::SimulatedMachine;
using gputune::sim::Vendor;

// The process's machine; null when none is running. Never deleted at the end of the process, when its thread is gone.
SimulatedMachine* g_runningMachine = nullptr;

// The stand-in libraries that this process has loaded so far; they stay.
std::map<Vendor, std::string>& LoadedLibraries() {
    static auto& libraries = *new std::map<Vendor, std::string>;
    return libraries;
}

// The folder of gputune_sim.dll, which stays loaded from now on: the machine has a thread that runs in it.
std::wstring DirectoryOfThisModule() {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                         reinterpret_cast<wchar_t const*>(&g_runningMachine), &module);
    return gputune::sim::ModulePath(module).parent_path();
}

bool IsStandIn(HMODULE module) {
    return ::GetProcAddress(module, "GputuneSim_LoadBoard") != nullptr;
}

// The loader finds a library by its name, and always the one that was loaded first under that name.
void RequireNoOtherLibrary(Board const& board) {
    if (board.vendor == Vendor::None) {
        return;
    }
    HMODULE const present = ::GetModuleHandleA((board.library + ".dll").c_str());
    if (present != nullptr && !IsStandIn(present)) {
        throw std::runtime_error("this process has loaded another " + board.library +
                                 ".dll already; a board must be started before that");
    }
    auto const earlier = LoadedLibraries().find(board.vendor);
    if (earlier != LoadedLibraries().end() && earlier->second != board.library) {
        throw std::runtime_error("the board has the library " + board.library +
                                 ", but an earlier board of this process had " + earlier->second +
                                 ", which stays loaded and would be found as well");
    }
}

// Starts the machine begin(directory) for the board read().
template <class Read, class Begin>
int Start(char const* argument, Read const& read, Begin const& begin, char* error, int errorSize) {
    return gputune::sim::WithErrorText(error, errorSize, [&] {
        if (argument == nullptr) {
            throw std::runtime_error("no board was given");
        }
        if (g_runningMachine != nullptr) {
            throw std::runtime_error("a board is running already; GputuneSim_Stop ends it");
        }
        Board const board = read();
        RequireNoOtherLibrary(board);
        g_runningMachine = new SimulatedMachine(begin(DirectoryOfThisModule()));
        LoadedLibraries().emplace(board.vendor, board.library);
    });
}

// Calls the function of this name in the running board's stand-in; returns 0 without a board that has a stand-in.
template <class Result, class... Args>
Result PassOn(char const* function, Args... args) {
    void* const address = g_runningMachine != nullptr ? g_runningMachine->Symbol(function) : nullptr;
    return address != nullptr ? reinterpret_cast<Result(GPUTUNE_SIM_CALL*)(Args...)>(address)(args...) : Result();
}

}  // namespace

int GputuneSim_Start(const char* boardFile, char* error, int errorSize) {
    return Start(
        boardFile, [&] { return gputune::sim::ReadBoardFile(boardFile); },
        [&](std::wstring const& directory) { return SimulatedMachine::FromFile(boardFile, directory); }, error,
        errorSize);
}

int GputuneSim_StartText(const char* boardJson, char* error, int errorSize) {
    return Start(
        boardJson, [&] { return gputune::sim::ReadBoardText(boardJson, "board"); },
        [&](std::wstring const& directory) { return SimulatedMachine::FromText(boardJson, directory); }, error,
        errorSize);
}

void GputuneSim_Stop(void) {
    delete g_runningMachine;
    g_runningMachine = nullptr;
}

int GputuneSim_SetResult(const char* entryPoint, int result) {
    return PassOn<int>(__func__, entryPoint, result);
}

void GputuneSim_ClearFaults(void) {
    PassOn<void>(__func__);
}

int GputuneSim_HideEntryPoint(const char* entryPoint) {
    return PassOn<int>(__func__, entryPoint);
}

void GputuneSim_Advance(int milliseconds) {
    PassOn<void>(__func__, milliseconds);
}
