// Differences at the precision of the data: every test that ranks or orders
// differences gives on decimal data (whole numbers divided by a power of
// ten, whose binary differences miss ties) exactly what it gives on the
// whole numbers themselves, with the estimates scaled back.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "engine/stats/Differences.h"
#include "engine/stats/IndependentTwoSample.h"
#include "engine/stats/OneSampleWilcoxon.h"
#include "engine/stats/RelatedPairs.h"

namespace {

std::vector<double> Scaled(const std::vector<double>& whole, double power) {
    std::vector<double> out;
    for (double w : whole) {
        out.push_back(w / power);
    }
    return out;
}

} // namespace

TEST(Differences, GridOfTheData) {
    const struct {
        std::vector<double> fValues;
        int fDecimals;
    } cases[] = {
        {{1, -2, 30}, 0},
        {{0.1, 0.25, -3.5}, 2},
        {{1.5e-9, 2.75e-9}, 11},
        {{0.1 + 0.2}, -1},          // 0.30000000000000004: no short decimal
        {{9007199254740993.0}, -1}, // a whole number beyond the exact keys
        {{1e15, 0.5}, -1},          // together too large for one grid
        {{}, 0},
    };
    for (const auto& c : cases) {
        const DecimalGrid grid = DecimalGrid::Of({c.fValues});
        EXPECT_EQ(grid.Decimals(), c.fDecimals) << c.fValues.size();
        for (double v : c.fValues) {
            EXPECT_EQ(grid.Value(grid.Key(v)), v);
        }
    }
    const std::vector<double> a{0.1, 0.5}, t{0.3, 0.3};
    const std::vector<double> d = GridDifferences(DecimalGrid::Of({a, t}), t, a);
    EXPECT_EQ(d[0], -d[1]); // -0.2 and 0.2 are one magnitude
}

TEST(Differences, DecimalDataGiveTheResultsOfTheirWholeNumbers) {
    std::mt19937_64 random(1729);
    for (int trial = 0; trial < 400; ++trial) {
        const std::size_t n = 3 + random() % 40;
        const double power = std::pow(10.0, static_cast<double>(1 + random() % 4));
        // Few distinct whole numbers, so that ties and zero differences are common.
        std::uniform_int_distribution<int> draw(-12, 12);
        std::vector<double> x(n), y(n);
        for (std::size_t i = 0; i < n; ++i) {
            x[i] = draw(random);
            y[i] = draw(random);
        }
        const double median = draw(random);
        const std::vector<double> xs = Scaled(x, power), ys = Scaled(y, power);
        SCOPED_TRACE("trial " + std::to_string(trial));

        const OneSampleWilcoxonResult one = OneSampleWilcoxon(x, median);
        const OneSampleWilcoxonResult oneScaled = OneSampleWilcoxon(xs, median / power);
        EXPECT_EQ(one.fZero, oneScaled.fZero);
        if (one.Computed()) {
            EXPECT_EQ(one.fStatistic, oneScaled.fStatistic);
            EXPECT_EQ(one.fAsymptoticSig2Tailed, oneScaled.fAsymptoticSig2Tailed);
            EXPECT_TRUE(one.fExactSig2Tailed == oneScaled.fExactSig2Tailed ||
                        std::isnan(one.fExactSig2Tailed));
        }

        const WilcoxonResult paired = WilcoxonSignedRank(x, y);
        const WilcoxonResult pairedScaled = WilcoxonSignedRank(xs, ys);
        EXPECT_EQ(paired.fCounts.fTies, pairedScaled.fCounts.fTies);
        EXPECT_EQ(paired.fStatistic, pairedScaled.fStatistic);
        EXPECT_EQ(paired.fTieSum, pairedScaled.fTieSum);
        EXPECT_EQ(SignTest(x, y).fCounts.fPositive, SignTest(xs, ys).fCounts.fPositive);

        const PairedHodgesLehmannResult hl = HodgesLehmannPaired(x, y, 0.9);
        const PairedHodgesLehmannResult hlScaled = HodgesLehmannPaired(xs, ys, 0.9);
        EXPECT_EQ(hl.fEstimate / power, hlScaled.fEstimate);
        EXPECT_EQ(hl.fIntervalReachable, hlScaled.fIntervalReachable);
        if (hl.fIntervalReachable) {
            EXPECT_EQ(hl.fLower / power, hlScaled.fLower);
            EXPECT_EQ(hl.fUpper / power, hlScaled.fUpper);
        }

        // The two fields as the two groups of an independent-samples field.
        std::vector<double> values = x, valuesScaled = xs;
        values.insert(values.end(), y.begin(), y.end());
        valuesScaled.insert(valuesScaled.end(), ys.begin(), ys.end());
        std::vector<int> groups(2 * n, 0);
        std::fill(groups.begin() + static_cast<std::ptrdiff_t>(n), groups.end(), 1);
        const Ranking ranking = RankValues(values), rankingScaled = RankValues(valuesScaled);
        const HodgesLehmannResult two = HodgesLehmann({values, groups, &ranking, 2}, 0.95);
        const HodgesLehmannResult twoScaled =
            HodgesLehmann({valuesScaled, groups, &rankingScaled, 2}, 0.95);
        EXPECT_EQ(two.fEstimate / power, twoScaled.fEstimate);
        ASSERT_EQ(two.fHasInterval, twoScaled.fHasInterval);
        if (two.fHasInterval) {
            EXPECT_EQ(two.fLower / power, twoScaled.fLower);
            EXPECT_EQ(two.fUpper / power, twoScaled.fUpper);
        }
    }
}
