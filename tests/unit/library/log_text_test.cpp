// How numbers and texts look in the log. Compiled for Windows as well, whose runtime formats numbers differently.
#include "comma_locale.h"
#include "log/LineText.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <random>
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

TEST(LogText, HalvesOfTheLastDigitGoToTheEvenOne) {
    // Halves that binary fractions hold exactly.
    EXPECT_EQ(TextOf(1.0 / 128), "0.007812");
    EXPECT_EQ(TextOf(3.0 / 128), "0.023438");
    EXPECT_EQ(TextOf(-1.0 / 128), "-0.007812");
    EXPECT_EQ(TextOf(std::nextafter(1.0 / 128, 1.0)), "0.007813");
    EXPECT_EQ(TextOf(1024 + 127.0 / 128), "1024.992188");
}

TEST(LogText, RealsThatRoundToAWholeNumberCarry) {
    EXPECT_EQ(TextOf(0.9999994), "0.999999");
    EXPECT_EQ(TextOf(0.99999951), "1.000000");
    EXPECT_EQ(TextOf(-9.99999951), "-10.000000");
    EXPECT_EQ(TextOf(99999999.9999999), "100000000.000000");
}

TEST(LogText, InfinityAndNotANumberHaveNames) {
    double const notANumber = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(TextOf(std::numeric_limits<double>::infinity()), "inf");
    EXPECT_EQ(TextOf(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(TextOf(notANumber), "nan");
    EXPECT_EQ(TextOf(std::copysign(notANumber, -1.0)), "nan");
}

std::string PrintedText(double number) {
    char text[400];
    return std::string(text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%f", number)));
}

TEST(LogText, RealsAreWrittenAsPrintfWritesThem) {
    std::mt19937_64 random(1);
    for (int round = 0; round < 3000; ++round) {
        std::uint64_t const bits = random();
        double const any = std::bit_cast<double>(bits);
        // With exponents for which there are digits before and behind the point.
        double const usual = std::ldexp(static_cast<double>(bits >> 11), static_cast<int>(random() % 160) - 140);
        double const thousandths = static_cast<double>(bits % 100000000) / 1000;
        double const half = static_cast<double>(bits % 100000000) / std::ldexp(1.0, static_cast<int>(random() % 40));
        for (double const number : {any, -usual, thousandths, half}) {
            if (!std::isnan(number)) {
                ASSERT_EQ(TextOf(number), PrintedText(number));
            }
        }
    }
    for (double const number : {std::numeric_limits<double>::max(), std::numeric_limits<double>::min(),
                                std::numeric_limits<double>::denorm_min(), -0.0, 1e22, 1e23}) {
        EXPECT_EQ(TextOf(number), PrintedText(number));
    }
}

TEST(LogText, TheLargestRealFits) {
    // A minus sign, 309 digits, the point and six more.
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
    // Lines up to some length need no memory from the heap: lengths around it, written in one piece and in several.
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
