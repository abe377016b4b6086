#include "log/LineText.h"

#include <charconv>

#include "log/FixedNotation.h"

namespace gputune::log {

namespace {

void AppendInteger(LineText& line, long long value) {
    char digits[24];
    auto const end = std::to_chars(digits, digits + sizeof digits, value);
    line.Append({digits, end.ptr});
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
            line.Append(FixedNotation(real_).View());
            break;
    }
}

}  // namespace gputune::log
