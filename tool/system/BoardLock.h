// One supervisor for a board at a time, in all of the machine's sessions.
#pragma once

#include <memory>
#include <string>

namespace gputune::tool {

// The lock is there as long as its owner lives, and as long as a worker does with which it was shared: a worker that is
// still taking back what its dead supervisor had set keeps the next one waiting.
class BoardLock {
public:
    // `board` names it, in ASCII. Waits for the workers of a dead owner. Throws ToolError with the code "held" when
    // another process holds the board, or such a worker does not end.
    explicit BoardLock(std::string const& board);
    ~BoardLock();
    BoardLock(BoardLock const&) = delete;
    BoardLock& operator=(BoardLock const&) = delete;

    void* Handle() const { return mutex_; }

private:
    void* mutex_ = nullptr;
};

}  // namespace gputune::tool
