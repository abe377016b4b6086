#include "sim/nvidia/NvidiaStandIn.h"

namespace gputune::sim {

StandIn& StandIn::Instance() {
    return NvidiaStandIn::Instance();
}

std::set<std::string> NvidiaStandIn::AbsentWith(Board const& board) const {
    return board.nvidia.hooks ? std::set<std::string>() : std::set<std::string>{"BeforeCallHook", "AfterCallHook"};
}

bool NvidiaStandIn::HandsOut(std::uint32_t identifier, char const* entryPoint) {
    std::lock_guard const guard(lock_);
    Begin("nvapi_QueryInterface", identifier);
    End("nvapi_QueryInterface");
    return entryPoint != nullptr && CurrentDriver() != nullptr && !IsHidden(entryPoint);
}

}  // namespace gputune::sim
