#include "tool/recording/PackedNumbers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace gputune::tool {

namespace {

// JavaScript's numbers hold every whole number up to 2^53: these, doubled and with a sign bit, are among them.
constexpr double kLargestNumber = 0x1p51;
constexpr int kMostDecimals = 3;

class Packer {
public:
    void Put(std::int64_t number) {
        constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        constexpr std::size_t kLineLength = 1000;
        auto rest = static_cast<std::uint64_t>(number < 0 ? -number : number) << 1U | (number < 0 ? 1U : 0U);
        do {
            if (lines_.empty() || lines_.back().size() == kLineLength) {
                lines_.emplace_back();
            }
            std::uint64_t const low = rest & 31U;
            rest >>= 5U;
            lines_.back() += kDigits[static_cast<std::size_t>(low | (rest != 0 ? 32U : 0U))];
        } while (rest != 0);
    }

    std::vector<std::string> Lines() { return std::move(lines_); }

private:
    std::vector<std::string> lines_;
};

bool IsWhole(double number) {
    return std::abs(number - std::round(number)) < 1e-6;
}

int FindDecimals(std::span<std::optional<double> const> numbers) {
    int decimals = 0;
    double factor = 1;
    double largest = 0;
    for (std::optional<double> const& number : numbers) {
        largest = std::max(largest, number ? std::abs(*number) : 0);
        for (; number && decimals < kMostDecimals && !IsWhole(*number * factor); factor *= 10) {
            ++decimals;
        }
    }
    while (largest * std::pow(10.0, decimals) > kLargestNumber) {
        --decimals;
    }
    return decimals;
}

std::vector<std::string> PackValues(std::span<std::optional<double> const> numbers, int decimals) {
    double const factor = std::pow(10.0, decimals);
    Packer packer;
    std::int64_t last = 0;
    std::int64_t repeats = -1;  // further zeros behind a difference of 0 that is not written yet; -1: there is none
    auto const putRepeats = [&packer, &repeats] {
        if (repeats >= 0) {
            packer.Put(0);
            packer.Put(repeats);
            repeats = -1;
        }
    };
    for (std::optional<double> const& number : numbers) {
        std::int64_t const value = number ? std::llround(*number * factor) : last;
        if (value == last) {
            ++repeats;
        } else {
            putRepeats();
            packer.Put(value - last);
            last = value;
        }
    }
    putRepeats();
    return packer.Lines();
}

std::vector<std::string> PackGaps(std::span<std::optional<double> const> numbers) {
    Packer packer;
    for (auto position = numbers.begin(); position != numbers.end();) {
        auto const isThere = [](std::optional<double> const& number) { return number.has_value(); };
        auto const gap = std::find_if_not(position, numbers.end(), isThere);
        auto const end = std::find_if(gap, numbers.end(), isThere);
        if (gap != end) {
            packer.Put(gap - position);
            packer.Put(end - gap);
        }
        position = end;
    }
    return packer.Lines();
}

}  // namespace

PackedNumbers PackNumbers(std::span<std::optional<double> const> numbers) {
    int const decimals = FindDecimals(numbers);
    return {decimals, PackValues(numbers, decimals), PackGaps(numbers)};
}

}  // namespace gputune::tool
