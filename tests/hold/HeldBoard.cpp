#include "HeldBoard.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "sim/amd/AmdDriver.h"
#include "sim/board/BoardFile.h"
#include "sim/intel/IntelDriver.h"
#include "sim/standin/SharedPart.h"
#include "sim/state/state_image.h"

namespace gputune::test {

HeldBoard::HeldBoard(std::string const& boardFile, std::string stateFile)
    : stateFile_(std::move(stateFile)), board_(std::make_unique<sim::Board const>(sim::ReadBoardFile(boardFile))) {
    if (board_->vendor == sim::Vendor::Amd) {
        driver_ = std::make_unique<sim::AmdDriver>(*board_);
    } else {
        driver_ = std::make_unique<sim::IntelDriver>(*board_);
    }
}

HeldBoard::~HeldBoard() = default;

std::optional<BoardView> HeldBoard::Look() const {
    std::ifstream file(stateFile_, std::ios::binary);
    sim::StateBytes const bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (bytes.empty()) {
        return std::nullopt;
    }
    sim::BoardState const state = sim::NewestState(bytes, board_->identity);
    sim::SharedPart shared{.faults = sim::ActiveFaults(board_->faults)};
    sim::StateReader reader(state.bytes);
    reader(shared);
    driver_->Restore(reader);
    return BoardView{.isAutomatic = driver_->FansAreAutomatic(), .calls = shared.calls, .seconds = shared.time.Now()};
}

}  // namespace gputune::test
