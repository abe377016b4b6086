// Turns the bytes of an input into decisions, one after the other. After the last byte, every decision is 0.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace gputune::fuzz {

class Input {
public:
    Input(std::uint8_t const* data, std::size_t size) : data_(data), size_(size) {}

    bool IsAtEnd() const { return at_ == size_; }

    unsigned Byte() { return IsAtEnd() ? 0U : data_[at_++]; }

    unsigned Below(unsigned limit) { return Byte() % limit; }

    // Mostly a number that the library treats specially, or one next to it; else any number.
    int Int() {
        constexpr int kSpecial[] = {0,   1,     2,     3,      4,          5,       -1,      INT_MIN, INT_MAX,
                                    8,   39,    40,    100,    -100,       65536,   65537,   256,     257,
                                    255, 32768, 10000, 136600, 0x0FFFFFFF, 1 << 30, 1 << 29, 75,      -50};
        unsigned const choice = Byte();
        if (choice < std::size(kSpecial)) {
            return kSpecial[choice];
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

    // A part of this input as an input of its own. The next byte is its length.
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
