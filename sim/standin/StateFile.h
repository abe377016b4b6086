// A board's state in a file that several processes share (sim/state/). A lock of the file keeps them apart; the system
// takes it from a process that ends, however it ends.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "sim/state/StateArchive.h"

namespace gputune::sim {

class StateFile {
public:
    // path: UTF-8. An empty or missing file gets the first state. Throws StateError, and changes nothing, when the file
    // cannot be used.
    StateFile(std::string path, std::uint64_t board, StateBytes const& first);
    ~StateFile();
    StateFile(StateFile const&) = delete;
    StateFile& operator=(StateFile const&) = delete;

    // Under the lock: hands over the present state, and stores the answer when it is another. Throws StateError when
    // the file can no longer be used, and what change throws.
    void Change(std::function<StateBytes(StateBytes const&)> const& change);

private:
    class Lock;

    StateBytes Read() const;
    void Write(std::size_t offset, StateBytes const& bytes) const;

    std::string const path_;
    std::uint64_t const board_;
    void* file_ = nullptr;  // a handle
};

}  // namespace gputune::sim
