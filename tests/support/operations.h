// What a host can ask of the library: the exported operations, one by one, and what gputune.h promises of every answer.
#pragma once

#include <array>
#include <span>
#include <string>

#include "Machine.h"

namespace gputune::test {

using Arguments = std::array<int, 4>;

struct Answer {
    Bytes bytes;          // as the call left them, in storage that held kStorage before
    std::string breach;   // the promise that it breaks; empty when it breaks none
    bool success = true;  // false from what answers a bool
};

// What is in a record's storage before the call.
constexpr unsigned char kStorage = 0xEE;

struct Operation {
    char const* name;
    int argumentCount;
    bool answersBool;
    Answer (*call)(Exports const& api, Arguments const& arguments);
};

// All exported functions but InitVGAHelper, FetchHwmValues together with the readings it leaves.
std::span<Operation const> Operations();

// What SetFanSpeedTable is given to read, whatever is asked for.
constexpr int kCurvePoints = 5;
constexpr FanTablePoint kCurve[kCurvePoints] = {{20, 40}, {35, 55}, {50, 70}, {75, 80}, {100, 90}};

}  // namespace gputune::test
