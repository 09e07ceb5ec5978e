// Properties of every one-sample test over random data of many shapes: the
// counts add up to N, significances lie in [0, 1], and the order of the cases
// changes nothing (except for the runs test, where order is the point: there
// reversing the sequence changes nothing).
#include <algorithm>
#include <functional>

#include "engine/stats/OneSampleBinomial.h"
#include "engine/stats/OneSampleChiSquare.h"
#include "engine/stats/OneSampleKolmogorov.h"
#include "engine/stats/OneSampleRuns.h"
#include "engine/stats/OneSampleWilcoxon.h"
#include "engine/test_one_sample_support.h"

namespace {

// Data sets of sizes 0 to 300: continuous, coarse (many ties), small whole numbers, and one
// repeated value.
std::vector<std::vector<double>> DataSets() {
    Random random(41);
    std::vector<std::vector<double>> sets;
    for (std::size_t n : {0u, 1u, 2u, 3u, 5u, 8u, 13u, 40u, 120u, 300u}) {
        sets.push_back(NormalData(random, n, 3, 2, 1e-9));
        sets.push_back(NormalData(random, n, 3, 2, 1));
        std::vector<double> counts(n);
        for (double& v : counts) {
            v = std::floor(random.Exponential() * 2.5);
        }
        sets.push_back(counts);
        sets.push_back(std::vector<double>(n, 4.0));
    }
    return sets;
}

std::vector<double> Shuffled(std::vector<double> values, Random& random) {
    for (std::size_t i = values.size(); i > 1; --i) {
        std::swap(values[i - 1], values[random.Bits() % i]);
    }
    return values;
}

// A significance is NaN (not computed) or lies in [0, 1].
void ExpectSig(double sig) {
    if (!std::isnan(sig)) {
        EXPECT_GE(sig, 0.0);
        EXPECT_LE(sig, 1.0);
    }
}

void ExpectSameOrBothNaN(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) {
        EXPECT_EQ(std::isnan(a), std::isnan(b));
    } else {
        EXPECT_NEAR(a, b, 1e-12 * std::max(1.0, std::fabs(a)));
    }
}

} // namespace

TEST(OneSampleProperties, ChiSquareAndBinomial) {
    Random random(1);
    for (const std::vector<double>& x : DataSets()) {
        SCOPED_TRACE(testing::Message() << x.size() << " values");
        const std::vector<double> y = Shuffled(x, random);
        const std::vector<double> categories{0, 1, 2, 3, 4};
        const OneSampleChiSquareResult a = ChiSquareGoodnessOfFit(x, categories);
        const OneSampleChiSquareResult b = ChiSquareGoodnessOfFit(y, categories);
        double observed = 0, expected = 0;
        for (std::size_t i = 0; i < a.fObserved.size(); ++i) {
            observed += a.fObserved[i];
            expected += a.Computed() ? a.fExpected[i] : 0;
        }
        EXPECT_EQ(observed, static_cast<double>(a.fTotalN));
        EXPECT_EQ(a.fTotalN + a.fOutsideCount, x.size());
        if (a.Computed()) {
            EXPECT_NEAR(expected, static_cast<double>(a.fTotalN), 1e-9);
        }
        ExpectSig(a.fAsymptoticSig);
        EXPECT_EQ(a.fObserved, b.fObserved);
        ExpectSameOrBothNaN(a.fStatistic, b.fStatistic);
        EXPECT_EQ(a.fValuesOutside, b.fValuesOutside);

        const double cut = x.empty() ? 0 : Median(x);
        const BinomialCounts cx = CountByCutPoint(x, cut);
        const BinomialCounts cy = CountByCutPoint(y, cut);
        EXPECT_EQ(cx.fSuccesses + cx.fFailures + cx.fExcluded, x.size());
        EXPECT_EQ(cx.fSuccesses, cy.fSuccesses);
        const BinomialCounts lists =
            CountByCategories(x, std::vector<double>{0, 1}, std::vector<double>{2, 4});
        EXPECT_EQ(lists.fSuccesses + lists.fFailures + lists.fExcluded, x.size());
        for (double p0 : {0.5, 0.3}) {
            const BinomialResult t = BinomialTest(cx.fSuccesses, x.size(), p0);
            ExpectSig(t.fExactSig2Tailed);
            ExpectSig(t.fExactSigMinLikelihood);
            ExpectSig(t.fExactSigLess);
            ExpectSig(t.fExactSigGreater);
            if (t.Computed()) {
                // The two one-sided tails overlap in the observed count.
                EXPECT_GE(t.fExactSigLess + t.fExactSigGreater, 1.0 - 1e-12);
            }
        }
        const SuccessRateIntervals ci = SuccessRateIntervalsOf(cx.fSuccesses, x.size(), 0.95);
        for (const ProportionInterval& i :
             {ci.fClopperPearson, ci.fJeffreys, ci.fLikelihoodRatio}) {
            if (ci.Computed()) {
                EXPECT_LE(0.0, i.fLower);
                EXPECT_LE(i.fLower, i.fEstimate);
                EXPECT_LE(i.fEstimate, i.fUpper);
                EXPECT_LE(i.fUpper, 1.0);
            }
        }
    }
}

TEST(OneSampleProperties, WilcoxonAndKolmogorovSmirnov) {
    Random random(2);
    for (const std::vector<double>& x : DataSets()) {
        SCOPED_TRACE(testing::Message() << x.size() << " values");
        const std::vector<double> y = Shuffled(x, random);
        const OneSampleWilcoxonResult a = OneSampleWilcoxon(x, 3);
        const OneSampleWilcoxonResult b = OneSampleWilcoxon(y, 3);
        EXPECT_EQ(a.fNegative + a.fZero + a.fPositive, x.size());
        ExpectSig(a.fAsymptoticSig2Tailed);
        ExpectSig(a.fExactSig2Tailed);
        ExpectSameOrBothNaN(a.fStatistic, b.fStatistic);
        ExpectSameOrBothNaN(a.fAsymptoticSig2Tailed, b.fAsymptoticSig2Tailed);
        ExpectSameOrBothNaN(a.fExactSig2Tailed, b.fExactSig2Tailed);
        EXPECT_EQ(a.fOutcome, b.fOutcome);

        for (KsDistribution d : {KsDistribution::kNormal, KsDistribution::kUniform,
                                 KsDistribution::kPoisson, KsDistribution::kExponential}) {
            for (bool estimated : {true, false}) {
                const std::optional<KsParameters> given =
                    estimated ? std::nullopt : std::optional(KsParameters{2.5, 4});
                const OneSampleKsResult ka = OneSampleKolmogorovSmirnov(x, d, given);
                const OneSampleKsResult kb = OneSampleKolmogorovSmirnov(y, d, given);
                EXPECT_EQ(ka.fOutcome, kb.fOutcome);
                EXPECT_EQ(ka.fTotalN, x.size());
                ExpectSameOrBothNaN(ka.fAbsolute, kb.fAbsolute);
                ExpectSameOrBothNaN(ka.fAsymptoticSig2Tailed, kb.fAsymptoticSig2Tailed);
                ExpectSig(ka.fAsymptoticSig2Tailed);
                ExpectSig(ka.fLillieforsSig);
                if (!std::isnan(ka.fAbsolute)) {
                    EXPECT_GE(ka.fAbsolute, 0.0);
                    EXPECT_LE(ka.fAbsolute, 1.0);
                    EXPECT_EQ(ka.fAbsolute, std::max(ka.fPositive, -ka.fNegative));
                }
            }
        }
    }
}

TEST(OneSampleProperties, RunsAndHistograms) {
    for (const std::vector<double>& x : DataSets()) {
        SCOPED_TRACE(testing::Message() << x.size() << " values");
        const std::vector<double> reversed(x.rbegin(), x.rend());
        for (RunsCut cut : {RunsCut::kMedian, RunsCut::kMean}) {
            const double point = x.empty() ? 0 : RunsCutPoint(x, cut);
            const OneSampleRunsResult a = RunsTestByCutPoint(x, point);
            const OneSampleRunsResult b = RunsTestByCutPoint(reversed, point);
            EXPECT_EQ(a.fFirstCount + a.fSecondCount, x.size());
            EXPECT_EQ(a.fOutcome, b.fOutcome);
            ExpectSameOrBothNaN(a.fRuns, b.fRuns);
            ExpectSameOrBothNaN(a.fExactSig2Tailed, b.fExactSig2Tailed);
            ExpectSig(a.fAsymptoticSig2Tailed);
            ExpectSig(a.fExactSig2Tailed);
            if (a.Computed()) {
                EXPECT_GE(a.fExactSigLess + a.fExactSigGreater, 1.0 - 1e-12);
                EXPECT_GE(a.fRuns, 2.0);
                EXPECT_LE(a.fRuns, 2.0 * std::min(a.fFirstCount, a.fSecondCount) + 1);
            }
        }
        const OneSampleRunsResult lists =
            RunsTestByCategories(x, std::vector<double>{0, 1}, std::vector<double>{3});
        EXPECT_EQ(lists.fFirstCount + lists.fSecondCount + lists.fExcluded, x.size());
        const ValueHistogram h = MakeHistogram(x);
        std::size_t total = 0;
        for (const ValueBin& bin : h.fBins) {
            total += bin.fCount;
        }
        EXPECT_EQ(total, x.size());
    }
}
