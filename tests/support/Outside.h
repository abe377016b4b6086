// Tells whose code is running: the library under test, or its surroundings, which are the scripted vendor libraries and
// the simulated system. Tests that let memory run out refuse it to the library under test only.
#pragma once

namespace gputune::test {

// While one exists, the surroundings' code is running.
class Outside {
public:
    Outside() { ++depth_; }
    ~Outside() { --depth_; }
    Outside(Outside const&) = delete;
    Outside& operator=(Outside const&) = delete;

    static bool IsAtWork() { return depth_ != 0; }

private:
    friend class CallBack;
    static inline thread_local int depth_ = 0;
};

// While one exists, the surroundings have called back into the library under test, whose code is running again.
class CallBack {
public:
    CallBack() : depth_(Outside::depth_) { Outside::depth_ = 0; }
    ~CallBack() { Outside::depth_ = depth_; }
    CallBack(CallBack const&) = delete;
    CallBack& operator=(CallBack const&) = delete;

private:
    int depth_;
};

}  // namespace gputune::test
