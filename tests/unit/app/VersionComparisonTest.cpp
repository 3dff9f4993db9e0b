#include "app/VersionComparison.h"

#include <gtest/gtest.h>

namespace gf::test {
namespace {

struct Ordered {
    const char* lower;
    const char* higher;
};

class VersionOrderTest : public ::testing::TestWithParam<Ordered> {};

TEST_P(VersionOrderTest, LowerComesBeforeHigherBothWays) {
    const Ordered pair = GetParam();
    EXPECT_LT(compareVersions(pair.lower, pair.higher), 0) << pair.lower << " < " << pair.higher;
    EXPECT_GT(compareVersions(pair.higher, pair.lower), 0) << pair.higher << " > " << pair.lower;
}

INSTANTIATE_TEST_SUITE_P(VersionComparison, VersionOrderTest,
                         ::testing::Values(
                             // Components compare as numbers, not as text.
                             Ordered{"1.9", "1.10"}, Ordered{"0.1.0", "0.2.0"}, Ordered{"2", "10"},
                             Ordered{"1.0", "1.0.1"},
                             Ordered{"99999999999999999998", "99999999999999999999"},
                             // A pre-release comes before its release and before anything later.
                             Ordered{"1.0beta", "1.0"}, Ordered{"1.0-rc1", "1.0"},
                             Ordered{"1.0.0-alpha", "1.0.0"}, Ordered{"1.0b2", "1.0b10"},
                             Ordered{"1.0alpha", "1.0beta"}, Ordered{"1.0beta9", "1.0rc1"},
                             Ordered{"1.0rc1", "1.0.1"}, Ordered{"1.0", "1.1beta"}));

TEST(VersionComparisonTest, EqualVersionsCompareEqual) {
    EXPECT_EQ(compareVersions("1.0", "1.0.0"), 0);
    EXPECT_EQ(compareVersions("1.02", "1.2"), 0);
    EXPECT_EQ(compareVersions("1.0RC1", "1.0rc1"), 0);
    EXPECT_EQ(compareVersions("", ""), 0);
}

}  // namespace
}  // namespace gf::test
