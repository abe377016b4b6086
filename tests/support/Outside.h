// Whose code runs: that of the library under test, or that of its surroundings, the vendors' libraries and the system.
// For tests in which memory runs out for the library under test alone.
#pragma once

namespace gputune::test {

// While one lives, the surroundings are at work.
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

// While one lives, the surroundings have called back into the library under test.
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
