// The exported functions in a table, each with a check that its answer keeps the promises of gputune.h.
#pragma once

#include <array>
#include <span>
#include <string>

#include "Machine.h"

namespace gputune::test {

using Arguments = std::array<int, 4>;

struct Answer {
    Bytes bytes;          // of the result; a record's storage was filled with kStorage before the call
    std::string breach;   // the promise that is broken; empty when none is
    bool success = true;  // the result of a function that returns bool
};

// Every byte of a record's storage before the call.
constexpr unsigned char kStorage = 0xEE;

struct Operation {
    char const* name;
    int argumentCount;
    bool answersBool;
    Answer (*call)(Exports const& api, Arguments const& arguments);
};

// All exported functions but InitVGAHelper. The answer of FetchHwmValues are all readings after it.
std::span<Operation const> Operations();

// The curve that SetFanSpeedTable is given.
constexpr int kCurvePoints = 5;
constexpr FanTablePoint kCurve[kCurvePoints] = {{20, 40}, {35, 55}, {50, 70}, {75, 80}, {100, 90}};

}  // namespace gputune::test
