#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace gputune::log {

// clang-format off
// A number as printf's "%f" writes it: six digits behind the point, rounded from the exact value, halves to even; "inf",
// "-inf", "nan". The point is a '.' whatever the host's locale. Written out because mingw-w64's printf, which is as exact,
// would make up a fourteenth of the library.
// clang-format on
class FixedNotation {
public:
    explicit FixedNotation(double value);

    std::string_view View() const { return {text_ + first_, kSize - first_}; }

private:
    static constexpr std::size_t kDigitsBehindPoint = 6;
    static constexpr std::size_t kSize = 1 + 309 + 1 + kDigitsBehindPoint;  // the largest double, with its sign

    // From the end to the front.
    void Put(std::string_view text);
    void PutDigits(std::uint64_t number, std::size_t atLeast);
    void DoubleDigitsBeforePoint();

    char text_[kSize];
    std::size_t first_ = kSize;
};

}  // namespace gputune::log
