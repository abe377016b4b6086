// The functions of gputune_sim_host.h; gputune_sim.def exports them.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <map>
#include <stdexcept>
#include <string>

#include "gputune_sim_host.h"
#include "sim/board/BoardFile.h"
#include "sim/host/SimulatedMachine.h"

namespace {

using gputune::sim::Board;
using gputune::sim::SimulatedMachine;
using gputune::sim::Vendor;

// The process's machine; null when none is running. Left behind at the end of the process: its thread is gone by then.
SimulatedMachine* runningMachine = nullptr;

// The stand-in libraries that this process has loaded so far; they stay.
std::map<Vendor, std::string>& LoadedLibraries() {
    static auto& libraries = *new std::map<Vendor, std::string>;
    return libraries;
}

HMODULE ModuleOfThisCode() {
    HMODULE module = nullptr;
    // Never unloaded: the machine has a thread that runs in here.
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                         reinterpret_cast<wchar_t const*>(&runningMachine), &module);
    return module;
}

std::wstring DirectoryOfThisCode() {
    HMODULE const module = ModuleOfThisCode();
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        DWORD const length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size()) {
            path.resize(length);
            return path.substr(0, path.find_last_of(L"\\/"));
        }
        path.resize(path.size() * 2);
    }
}

bool IsStandIn(HMODULE module) {
    return ::GetProcAddress(module, "GputuneSim_LoadBoard") != nullptr;
}

// A library is found by its name, and what was loaded first under a name stays the one that is found.
void RequireLibraryCanBeStoodInFor(Board const& board) {
    if (board.vendor == Vendor::None) {
        return;
    }
    HMODULE const present = ::GetModuleHandleA((board.library + ".dll").c_str());
    if (present && !IsStandIn(present)) {
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

template <class Read, class Begin>
int Start(char const* argument, Read const& read, Begin const& begin, char* error, int errorSize) {
    try {
        if (!argument) {
            throw std::runtime_error("no board was given");
        }
        if (runningMachine) {
            throw std::runtime_error("a board is running already; GputuneSim_Stop ends it");
        }
        Board const board = read();
        RequireLibraryCanBeStoodInFor(board);
        runningMachine = new SimulatedMachine(begin(DirectoryOfThisCode()));
        LoadedLibraries().emplace(board.vendor, board.library);
        return 1;
    } catch (std::exception const& failure) {
        if (error && errorSize > 0) {
            std::size_t const length = std::min(std::strlen(failure.what()), static_cast<std::size_t>(errorSize) - 1);
            std::memcpy(error, failure.what(), length);
            error[length] = '\0';
        }
        return 0;
    }
}

// A function of the running board's stand-in, which has it under the same name; null without a board that has one.
template <class Function>
Function* OfTheStandIn(char const* name) {
    return reinterpret_cast<Function*>(runningMachine ? runningMachine->Symbol(name) : nullptr);
}
#define OF_THE_STAND_IN(function) OfTheStandIn<decltype(function)>(#function)

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
    delete runningMachine;
    runningMachine = nullptr;
}

int GputuneSim_SetResult(const char* entryPoint, int result) {
    auto* const passOn = OF_THE_STAND_IN(GputuneSim_SetResult);
    return passOn ? passOn(entryPoint, result) : 0;
}

void GputuneSim_ClearFaults(void) {
    if (auto* const passOn = OF_THE_STAND_IN(GputuneSim_ClearFaults)) {
        passOn();
    }
}

int GputuneSim_HideEntryPoint(const char* entryPoint) {
    auto* const passOn = OF_THE_STAND_IN(GputuneSim_HideEntryPoint);
    return passOn ? passOn(entryPoint) : 0;
}

void GputuneSim_Advance(int milliseconds) {
    if (auto* const passOn = OF_THE_STAND_IN(GputuneSim_Advance)) {
        passOn(milliseconds);
    }
}
