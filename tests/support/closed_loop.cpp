#include "closed_loop.h"

#include <algorithm>
#include <random>

#include "sim/amd/Overdrive8State.h"
#include "sim/amd/OverdriveNState.h"
#include "sim/board/BoardFile.h"
#include "sim/intel/IntelDeviceState.h"

namespace gputune::test {

namespace {

constexpr double kNoise = 1;  // kelvin, either way

void AddAdapter(std::vector<LoopBoard>& boards, std::string const& file, std::size_t number, sim::ModelSettings model,
                sim::Controls controls) {
    model.load = LoopLoad();
    std::string const name = number == 0 ? file : file + " (" + std::to_string(number + 1) + ")";
    boards.push_back({.name = name, .model = std::move(model), .controls = std::move(controls)});
}

void AddBoard(std::vector<LoopBoard>& boards, std::string const& file, sim::Board const& board) {
    for (std::size_t i = 0; i < board.amd.adapters.size(); ++i) {
        if (board.amd.overdriveN) {
            AddAdapter(boards, file, i, board.model, sim::OverdriveNState(*board.amd.overdriveN).ModelControls());
        } else if (board.amd.overdrive8) {
            AddAdapter(boards, file, i, board.model, sim::Overdrive8State(*board.amd.overdrive8).ModelControls());
        }
    }
    for (std::size_t i = 0; i < board.intel.devices.size(); ++i) {
        if (auto const& device = board.intel.devices[i]; device) {
            AddAdapter(boards, file, i, device->model, sim::IntelDeviceState(*device).ModelControls());
        }
    }
    for (std::size_t i = 0; i < board.nvidia.gpus.size(); ++i) {
        AddAdapter(boards, file, i, board.nvidia.gpus[i].model, {});
    }
}

}  // namespace

std::vector<LoopBoard> LoopBoards(std::filesystem::path const& folder) {
    std::vector<std::filesystem::path> files;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    std::vector<LoopBoard> boards;
    for (auto const& file : files) {
        AddBoard(boards, file.stem().string(), sim::ReadBoardFile(file.string()));
    }
    return boards;
}

std::vector<sim::LoadStep> LoopLoad() {
    std::vector<sim::LoadStep> load = {{90, 3}, {180, 100}, {120, 3}};
    std::minstd_rand random(1);
    for (int second = 0; second < 240; second += 3) {
        load.push_back({3, static_cast<double>(random() % 101)});
    }
    for (int percent = 0; percent <= 100; ++percent) {
        load.push_back({2, static_cast<double>(percent)});
    }
    for (int percent = 100; percent >= 0; --percent) {
        load.push_back({2, static_cast<double>(percent)});
    }
    for (int i = 0; i < 8; ++i) {
        load.push_back({15, 100});
        load.push_back({15, 5});
    }
    return load;
}

tool::FanLawSettings LoopLaw() {
    tool::FanLawSettings law;
    law.points = {{25, 40}, {45, 60}, {75, 75}, {100, 85}};  // speed, temperature
    return law;
}

std::vector<LoopSample> RunLoop(LoopBoard const& board, tool::FanLawSettings const& law) {
    sim::ThermalModel model(board.model, board.controls);
    sim::Controls controls = board.controls;
    tool::FanLawState state;
    std::minstd_rand random(2);
    double length = 0;
    for (auto const& step : board.model.load) {
        length += step.seconds;
    }
    std::vector<LoopSample> samples;
    for (int second = 0; second < length; ++second) {
        model.AdvanceTo(second);
        sim::Readings const readings = model.Read();
        double const noise = kNoise * (static_cast<double>(random() % 2001) / 1000 - 1);
        state = tool::NextFanSpeed(law, state, readings.temperature + noise, second);
        controls.fanPercent = state.speed;
        model.SetControls(controls);
        samples.push_back({.seconds = static_cast<double>(second),
                           .load = readings.load,
                           .temperature = readings.temperature,
                           .wanted = state.speed});
    }
    return samples;
}

LoopFigures FiguresOf(std::vector<LoopSample> const& samples) {
    constexpr double kWindow = 60;  // seconds
    LoopFigures figures;
    std::vector<double> turns;
    int direction = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        figures.highest = std::max(figures.highest, samples[i].temperature);
        int const change = i == 0 ? 0 : samples[i].wanted - samples[i - 1].wanted;
        if (change == 0) {
            continue;
        }
        ++figures.writes;
        int const next = change > 0 ? 1 : -1;
        if (direction == -next) {
            turns.push_back(samples[i].seconds);
            auto const recent = std::count_if(turns.begin(), turns.end(),
                                              [&](double turn) { return turn > samples[i].seconds - kWindow; });
            figures.mostTurns = std::max(figures.mostTurns, static_cast<int>(recent));
        }
        direction = next;
    }
    return figures;
}

}  // namespace gputune::test
