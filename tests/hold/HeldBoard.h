// A simulated board whose state is in a file, seen from outside: by a process that calls nothing of its library.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "sim/board/Board.h"
#include "sim/standin/BoardDriver.h"

namespace gputune::test {

struct BoardView {
    bool isAutomatic = true;  // the driver alone decides over the fans
    int calls = 0;            // of the vendor's library so far
    double seconds = 0;       // of the board's time
};

class HeldBoard {
public:
    HeldBoard(std::string const& boardFile, std::string stateFile);
    ~HeldBoard();

    // Nothing before the first process has opened the board.
    std::optional<BoardView> Look() const;

private:
    std::string const stateFile_;
    std::unique_ptr<sim::Board const> board_;
    std::unique_ptr<sim::BoardDriver> driver_;
};

}  // namespace gputune::test
