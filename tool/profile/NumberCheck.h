// Whether the library reads the numbers of a profile file as they were meant.
#pragma once

#include <string_view>

namespace gputune::tool {

enum class Severity {
    Error,    // something has no effect, keeps the file from being read, or plans what no board should be sent
    Warning,  // it works, and was perhaps not meant so
};

// What is wrong with a number, as it is said behind the number: " is not a number". Empty when nothing is.
struct NumberProblem {
    Severity severity = Severity::Warning;
    std::string_view text{};
};

NumberProblem CheckFloat(char const* text);    // the single-precision values
NumberProblem CheckInteger(char const* text);  // 32 bits signed; hexadecimal with "0x"
// An identifier: hexadecimal, with or without "0x", 32 bits signed. `id` is of use unless the problem is an error.
NumberProblem CheckIdentifier(char const* text, long long& id);

}  // namespace gputune::tool
