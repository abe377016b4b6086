// Memory that the AMD Display Library hands to its client: allocated through the client's callback, released by the
// client. Every block is remembered with its size, so that a count the library reports can be checked against the block
// it came with, and only what the callback allocated is ever released.
#pragma once

#include <cstddef>
#include <span>

#include "amd/adl_records.h"

namespace gputune::amd {

// The callback given to ADL. Null when the size is negative or memory runs out.
void* ADL_STDCALL AllocateForAdl(int size) noexcept;

// Release a block; null and blocks of another origin are left alone.
void ReleaseFromAdl(void* block) noexcept;

// The size of a block in bytes; of a block of another origin, how much can be read there at all.
std::size_t SizeOfAdlBlock(void const* block) noexcept;

// A list that ADL returned with its count, released at the end of its life. Covers `count` records, or fewer when the
// block is too small for them; none when the list is null or the count is not positive.
template <class Record>
class AdlList {
public:
    AdlList() = default;
    ~AdlList() { ReleaseFromAdl(m_Records); }
    AdlList(AdlList const&) = delete;
    AdlList& operator=(AdlList const&) = delete;

    // Where ADL stores the address of the list.
    Record** Out() { return &m_Records; }

    std::span<Record const> First(int count) const {
        if (m_Records == nullptr || count <= 0) {
            return {};
        }
        std::size_t const held = SizeOfAdlBlock(m_Records) / sizeof(Record);
        auto const wanted = static_cast<std::size_t>(count);
        return {m_Records, wanted < held ? wanted : held};
    }

private:
    Record* m_Records = nullptr;
};

}  // namespace gputune::amd
