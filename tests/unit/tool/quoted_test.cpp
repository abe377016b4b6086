// Texts of files in messages.
#include <gtest/gtest.h>

#include "tool/values/Quoted.h"

namespace gputune::tool {
namespace {

using namespace std::string_literals;

TEST(ToolQuoted, TextStaysAsItIs) {
    EXPECT_EQ(Printable("65 \u00b0C, \u20ac, \U0001F600"), "65 \u00b0C, \u20ac, \U0001F600");
    EXPECT_EQ(Printable(""), "");
}

TEST(ToolQuoted, ControlCharactersAndOtherBytesAreEscaped) {
    EXPECT_EQ(Printable("a\0b\x1b[2J\x7f"s), "a\\x00b\\x1B[2J\\x7F");
    EXPECT_EQ(Printable("caf\xE9"), "caf\\xE9");
    EXPECT_EQ(Printable("\xE9t\xE9"), "\\xE9t\\xE9");
    // A control character in two bytes, overlong forms, a surrogate, beyond the last character, cut off.
    EXPECT_EQ(Printable("\xC2\x9B"), "\\xC2\\x9B");
    EXPECT_EQ(Printable("\xC0\x80"), "\\xC0\\x80");
    EXPECT_EQ(Printable("\xE0\x80\x80"), "\\xE0\\x80\\x80");
    EXPECT_EQ(Printable("\xF0\x80\x80\x80"), "\\xF0\\x80\\x80\\x80");
    EXPECT_EQ(Printable("\xED\xA0\x80"), "\\xED\\xA0\\x80");
    EXPECT_EQ(Printable("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80");
    EXPECT_EQ(Printable("\xE2\x82"), "\\xE2\\x82");
}

TEST(ToolQuoted, LongTextIsCutBetweenCharacters) {
    EXPECT_EQ(Quoted("short"), "\"short\"");
    EXPECT_EQ(Quoted(std::string(40, 'x')), "\"" + std::string(40, 'x') + "\"");
    std::string many;
    for (int i = 0; i < 41; ++i) {
        many += "\u00b0";
    }
    EXPECT_EQ(Quoted(many), "\"" + many.substr(2) + "...\"");
}

}  // namespace
}  // namespace gputune::tool
