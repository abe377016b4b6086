#include "sim/nvidia/NvidiaStandIn.h"

#include <utility>

namespace gputune::sim {

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

bool NvidiaStandIn::HandsOut(std::uint32_t identifier, char const* entryPoint) {
    std::lock_guard const guard(lock_);
    Begin("nvapi_QueryInterface", identifier);
    return entryPoint && Driver() && !IsHidden(entryPoint);
}

}  // namespace gputune::sim
