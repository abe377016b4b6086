// Numbers as text for the script of a page. tests/tool/page_test sees the script unpack them.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tool/recording/PackedNumbers.h"

namespace gputune::tool {
namespace {

using Numbers = std::vector<std::optional<double>>;

TEST(ToolPackedNumbers, DifferencesAreCharacters) {
    // 1500 is 3000 with its sign bit: 24, 29 and 2 in digits of five bits, the lowest first. Then 0 and one more, 1,
    // -1.
    PackedNumbers const packed = PackNumbers(Numbers{1500, 1500, 1500, 1501, 1500});
    EXPECT_EQ(packed.decimals, 0);
    EXPECT_EQ(packed.values, std::vector<std::string>{"49CACCD"});
    EXPECT_TRUE(packed.gaps.empty());
}

TEST(ToolPackedNumbers, DecimalsAreAsManyAsAreNeededAndThreeAtMost) {
    EXPECT_EQ(PackNumbers(Numbers{1, 2.5}).decimals, 1);
    EXPECT_EQ(PackNumbers(Numbers{386.67, 1}).decimals, 2);
    EXPECT_EQ(PackNumbers(Numbers{0.001}).decimals, 3);
    EXPECT_EQ(PackNumbers(Numbers{1.0 / 3}).decimals, 3);
    EXPECT_EQ(PackNumbers(Numbers{1.0 / 3}).values, PackNumbers(Numbers{0.333}).values);
}

TEST(ToolPackedNumbers, NumbersTooLargeForAScriptAreRounded) {
    EXPECT_EQ(PackNumbers(Numbers{1e12 + 0.125}).decimals, 3);
    EXPECT_EQ(PackNumbers(Numbers{1e14 + 0.125}).decimals, 1);
    EXPECT_EQ(PackNumbers(Numbers{-1e300, 1}).decimals, -285);
    EXPECT_LT(PackNumbers(Numbers{std::numeric_limits<double>::max()}).decimals, -290);
}

TEST(ToolPackedNumbers, GapsTellWhereNumbersAreMissing) {
    PackedNumbers const packed =
        PackNumbers(Numbers{std::nullopt, 5, 5, 5, std::nullopt, std::nullopt, 6, std::nullopt});
    // None, then one missing; three, then two missing; one, then one missing.
    EXPECT_EQ(packed.gaps, std::vector<std::string>{"ACGECC"});
    // 0 for the first gap, and none more; 5, and four more of it; 6, and one more of it.
    EXPECT_EQ(packed.values, std::vector<std::string>{"AAKAGCAA"});
    EXPECT_TRUE(PackNumbers(Numbers{}).values.empty());
}

TEST(ToolPackedNumbers, LinesAreOfAThousandCharacters) {
    Numbers numbers;
    for (int i = 0; i < 3000; ++i) {
        numbers.emplace_back(i % 2);
    }
    std::vector<std::string> const lines = PackNumbers(numbers).values;
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0].size(), 1000U);
    EXPECT_EQ(lines[3].size(), 1U);
}

}  // namespace
}  // namespace gputune::tool
