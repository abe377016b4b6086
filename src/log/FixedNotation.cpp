#include "log/FixedNotation.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace gputune::log {

namespace {

constexpr int kMantissaBits = std::numeric_limits<double>::digits;

// With more bits behind the point a mantissa shows as 0; how many makes no difference any more.
constexpr int kMostBits = kMantissaBits + 32;

// fraction / 2^bits in millionths, halves to even. The fraction has no more bits than a mantissa.
std::uint32_t Millionths(std::uint64_t fraction, int bits) {
    // 1000000 is 15625 * 2^6. The product with 15625 has up to 67 bits: `upper` is without the last 32 of them.
    constexpr int kBitsBelow = 32 + 6;
    if (bits <= kBitsBelow) {
        fraction <<= kBitsBelow + 1 - bits;
        bits = kBitsBelow + 1;
    }
    std::uint64_t const lower = (fraction & 0xFFFFFFFF) * 15625;
    std::uint64_t const upper = (fraction >> 32) * 15625 + (lower >> 32);
    bits -= kBitsBelow;
    auto const whole = static_cast<std::uint32_t>(upper >> bits);
    std::uint64_t const rest = upper & ((std::uint64_t{1} << bits) - 1);
    std::uint64_t const half = std::uint64_t{1} << (bits - 1);
    bool const isHalf = rest == half && static_cast<std::uint32_t>(lower) == 0;
    bool const isUp = isHalf ? whole % 2 != 0 : rest >= half;
    return whole + (isUp ? 1 : 0);
}

}  // namespace

FixedNotation::FixedNotation(double value) {
    if (!std::isfinite(value)) {
        Put(std::isnan(value) ? "nan" : value < 0 ? "-inf" : "inf");
        return;
    }
    // value = integer * 2^exponent
    int exponent = 0;
    double const mantissa = std::frexp(std::fabs(value), &exponent);
    auto integer = static_cast<std::uint64_t>(static_cast<std::int64_t>(std::ldexp(mantissa, kMantissaBits)));
    exponent -= kMantissaBits;

    std::uint32_t millionths = 0;
    if (exponent < 0) {
        int const bits = std::min(-exponent, kMostBits);
        int const shift = std::min(bits, 63);
        std::uint64_t const whole = integer >> shift;
        millionths = Millionths(integer - (whole << shift), bits);
        integer = whole + millionths / 1000000;
        millionths %= 1000000;
    }
    PutDigits(millionths, kDigitsBehindPoint);
    Put(".");
    PutDigits(integer, 1);
    for (; exponent > 0; --exponent) {
        DoubleDigitsBeforePoint();
    }
    if (std::signbit(value)) {
        Put("-");
    }
}

void FixedNotation::Put(std::string_view text) {
    first_ -= text.size();
    text.copy(text_ + first_, text.size());
}

void FixedNotation::PutDigits(std::uint64_t number, std::size_t atLeast) {
    for (std::size_t count = 0; number != 0 || count < atLeast; ++count) {
        text_[--first_] = static_cast<char>('0' + number % 10);
        number /= 10;
    }
}

void FixedNotation::DoubleDigitsBeforePoint() {
    int carry = 0;
    for (std::size_t place = kSize - kDigitsBehindPoint - 1; place-- > first_;) {
        int const doubled = 2 * (text_[place] - '0') + carry;
        text_[place] = static_cast<char>('0' + doubled % 10);
        carry = doubled / 10;
    }
    if (carry != 0) {
        Put("1");
    }
}

}  // namespace gputune::log
