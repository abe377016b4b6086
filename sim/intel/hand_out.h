// How Intel's control library returns a list of handles.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "sim/board/Board.h"

namespace gputune::sim {

// Without storage, count becomes the length of the list. Else writes at most count handles, and count becomes how many.
// Garbled as the garbage says, but nothing is written behind the storage.
template <class Handle>
void HandOut(std::vector<Handle> list, std::uint32_t& count, Handle* storage, Garbage garbage) {
    constexpr std::size_t kMany = 4096;
    if (garbage == Garbage::HugeCount) {
        list.resize(kMany);
    } else if (garbage == Garbage::NullHandles) {
        std::fill(list.begin(), list.end(), nullptr);
    }
    std::size_t told = list.size();
    if (storage != nullptr) {
        told = std::min<std::size_t>(list.size(), count);
        if (garbage == Garbage::ShrinkingCount && told > 0) {
            --told;
        }
        std::copy_n(list.begin(), told, storage);
        if (garbage == Garbage::GrowingCount) {
            told = list.size() + 1;
        }
    }
    count = garbage == Garbage::NegativeCount ? UINT32_MAX : static_cast<std::uint32_t>(told);
}

}  // namespace gputune::sim
