// The numbers of a profile file, judged by how the library reads them. Pure.
#pragma once

#include <string_view>

namespace gputune::tool {

enum class Reading {
    Clean,
    NotANumber,  // not read
    OutOfRange,  // not read as it was meant
    NotFinite,   // read, and of no use: infinite or not a number
    TooLarge,    // read, and of no use: beyond largestValue
    Trailing,    // read up to characters that belong to no number
};

// The largest round number that fits whatever it is for: drivers that count clocks in units of 10 kHz have 32 bits.
constexpr long largestValue = 20000000;

Reading JudgeFloat(std::string_view text);    // the single-precision values
Reading JudgeInteger(std::string_view text);  // 32 bits signed; hexadecimal with "0x"
// An identifier: hexadecimal, with or without "0x", 32 bits signed. `id` is set unless it is not read.
Reading JudgeIdentifier(std::string_view text, long& id);

}  // namespace gputune::tool
