// The calls that reached the stand-in, with their arguments and the records that the caller passed in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <type_traits>
#include <vector>

#include "amd/adl_records.h"
#include "gputune_sim.h"

namespace gputune::sim {

struct LoggedCall {
    char const* entryPoint = "";
    std::vector<int> args;
    std::vector<unsigned char> record;
};

class CallLog {
public:
    void Add(LoggedCall call) {
        // A live view calls for hours; nobody reads so far back.
        constexpr std::size_t kMaxCalls = 16384;
        if (calls_.size() == kMaxCalls) {
            calls_.pop_front();
        }
        calls_.push_back(std::move(call));
    }
    int Count() const { return static_cast<int>(calls_.size()); }
    void Clear() { calls_.clear(); }
    // False when there is no such call.
    bool Get(int index, GputuneSimCall& out) const;

private:
    std::deque<LoggedCall> calls_;
};

// Appends what a pointer argument points to. The context and the allocation callback are no records.
template <class Record>
void AppendRecord(std::vector<unsigned char>& bytes, Record const* record) {
    auto const* const begin = reinterpret_cast<unsigned char const*>(record);
    std::size_t size = sizeof(Record);
    if constexpr (std::is_same_v<Record, amd::ADLODNPerformanceLevelsX2>) {
        // The levels follow the head; a head that contradicts itself is kept alone.
        constexpr int kLevel = sizeof(amd::ADLODNPerformanceLevelX2);
        int const levels = record->iNumberOfPerformanceLevels;
        if (levels > 0 && levels <= (GPUTUNE_SIM_MAX_RECORD - static_cast<int>(size)) / kLevel &&
            record->iSize == static_cast<int>(size) + levels * kLevel) {
            size = static_cast<std::size_t>(record->iSize);
        }
    }
    bytes.insert(bytes.end(), begin, begin + size);
}

template <class Argument>
void LogArgument(LoggedCall& call, Argument argument) {
    if constexpr (std::is_pointer_v<Argument>) {
        call.args.push_back(static_cast<int>(reinterpret_cast<std::uintptr_t>(argument)));
        using Pointee = std::remove_pointer_t<Argument>;
        if constexpr (!std::is_void_v<Pointee> && !std::is_function_v<Pointee>) {
            if (argument) {
                AppendRecord(call.record, argument);
            }
        }
    } else {
        call.args.push_back(argument);
    }
}

}  // namespace gputune::sim
