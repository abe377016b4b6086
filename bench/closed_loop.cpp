// The law of a held fan in closed loop with the thermal model of every board of a folder, as text for closed_loop.py:
// for each board a line "board,name,limit,highest,turns,changes" and a line "second,load,temperature,wanted" for every
// second.
#include "closed_loop.h"

#include <cstdio>

int main(int count, char** values) {
    using namespace gputune::test;
    if (count != 2) {
        return 2;
    }
    for (auto const& board : LoopBoards(values[1])) {
        auto const samples = RunLoop(board, LoopLaw());
        LoopFigures const figures = FiguresOf(samples);
        std::printf("board,%s,%.0f,%.1f,%d,%d\n", board.name.c_str(), board.controls.temperatureLimit, figures.highest,
                    figures.mostTurns, figures.writes);
        for (auto const& sample : samples) {
            std::printf("%.0f,%.1f,%.2f,%d\n", sample.seconds, sample.load, sample.temperature, sample.wanted);
        }
    }
}
