#include "sim/amd/AmdDriver.h"

#include <algorithm>

#include "sim/standin/copy_text.h"

namespace gputune::sim {

namespace {

constexpr int kVendorId = 0x1002;

amd::AdapterInfoX2 ToRecord(Adapter const& adapter, int display) {
    amd::AdapterInfoX2 record{};
    record.iSize = sizeof(record);
    record.iAdapterIndex = adapter.index;
    CopyText(adapter.udid, record.strUDID);
    record.iBusNumber = adapter.busNumber;
    record.iVendorID = kVendorId;
    CopyText(adapter.name, record.strAdapterName);
    CopyText(adapter.displayName, record.strDisplayName);
    record.iPresent = adapter.present ? 1 : 0;
    record.iExist = adapter.exists ? 1 : 0;
    CopyText(adapter.udid, record.strPNPString);
    record.iOSDisplayIndex = display;
    return record;
}

}  // namespace

AmdDriver::AmdDriver(Board board) : board_(std::move(board)) {
    ModelSettings settings = board_.model;
    if (board_.amd.overdriveN && board_.amd.overdriveN->fanSpeed.max > 0) {
        settings.fanMaximum = board_.amd.overdriveN->fanSpeed.max;
    }
    for (std::size_t i = 0; i < board_.amd.adapters.size(); ++i) {
        Unit unit;
        auto& [overdriveN, overdrive8] = unit.states;
        Controls controls;
        if (board_.amd.overdrive8) {
            overdrive8 = std::make_unique<Overdrive8State>(*board_.amd.overdrive8);
            controls = overdrive8->ModelControls();
        }
        if (board_.amd.overdriveN) {
            overdriveN = std::make_unique<OverdriveNState>(*board_.amd.overdriveN);
            controls = overdriveN->ModelControls();
        }
        unit.model = std::make_unique<ThermalModel>(settings, controls);
        units_.push_back(std::move(unit));
    }
}

void AmdDriver::Control(Unit& unit) {
    std::apply(
        [&](auto const&... state) {
            ((state != nullptr ? unit.model->SetControls(state->ModelControls()) : void()), ...);
        },
        unit.states);
}

void AmdDriver::Restore(StateReader& state) {
    Exchange(state);
    std::for_each(units_.begin(), units_.end(), Control);
}

void AmdDriver::Forget(bool fansToo) {
    for (auto& unit : units_) {
        std::apply([&](auto const&... state) { ((state != nullptr ? state->Forget(fansToo) : void()), ...); },
                   unit.states);
        Control(unit);
    }
}

void AmdDriver::SetStuck(std::size_t quantity, bool stuck, double now) {
    for (auto& unit : units_) {
        unit.model->AdvanceTo(now);
        unit.model->SetStuck(quantity, stuck);
    }
}

bool AmdDriver::FansAreAutomatic() const {
    return std::all_of(units_.begin(), units_.end(), [](Unit const& unit) {
        return std::apply([](auto const&... state) { return ((state == nullptr || state->FanIsAutomatic()) && ...); },
                          unit.states);
    });
}

Adapter const* AmdDriver::FindAdapter(int index) const {
    auto const found = std::find_if(board_.amd.adapters.begin(), board_.amd.adapters.end(),
                                    [&](Adapter const& adapter) { return adapter.index == index; });
    return found == board_.amd.adapters.end() ? nullptr : &*found;
}

AmdDriver::Unit* AmdDriver::Find(int index) {
    Adapter const* const adapter = FindAdapter(index);
    return adapter != nullptr ? &units_[static_cast<std::size_t>(adapter - board_.amd.adapters.data())] : nullptr;
}

Readings AmdDriver::ReadingsOf(Unit& unit, double now) {
    unit.model->AdvanceTo(now);
    return unit.model->Read();
}

std::vector<amd::AdapterInfoX2> AmdDriver::AdapterInfos(int index) const {
    Adapter const* const wanted = FindAdapter(index);
    std::vector<amd::AdapterInfoX2> records;
    for (auto const& adapter : board_.amd.adapters) {
        if (wanted == nullptr || adapter.busNumber == wanted->busNumber) {
            records.push_back(ToRecord(adapter, static_cast<int>(records.size())));
        }
    }
    return records;
}

}  // namespace gputune::sim
