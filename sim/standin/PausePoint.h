// For tests that end or suspend a process at a given call. The environment variable GPUTUNE_SIM_PAUSE, such as
// "before 2 ADL2_OverdriveN_FanControl_Set NAME" or "after ...", makes the stand-in wait at the second call of this
// entry point in the process: before the call has an effect, or when it has had it. There it sets the event
// NAME-reached and waits for the event NAME-go; the test has made both. A process that finds NAME-reached set does not
// wait: of several processes, the first does. GPUTUNE_SIM_TRACE names a file that gets a line for each call: the
// process's number, the entry point.
#pragma once

#include <string>
#include <string_view>

namespace gputune::sim {

class PausePoint {
public:
    PausePoint();

    void BeforeCall(std::string_view entryPoint);
    void AfterCall(std::string_view entryPoint) const;

private:
    bool IsHere(std::string_view entryPoint) const { return entryPoint == entryPoint_ && calls_ == number_; }
    void Trace(std::string_view entryPoint) const;
    void Wait() const;

    bool before_ = false;
    int number_ = 0;
    std::string entryPoint_;  // empty: nowhere
    std::string name_;
    std::string trace_;
    int calls_ = 0;  // of the entry point
};

}  // namespace gputune::sim
