// The bytes of an input as decisions, one after the other. Behind its end every decision is 0.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>

namespace gputune::fuzz {

class Input {
public:
    Input(std::uint8_t const* data, std::size_t size) : data_(data), size_(size) {}

    bool IsAtEnd() const { return at_ == size_; }

    unsigned Byte() { return IsAtEnd() ? 0U : data_[at_++]; }

    unsigned Below(unsigned limit) { return Byte() % limit; }

    // Mostly a number that tells something, else any.
    int Int() {
        constexpr int kTelling[] = {0,   1,     2,     3,      4,          5,       -1,      INT_MIN, INT_MAX,
                                    8,   39,    40,    100,    -100,       65536,   65537,   256,     257,
                                    255, 32768, 10000, 136600, 0x0FFFFFFF, 1 << 30, 1 << 29, 75,      -50};
        unsigned const choice = Byte();
        if (choice < sizeof kTelling / sizeof kTelling[0]) {
            return kTelling[choice];
        }
        if (choice < 128) {
            return static_cast<int>(choice) - 64;
        }
        unsigned number = 0;
        for (int byte = 0; byte < 4; ++byte) {
            number = number << 8 | Byte();
        }
        return static_cast<int>(number);
    }

    // An input of its own: the next bytes, as many as the next one says.
    Input Part() {
        std::size_t const length = Byte();
        std::size_t const from = at_;
        at_ = length < size_ - at_ ? at_ + length : size_;
        return {data_ + from, at_ - from};
    }

private:
    std::uint8_t const* data_;
    std::size_t size_;
    std::size_t at_ = 0;
};

}  // namespace gputune::fuzz
