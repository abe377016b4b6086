#include "sim/host/SimulatedMachine.h"

#include <windows.h>

#include <stdexcept>
#include <utility>
#include <vector>

#include "sim/board/BoardFile.h"
#include "sim/standin/utf8.h"
#include "sim/wmi/WmiStandIn.h"

namespace gputune::sim {

namespace {

std::string ToUtf8(std::wstring const& wide) {
    int const size = static_cast<int>(wide.size());
    int const length = ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(length), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(), length, nullptr, nullptr);
    return utf8;
}

std::vector<WmiCaption> ToCaptions(Board const& board) {
    std::vector<WmiCaption> captions;
    for (auto const& caption : board.captions) {
        captions.push_back(caption ? WmiCaption{.kind = WmiCaption::Kind::Text, .text = Utf8ToWide(*caption)}
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

// By full path. The loader then gives this module for its base name, wherever else one of that name may lie.
HMODULE LoadStandIn(Board const& board, std::wstring const& simDirectory) {
    std::wstring const path =
        simDirectory + L"\\" + VendorFolder(board.vendor) + L"\\" + Utf8ToWide(board.library) + L".dll";
    HMODULE const module = ::LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!module) {
        throw std::runtime_error(ToUtf8(path) + ": the stand-in library cannot be loaded (error " +
                                 std::to_string(::GetLastError()) + ")");
    }
    return module;
}

// load: "GputuneSim_LoadBoard" or "GputuneSim_LoadBoardText".
void LoadBoard(HMODULE module, char const* load, std::string const& argument) {
    constexpr int kErrorSize = 1024;
    auto* const function =
        reinterpret_cast<decltype(&GputuneSim_LoadBoard)>(reinterpret_cast<void*>(::GetProcAddress(module, load)));
    if (!function) {
        throw std::runtime_error(std::string("the stand-in library has no ") + load + "; it is another vendor's own");
    }
    char error[kErrorSize] = "";
    if (!function(argument.c_str(), error, kErrorSize)) {
        throw std::runtime_error(error);
    }
}

}  // namespace

struct SimulatedMachine::State {
    WmiStandIn wmi;
    HMODULE library = nullptr;

    State(Board const& board, std::wstring const& simDirectory, char const* load, std::string const& argument) {
        wmi.SetCaptions(ToCaptions(board));
        if (board.vendor != Vendor::None) {
            library = LoadStandIn(board, simDirectory);
            LoadBoard(library, load, argument);
        }
    }
};

SimulatedMachine SimulatedMachine::FromFile(std::string const& boardFile, std::wstring const& simDirectory) {
    return SimulatedMachine(
        std::make_unique<State>(ReadBoardFile(boardFile), simDirectory, "GputuneSim_LoadBoard", boardFile));
}

SimulatedMachine SimulatedMachine::FromText(std::string const& boardJson, std::wstring const& simDirectory) {
    return SimulatedMachine(std::make_unique<State>(ReadBoardText(boardJson, "board"), simDirectory,
                                                    "GputuneSim_LoadBoardText", boardJson));
}

SimulatedMachine::SimulatedMachine(std::unique_ptr<State> state) : state_(std::move(state)) {}
SimulatedMachine::SimulatedMachine(SimulatedMachine&&) noexcept = default;
SimulatedMachine& SimulatedMachine::operator=(SimulatedMachine&&) noexcept = default;
SimulatedMachine::~SimulatedMachine() = default;

void* SimulatedMachine::Symbol(char const* name) const {
    return state_->library ? reinterpret_cast<void*>(::GetProcAddress(state_->library, name)) : nullptr;
}

WmiStandIn& SimulatedMachine::Wmi() const {
    return state_->wmi;
}

}  // namespace gputune::sim
