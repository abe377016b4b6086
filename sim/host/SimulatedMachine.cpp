#include "sim/host/SimulatedMachine.h"

#include <windows.h>

#include <stdexcept>
#include <utility>
#include <vector>

#include "gputune_sim.h"
#include "sim/board/BoardFile.h"
#include "sim/standin/wide_text.h"

namespace gputune::sim {

namespace {

std::vector<WmiCaption> ToCaptions(Board const& board) {
    std::vector<WmiCaption> captions;
    for (auto const& caption : board.captions) {
        captions.push_back(caption ? WmiCaption{.kind = WmiCaption::Kind::Text, .text = ToWide(*caption)}
                                   : WmiCaption{.kind = WmiCaption::Kind::Null, .text = {}});
    }
    return captions;
}

// The folder of a vendor's stand-ins; null when the machine has none.
wchar_t const* VendorFolder(Vendor vendor) {
    switch (vendor) {
        case Vendor::None:
            break;
        case Vendor::Amd:
            return L"amd";
        case Vendor::Intel:
            return L"intel";
        case Vendor::Nvidia:
            return L"nvidia";
    }
    return nullptr;
}

// By full path. From then on, the loader finds this module by its base name, wherever another of that name may be.
HMODULE LoadStandIn(Board const& board, std::wstring const& simDirectory) {
    std::wstring const path =
        simDirectory + L"\\" + VendorFolder(board.vendor) + L"\\" + ToWide(board.library) + L".dll";
    HMODULE const module = ::LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (module == nullptr) {
        throw std::runtime_error(FromWide(path, CP_UTF8) + ": the stand-in library cannot be loaded (error " +
                                 std::to_string(::GetLastError()) + ")");
    }
    return module;
}

// name: a function of the stand-in that takes a text, and has a message for what is wrong with it.
void Call(HMODULE module, char const* name, std::string const& argument) {
    constexpr int kErrorSize = 1024;
    auto* const function =
        reinterpret_cast<decltype(&GputuneSim_LoadBoard)>(reinterpret_cast<void*>(::GetProcAddress(module, name)));
    if (function == nullptr) {
        throw std::runtime_error(std::string("the stand-in library has no ") + name + "; it is another vendor's own");
    }
    char error[kErrorSize] = "";
    if (function(argument.c_str(), error, kErrorSize) == 0) {
        throw std::runtime_error(error);
    }
}

}  // namespace

// load: the stand-in's function that loads the board, which takes the argument.
SimulatedMachine::SimulatedMachine(Board const& board, std::wstring const& simDirectory, char const* load,
                                   std::string const& argument) {
    wmi_->SetCaptions(ToCaptions(board));
    if (board.vendor != Vendor::None) {
        library_ = LoadStandIn(board, simDirectory);
        Call(library_, load, argument);
    }
}

SimulatedMachine SimulatedMachine::FromFile(std::string const& boardFile, std::wstring const& simDirectory) {
    return {ReadBoardFile(boardFile), simDirectory, "GputuneSim_LoadBoard", boardFile};
}

SimulatedMachine SimulatedMachine::FromText(std::string const& boardJson, std::wstring const& simDirectory) {
    return {ReadBoardText(boardJson, "board"), simDirectory, "GputuneSim_LoadBoardText", boardJson};
}

void SimulatedMachine::KeepState(std::string const& stateFile) const {
    if (library_ != nullptr) {
        Call(library_, "GputuneSim_KeepState", stateFile);
    }
}

void* SimulatedMachine::Symbol(char const* name) const {
    return library_ != nullptr ? reinterpret_cast<void*>(::GetProcAddress(library_, name)) : nullptr;
}

}  // namespace gputune::sim
