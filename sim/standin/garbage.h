// The garbage that a board file can order: wrong data that an entry point returns together with a success. The rules of
// each vendor (sim/board/FaultRules.h) say which entry point can return which kind.
#pragma once

#include <cfloat>
#include <climits>
#include <cstddef>
#include <cstring>

#include "sim/board/Board.h"

namespace gputune::sim {

// How many entries a list has when its count is to be huge.
constexpr std::size_t kHugeListSize = 4096;

// huge: the count for Garbage::HugeCount. room: how many entries the record has room for, for Garbage::OneTooMany.
template <class Count>
void GarbleCount(Count& count, Garbage garbage, int huge, std::size_t room = 0) {
    if (garbage == Garbage::NegativeCount) {
        count = static_cast<Count>(-1);
    } else if (garbage == Garbage::HugeCount) {
        count = static_cast<Count>(huge);
    } else if (garbage == Garbage::OneTooMany) {
        count = static_cast<Count>(room + 1);
    }
}

// Fills the whole field with a letter, so that it has no terminator.
template <std::size_t size>
void GarbleText(char (&text)[size], Garbage garbage, char letter) {
    if (garbage == Garbage::UnterminatedStrings) {
        std::memset(text, letter, size);
    }
}

// Extreme values: the greatest and the least integer in turn.
inline void GarbleInts(void* start, std::size_t bytes, Garbage garbage) {
    auto* const values = static_cast<int*>(start);
    for (std::size_t i = 0; garbage == Garbage::ExtremeValues && i < bytes / sizeof(int); ++i) {
        values[i] = i % 2 == 0 ? INT_MAX : INT_MIN;
    }
}

// The same with the members of a record from this one on.
template <class Record>
void GarbleIntsFrom(void* member, Record& record, Garbage garbage) {
    auto* const end = reinterpret_cast<char*>(&record + 1);
    GarbleInts(member, static_cast<std::size_t>(end - static_cast<char*>(member)), garbage);
}

// Changes a record as the garbage says. A vendor specialises it for records that have a count or a text, and for those
// whose first members say what the record is: these stay, so that the client reads the rest.
template <class Record>
void Garble(Record& record, Garbage garbage) {
    GarbleIntsFrom(&record, record, garbage);
}
template <>
inline void Garble(float& record, Garbage garbage) {
    record = garbage == Garbage::ExtremeValues ? FLT_MAX : record;
}
template <>
inline void Garble(double& record, Garbage garbage) {
    record = garbage == Garbage::ExtremeValues ? DBL_MAX : record;
}

}  // namespace gputune::sim
