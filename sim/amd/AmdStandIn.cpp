#include "sim/amd/AmdStandIn.h"

namespace gputune::sim {

StandIn& StandIn::Instance() {
    return AmdStandIn::Instance();
}

std::set<std::string> AmdStandIn::AbsentWith(Board const& board) const {
    std::set<std::string> absent;
    auto const& overdrive8 = board.amd.overdrive8;
    if (overdrive8 && !overdrive8->newerEntryPoints) {
        absent.insert({"ADL2_Overdrive8_Init_SettingX2_Get", "ADL2_Overdrive8_Current_SettingX2_Get"});
    }
    if (overdrive8 && !overdrive8->olderEntryPoints) {
        absent.insert({"ADL2_Overdrive8_Init_Setting_Get", "ADL2_Overdrive8_Current_Setting_Get"});
    }
    return absent;
}

void* AmdStandIn::Allocate(std::size_t bytes) {
    if (allocator_ == nullptr) {
        return nullptr;
    }
    CountAllocation();
    return allocator_(static_cast<int>(bytes));
}

}  // namespace gputune::sim
