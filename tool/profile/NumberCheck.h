// Whether the library reads the numbers of a profile file as they were meant.
#pragma once

#include <string_view>

namespace gputune::tool {

enum class Severity {
    Error,    // something has no effect, stops the file from being read, or would send a harmful value to a board
    Warning,  // it works, but perhaps not as intended
};

// What is wrong with a number, as the end of a sentence: " is not a number". Empty when nothing is wrong.
struct NumberProblem {
    Severity severity = Severity::Warning;
    std::string_view text{};
};

NumberProblem CheckFloat(char const* text);    // the single-precision values
NumberProblem CheckInteger(char const* text);  // 32 bits signed; hexadecimal with "0x"
// An identifier: hexadecimal, with or without "0x", 32 bits signed. `id` is valid unless the problem is an error.
NumberProblem CheckIdentifier(char const* text, long long& id);

}  // namespace gputune::tool
