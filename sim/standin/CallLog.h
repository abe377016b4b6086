// The calls that reached the stand-in, with their arguments and the records that the caller passed in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <type_traits>
#include <vector>

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
        // A program may call for hours: old calls go.
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

// How many bytes of a record are kept. A vendor specialises it for a record that more data follows. A record may also
// be a handle, of which the pointer itself is kept.
template <class Record>
struct LoggedSize {
    static std::size_t Of(Record const&) { return sizeof(Record); }  // NOLINT(bugprone-sizeof-expression)
};

// A pointer to something that can be read and written: not to a function, and not an opaque handle, which must never be
// dereferenced.
template <class Argument>
concept PointsToRecord = std::is_pointer_v<Argument> && !std::is_void_v<std::remove_pointer_t<Argument>> &&
                         !std::is_function_v<std::remove_pointer_t<Argument>> && requires {
    sizeof(std::remove_pointer_t<Argument>);
};

// A pointer argument of which only the address is kept, because the size of what it points to is not known.
template <class T>
struct AddressOnly {
    T* address;
};
// Needed by clang before version 17.
template <class T>
AddressOnly(T*) -> AddressOnly<T>;

template <class Argument>
void LogArgument(LoggedCall& call, Argument argument) {
    if constexpr (std::is_pointer_v<Argument>) {
        call.args.push_back(static_cast<int>(reinterpret_cast<std::uintptr_t>(argument)));
        if constexpr (PointsToRecord<Argument>) {
            if (argument != nullptr) {
                using Record = std::remove_cv_t<std::remove_pointer_t<Argument>>;
                auto const* const begin = reinterpret_cast<unsigned char const*>(argument);
                call.record.insert(call.record.end(), begin, begin + LoggedSize<Record>::Of(*argument));
            }
        }
    } else if constexpr (std::is_same_v<Argument, double>) {
        int halves[2];
        static_assert(sizeof(halves) == sizeof(argument));
        std::memcpy(halves, &argument, sizeof(halves));
        call.args.insert(call.args.end(), std::begin(halves), std::end(halves));
    } else {
        call.args.push_back(static_cast<int>(argument));
    }
}

template <class T>
void LogArgument(LoggedCall& call, AddressOnly<T> argument) {
    LogArgument(call, static_cast<void const*>(argument.address));
}

}  // namespace gputune::sim
