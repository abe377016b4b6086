#include "log/Text.h"

#include <charconv>
#include <cstdio>

namespace gputune::log {

namespace {

void AppendInteger(std::string& line, long long value) {
    char digits[24];
    auto const end = std::to_chars(digits, digits + sizeof digits, value);
    line.append(digits, end.ptr);
}

void AppendReal(std::string& line, double value) {
    char digits[352];  // the largest double has 309 digits before the point
    int const length = std::snprintf(digits, sizeof digits, "%f", value);
    // The host may have set a locale of its own: the seventh character from the end is then its decimal point.
    constexpr int kPointFromEnd = 7;
    if (length > kPointFromEnd && digits[length - kPointFromEnd] == ',') {
        digits[length - kPointFromEnd] = '.';
    }
    line.append(digits, static_cast<std::size_t>(length));
}

}  // namespace

void Part::AppendTo(std::string& line) const {
    switch (kind_) {
        case Kind::Text:
            line.append(text_);
            break;
        case Kind::Integer:
            AppendInteger(line, integer_);
            break;
        case Kind::Real:
            AppendReal(line, real_);
            break;
    }
}

}  // namespace gputune::log
