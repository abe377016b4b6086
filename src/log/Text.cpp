#include "log/Text.h"

#include <charconv>
#include <cstdio>

namespace gputune::log {

namespace {

void AppendInteger(LineText& line, long long value) {
    char digits[24];
    auto const end = std::to_chars(digits, digits + sizeof digits, value);
    line.Append({digits, end.ptr});
}

void AppendReal(LineText& line, double value) {
    char digits[352];  // the largest double has 309 digits before the point
    int const length = std::snprintf(digits, sizeof digits, "%f", value);
    // The host may have set a locale of its own: the seventh character from the end is then its decimal point.
    constexpr int kPointFromEnd = 7;
    if (length > kPointFromEnd && digits[length - kPointFromEnd] == ',') {
        digits[length - kPointFromEnd] = '.';
    }
    line.Append({digits, static_cast<std::size_t>(length)});
}

}  // namespace

void LineText::Append(std::string_view text) {
    if (heap_.empty() && text.size() <= sizeof stack_ - length_) {
        // Also of no text at all, whose address may be null.
        length_ += text.copy(stack_ + length_, text.size());
        return;
    }
    if (heap_.empty()) {
        heap_.assign(stack_, length_);
    }
    heap_.append(text);
}

void Part::AppendTo(LineText& line) const {
    switch (kind_) {
        case Kind::Text:
            line.Append(text_);
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
