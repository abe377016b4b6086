#include "tool/profile/NumberCheck.h"

#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace gputune::tool {

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

constexpr NumberProblem Error(std::string_view text) {
    return {Severity::Error, text};
}

// Whether the text up to `end`, which the C library read, is a number to gputune: "0x" without a digit is none, though
// the C library reads a 0.
bool IsNumber(char const* text, char const* end) {
    std::string_view const read(text, static_cast<std::size_t>(end - text));
    bool const isZero = read.ends_with('0') && read.find_first_not_of(" \t\n\v\f\r+-") == read.size() - 1;
    return end != text && !(isZero && (*end == 'x' || *end == 'X'));
}

NumberProblem CheckRest(std::string_view rest) {
    bool const isEmpty = rest.find_first_not_of(kWhiteSpace) == std::string_view::npos;
    return {Severity::Warning, isEmpty ? "" : ": what follows the number is ignored"};
}

NumberProblem CheckWhole(char const* text, int base, long long& number, NumberProblem noNumber,
                         NumberProblem outOfRange) {
    char* end = nullptr;
    number = std::strtoll(text, &end, base);
    if (!IsNumber(text, end)) {
        return noNumber;
    }
    using Limits = std::numeric_limits<std::int32_t>;
    return number < Limits::min() || number > Limits::max() ? outOfRange : CheckRest(end);
}

}  // namespace

NumberProblem CheckFloat(char const* text) {
    // A round number that every driver can take: some count clocks in units of 10 kHz, in 32 bits.
    constexpr float kLargest = 20000000.0F;
    char* end = nullptr;
    errno = 0;
    float const number = std::strtof(text, &end);
    if (!IsNumber(text, end)) {
        return Error(" is not a number");
    }
    // Not every C library reads numbers as small as that.
    if (errno == ERANGE || std::fpclassify(number) == FP_SUBNORMAL) {
        return Error(" is too large or too small for a number of single precision");
    }
    if (!std::isfinite(number)) {
        return Error(" is not a finite number");
    }
    return std::fabs(number) > kLargest ? Error(" does not fit: at most 20000000") : CheckRest(end);
}

NumberProblem CheckInteger(char const* text) {
    std::string_view const view = text;
    std::size_t const start = view.find_first_not_of(kWhiteSpace);
    std::string_view const number = view.substr(start == std::string_view::npos ? view.size() : start);
    long long value = 0;
    return CheckWhole(text, number.starts_with("0x") || number.starts_with("0X") ? 16 : 10, value,
                      Error(" is not a whole number"), Error(" is beyond 32 bits"));
}

NumberProblem CheckIdentifier(char const* text, long long& id) {
    return CheckWhole(text, 16, id, Error(" is not a hexadecimal number; every lookup that comes to this entry fails"),
                      Error(" is beyond 7FFFFFFF (or -80000000); every lookup that comes to this entry fails"));
}

}  // namespace gputune::tool
