// The law of a held fan in closed loop with a board's thermal model: the model's temperature, with a sensor's noise,
// goes to the law once a second, and the law's speed to the model's fan.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "sim/model/ThermalModel.h"
#include "tool/hold/FanLaw.h"

namespace gputune::test {

// One adapter of a board file.
struct LoopBoard {
    std::string name;  // the board file's, and the adapter's number when it is not the first
    sim::ModelSettings model;
    sim::Controls controls;
};

// Every adapter that a board file of the folder gives a thermal model, in the order of the files' names.
std::vector<LoopBoard> LoopBoards(std::filesystem::path const& folder);

// Rest, a step to full load and back, noise, a slow rise and fall, and load that comes and goes every 15 seconds.
std::vector<sim::LoadStep> LoopLoad();

// What a user might give: four points, and nothing else.
tool::FanLawSettings LoopLaw();

struct LoopSample {
    double seconds = 0;
    double load = 0;         // percent
    double temperature = 0;  // degrees Celsius, without the sensor's noise
    int wanted = 0;          // percent
};

struct LoopFigures {
    double highest = 0;  // degrees Celsius
    int mostTurns = 0;   // changes of direction of `wanted` in any 60 seconds
    int writes = 0;      // changes of `wanted`
};

// One sample a second, through the board's load once.
std::vector<LoopSample> RunLoop(LoopBoard const& board, tool::FanLawSettings const& law);
LoopFigures FiguresOf(std::vector<LoopSample> const& samples);

}  // namespace gputune::test
