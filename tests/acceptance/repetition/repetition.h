// What tests of repetition share: the boards, calls that fail, and calling everything.
#pragma once

#include <gtest/gtest.h>

#include <string_view>

#if !defined(_WIN32)
#include "FakeSystem.h"
#endif
#include "boards.h"
#include "intel_board.h"
#include "nvidia_board.h"
#include "operations.h"
#include "resources.h"

namespace gputune::test {

struct Board {
    char const* name;
    Machine (*make)();
};

inline std::ostream& operator<<(std::ostream& stream, Board const& board) {
    return stream << board.name;
}

inline constexpr Board kBoards[] = {
    {"OverdriveN", [] { return OverdriveNBoard(); }},
    {"Overdrive8", [] { return Overdrive8Board(-1); }},
    {"Intel", [] { return IntelBoard(); }},
    {"Nvidia", [] { return NvidiaBoard(2); }},
};

// Lets one call of a round fail. All others are answered as ordered.
class FailingCall final : public Interceptor {
public:
    explicit FailingCall(ScriptedLibrary& library) : library_(library) { library.AnswerBy(this); }
    ~FailingCall() { library_.AnswerBy(nullptr); }
    FailingCall(FailingCall const&) = delete;
    FailingCall& operator=(FailingCall const&) = delete;

    void FailAt(int position) {
        position_ = position;
        calls_ = 0;
    }
    // Whether the round had so many calls.
    bool HasFailed() const { return calls_ > position_; }

    int Answer(char const* entryPoint, int const* words) override {
        return calls_++ == position_ ? -1 : library_.AsOrdered(entryPoint, words);
    }

private:
    ScriptedLibrary& library_;
    int position_ = 0;
    int calls_ = 0;
};

// Drops what the machine has recorded, which would grow with every round.
inline void ForgetLoads(Machine& machine) {
    machine.TakeLoads();
#if !defined(_WIN32)
    TheSystem().trace.clear();
#endif
}
inline void Forget(Machine& machine) {
    machine.Scripted().ClearCalls();
    ForgetLoads(machine);
}

// Under Windows without the frame rate, which asks about a display: Wine then starts its desktop, and when two tests do
// so at the same time, both sometimes wait for ever.
inline void CallEverything(Exports const& api) {
    for (Operation const& operation : Operations()) {
#if defined(_WIN32)
        if (std::string_view(operation.name) == "GetFrameRate") {
            continue;
        }
#endif
        operation.call(api, {1, 2, 3, 4});
    }
}

}  // namespace gputune::test
