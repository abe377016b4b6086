// How numbers and texts become log text. Compiled for Windows as well, whose runtime formats numbers on its own.
#include "comma_locale.h"
#include "log/Text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>
#include <string>

namespace gputune::log {
namespace {

std::string TextOf(Part const& part) {
    LineText line;
    line.Append(">");
    part.AppendTo(line);
    return std::string(line.View().substr(1));
}

TEST(LogText, IntegersAreDecimalWithAMinusWhenNegative) {
    EXPECT_EQ(TextOf(0), "0");
    EXPECT_EQ(TextOf(7), "7");
    EXPECT_EQ(TextOf(-1), "-1");
    EXPECT_EQ(TextOf(1234567), "1234567");
    EXPECT_EQ(TextOf(std::numeric_limits<int>::max()), "2147483647");
    EXPECT_EQ(TextOf(std::numeric_limits<int>::min()), "-2147483648");
    EXPECT_EQ(TextOf(std::uint32_t{0}), "0");
    EXPECT_EQ(TextOf(std::numeric_limits<std::uint32_t>::max()), "4294967295");
}

TEST(LogText, RealsHaveSixDigitsBehindThePoint) {
    struct Row {
        double number;
        char const* text;
    };
    Row const rows[] = {
        {0.0, "0.000000"},
        {-0.0, "-0.000000"},
        {0.5, "0.500000"},
        {1.5, "1.500000"},
        {-1.5, "-1.500000"},
        {1.05F, "1.050000"},
        {1800.0, "1800.000000"},
        {2.0 / 3.0, "0.666667"},
        {0.0000004, "0.000000"},
        {999999.9999996, "1000000.000000"},
        {1e15, "1000000000000000.000000"},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(TextOf(row.number), row.text);
    }
    EXPECT_EQ(TextOf(1.5F), "1.500000");
}

TEST(LogText, TheLargestRealFits) {
    // 309 digits, the point and six more; the minus in front.
    std::string const text = TextOf(-std::numeric_limits<double>::max());
    EXPECT_EQ(text.size(), 1 + 309 + 1 + 6U);
    EXPECT_EQ(text.substr(0, 18), "-17976931348623157");
    EXPECT_EQ(text.substr(text.size() - 7), ".000000");
}

TEST(LogText, ADecimalCommaOfTheHostDoesNotShow) {
    if (!test::SetCommaLocale()) {
        GTEST_SKIP() << "no locale with a decimal comma (Debian: package locales)";
    }
    std::string const half = TextOf(0.5);
    std::string const large = TextOf(-1234567.25);
    std::string const integer = TextOf(1234567);
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(half, "0.500000");
    EXPECT_EQ(large, "-1234567.250000");
    EXPECT_EQ(integer, "1234567");
}

TEST(LogText, TextsAreTakenAsTheyAre) {
    EXPECT_EQ(TextOf(""), "");
    EXPECT_EQ(TextOf("failed: "), "failed: ");
    EXPECT_EQ(TextOf(std::string("100 %d %s\\n")), "100 %d %s\\n");
    EXPECT_EQ(TextOf(std::string_view("abcdef").substr(0, 3)), "abc");
}

TEST(LogText, LinesMayBeOfAnyLength) {
    // Around the length up to which a line needs no memory of its own, in one piece and in several.
    for (std::size_t const length : {0U, 1U, 511U, 512U, 513U, 1024U, 5000U}) {
        SCOPED_TRACE(length);
        std::string const text(length, 'x');
        LineText line;
        line.Append(text);
        EXPECT_EQ(line.View(), text);
        line.Append("");
        line.Append(std::string_view());
        line.Append(text);
        line.Append("\n");
        EXPECT_EQ(line.View(), text + text + "\n");
    }
    LineText empty;
    EXPECT_EQ(empty.View(), "");
}

TEST(LogText, BoundedTextEndsAtItsTerminatorOrItsBuffer) {
    char const terminated[8] = {'a', 'b', '\0', 'c', 'd', 'e', 'f', 'g'};
    char const full[3] = {'a', 'b', 'c'};
    char const empty[3] = {'\0', 'b', 'c'};
    EXPECT_EQ(Bounded(terminated), "ab");
    EXPECT_EQ(Bounded(full), "abc");
    EXPECT_EQ(Bounded(empty), "");
}

}  // namespace
}  // namespace gputune::log
