// How values become text in log messages. Plain conversions: no fill characters, no grouping, '.' as decimal point
// whatever the host's locale.
#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace gputune::log {

// A line that is being put together. Stays on the writer's stack as long as it is short enough, as nearly every line
// is: an entry then costs little more than its write.
class LineText {
public:
    void Append(std::string_view text);
    std::string_view View() const { return heap_.empty() ? std::string_view(stack_, length_) : heap_; }

private:
    char stack_[512];
    std::size_t length_ = 0;
    std::string heap_;  // the whole line, once it does not fit
};

// A piece of a message: a text or a number, converted only when the message is written. Refers to its text.
class Part {
public:
    Part(std::string_view text) : kind_(Kind::Text), text_(text) {}
    Part(char const* text) : Part(std::string_view(text)) {}
    Part(std::string const& text) : Part(std::string_view(text)) {}

    template <std::integral Integer>
    Part(Integer value) : kind_(Kind::Integer), integer_(value) {
        static_assert(!std::same_as<Integer, bool> && !std::same_as<Integer, char>, "say which text is meant");
    }

    // Fixed notation with six digits after the point: 1.5 gives 1.500000.
    Part(double value) : kind_(Kind::Real), real_(value) {}

    void AppendTo(LineText& line) const;

private:
    enum class Kind { Text, Integer, Real };
    Kind kind_;
    union {
        std::string_view text_;
        long long integer_;
        double real_;
    };
};

// The text in a fixed-size buffer that may lack its terminator.
template <std::size_t N>
std::string_view Bounded(char const (&buffer)[N]) {
    std::string_view const all(buffer, N);
    return all.substr(0, all.find('\0'));
}

}  // namespace gputune::log
