#include "nvidia/NvidiaStandIn.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

namespace gputune::sim {

namespace {

constexpr std::string_view kEntryPoints[] = {
#define SIM_NVAPI(name, identifier) #name,
#include "board/nvapi_entry_points.inc"
};

}  // namespace

NvidiaStandIn& NvidiaStandIn::Instance() {
    static NvidiaStandIn standIn;
    return standIn;
}

StandIn& StandIn::Instance() {
    return NvidiaStandIn::Instance();
}

std::unique_ptr<BoardDriver> NvidiaStandIn::NewDriver(Board board) const {
    return std::make_unique<NvidiaDriver>(std::move(board));
}

std::set<std::string> NvidiaStandIn::AbsentWith(Board const& board) const {
    return board.nvidia.hooks ? std::set<std::string>() : std::set<std::string>{"BeforeCallHook", "AfterCallHook"};
}

bool NvidiaStandIn::Has(std::string const& entryPoint) const {
    return StandIn::Has(entryPoint) ||
           std::find(std::begin(kEntryPoints), std::end(kEntryPoints), entryPoint) != std::end(kEntryPoints);
}

bool NvidiaStandIn::HandsOut(std::uint32_t identifier, char const* entryPoint) {
    std::lock_guard const guard(lock_);
    Begin("nvapi_QueryInterface", identifier);
    return entryPoint && Driver() && !IsHidden(entryPoint);
}

}  // namespace gputune::sim
