// Board identifiers are read as the standard library reads numbers of base 16.
#include "records/hex_long.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace gputune {
namespace {

TEST(ParseHexLong, ReadsWhatTheStandardConversionReads) {
    struct Row {
        std::string text;
        std::int32_t number;
    };
    constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();
    Row const rows[] = {
        {"0", 0},
        {"0x0", 0},
        {"1F", 31},
        {"1f", 31},
        {"0x1F", 31},
        {"0X1f", 31},
        {"0B361002", 0x0B361002},
        {"0x0B361002", 188092418},
        {"00000000000000001F", 31},
        {"7FFFFFFF", kLargest},
        {"0x7fffffff", kLargest},
        {"-80000000", kSmallest},
        {"-0x80000000", kSmallest},
        {"-7FFFFFFF", -kLargest},
        {"+1F", 31},
        {"-1F", -31},
        {"+0x1F", 31},
        {"-0", 0},
        // White space of any kind may stand first.
        {"  1F", 31},
        {" \t\n\v\f\r1F", 31},
        {" -1F", -31},
        // What follows the digits does not matter.
        {"1FG", 31},
        {"1F 20", 31},
        {"1F&REV", 31},
        {"0x1Fx2", 31},
        {"0x1F-", 31},
        {"0x0x1F", 0},
        {"0 x1", 0},
        {std::string("1F\0FF", 5), 31},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE('"' + row.text + '"');
        EXPECT_EQ(ParseHexLong(row.text), row.number);
    }
}

TEST(ParseHexLong, TextWithoutADigitIsInvalid) {
    for (char const* text : {"",    " ",   "\t\n", "+",  "-",  "x",   "x1",  "G",    "g1",   "&",   "+-1", "-+1",
                             "--1", "- 1", "+ 1",  "0x", "0X", "-0x", "0xG", "0x 1", "0x-1", " 0x", "\xFF"}) {
        SCOPED_TRACE(std::string("\"") + text + '"');
        try {
            ParseHexLong(text);
            ADD_FAILURE() << "no error";
        } catch (HexLongError const& error) {
            EXPECT_STREQ(error.what(), "invalid stol argument");
        }
    }
}

TEST(ParseHexLong, NumbersBeyond32BitsSignedAreOutOfRange) {
    for (char const* text : {"80000000", "0x80000000", "E4571002", "FFFFFFFF", "-80000001", "100000000", "-100000000",
                             "FFFFFFFFFFFFFFFFFFFFFFFF", "-FFFFFFFFFFFFFFFFFFFFFFFF", "80000000G"}) {
        SCOPED_TRACE(text);
        try {
            ParseHexLong(text);
            ADD_FAILURE() << "no error";
        } catch (HexLongError const& error) {
            EXPECT_STREQ(error.what(), "stol argument out of range");
        }
    }
}

}  // namespace
}  // namespace gputune
