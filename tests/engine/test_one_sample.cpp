// The one-sample statistics where R is no reference: histogram bins, the
// random numbers of the Monte Carlo significances, the exact runs
// distribution by complete enumeration, the Kolmogorov-Smirnov statistic by
// its definition and its significance by simulation, and why each test stops.
// Their agreement with R: test_reference_onesample.cpp.
#include <algorithm>
#include <functional>
#include <map>

#include "engine/stats/OneSample.h"
#include "engine/stats/OneSampleBinomial.h"
#include "engine/stats/OneSampleChiSquare.h"
#include "engine/stats/OneSampleKolmogorov.h"
#include "engine/stats/OneSampleRuns.h"
#include "engine/stats/OneSampleWilcoxon.h"
#include "engine/test_one_sample_support.h"

namespace {

std::size_t TotalCount(const ValueHistogram& h) {
    std::size_t total = 0;
    for (const ValueBin& bin : h.fBins) {
        total += bin.fCount;
    }
    return total;
}

} // namespace

TEST(Histogram, BinsOfAGivenWidth) {
    const std::vector<double> values{0.2, 9.99, 10, 10, 25, 31};
    const ValueHistogram h = BinValues(values, 10, 0);
    ASSERT_EQ(h.fBins.size(), 4u);
    EXPECT_EQ(h.fOrigin, 0.0);
    EXPECT_EQ(h.fBins[0].fMidpoint, 5.0);
    EXPECT_EQ(h.fBins[0].fCount, 2u); // [0, 10)
    EXPECT_EQ(h.fBins[1].fCount, 2u); // [10, 20): both tens
    EXPECT_EQ(h.fBins[2].fCount, 1u);
    EXPECT_EQ(h.fBins[3].fCount, 1u);
    // Aligned on the origin, starting at the bin of the smallest value.
    const ValueHistogram shifted = BinValues(values, 10, 5);
    EXPECT_EQ(shifted.fOrigin, -5.0);
    EXPECT_EQ(TotalCount(shifted), values.size());
    EXPECT_TRUE(BinValues({}, 1, 0).fBins.empty());
    // A width too fine for the range is made coarser rather than allocating billions of bins.
    const std::vector<double> wide{0, 1e12};
    const ValueHistogram coarse = BinValues(wide, 1e-3, 0);
    EXPECT_LE(coarse.fBins.size(), 100001u);
    EXPECT_EQ(TotalCount(coarse), 2u);
    // A range beyond the doubles: one bin.
    const std::vector<double> extreme{-1e308, 0, 1e308};
    EXPECT_EQ(BinValues(extreme, 1, 0).fBins.size(), 1u);
    EXPECT_EQ(MakeHistogram(extreme).fBins.size(), 1u);
    EXPECT_EQ(TotalCount(MakeHistogram(extreme)), 3u);
}

TEST(OneSampleHistogram, ChosenWidths) {
    // Whole numbers with a small range: a bin per number, centred on it.
    const std::vector<double> counts{0, 3, 3, 1, 7};
    const ValueHistogram byNumber = MakeHistogram(counts);
    EXPECT_EQ(byNumber.fWidth, 1.0);
    ASSERT_EQ(byNumber.fBins.size(), 8u);
    EXPECT_EQ(byNumber.fBins[3].fMidpoint, 3.0);
    EXPECT_EQ(byNumber.fBins[3].fCount, 2u);
    // 272 waiting times from 43 to 96: 10 bins of a round width.
    Random random(1);
    const std::vector<double> waiting = NormalData(random, 272, 70, 13, 1);
    const ValueHistogram round = MakeHistogram(waiting);
    EXPECT_TRUE(round.fWidth == 5 || round.fWidth == 10) << round.fWidth;
    EXPECT_EQ(TotalCount(round), waiting.size());
    const std::vector<double> fine = NormalData(random, 1000, 0.003, 0.001, 1e-9);
    const ValueHistogram small = MakeHistogram(fine);
    EXPECT_EQ(TotalCount(small), fine.size());
    EXPECT_GE(small.fBins.size(), 5u);
    EXPECT_LE(small.fBins.size(), 42u);
    const std::vector<double> one{2.5, 2.5};
    EXPECT_EQ(MakeHistogram(one).fBins.size(), 1u);
}

TEST(OneSampleRandom, StandardGeneratorAndFixedConversions) {
    // The standard fixes the 10000th number of the default-seeded 64-bit Mersenne Twister.
    Random standard(5489);
    std::uint64_t bits = 0;
    for (int i = 0; i < 10000; ++i) {
        bits = standard.Bits();
    }
    EXPECT_EQ(bits, 9981545732273789042u);
    // The default seed's first numbers: the same on every platform.
    Random random(2000000);
    EXPECT_EQ(random.Bits(), 12073117642435887829u);
    EXPECT_EQ(random.Uniform(), 0.62291976426113882);
    EXPECT_EQ(random.Normal(), -1.0618543682377306);
    EXPECT_EQ(random.Exponential(), 1.1866366382252844);
}

TEST(OneSampleRandom, DeviatesHaveTheirDistributions) {
    Random random(99);
    const std::size_t n = 200000;
    double uniform = 0, normal = 0, normalSquares = 0, exponential = 0;
    std::size_t below = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const double u = random.Uniform();
        ASSERT_GT(u, 0.0);
        ASSERT_LT(u, 1.0);
        uniform += u;
        const double z = random.Normal();
        normal += z;
        normalSquares += z * z;
        below += z < 1.959963984540054;
        exponential += random.Exponential();
    }
    // Within four standard errors.
    EXPECT_NEAR(uniform / n, 0.5, 4 * std::sqrt(1.0 / 12 / n));
    EXPECT_NEAR(normal / n, 0.0, 4 / std::sqrt(n));
    EXPECT_NEAR(normalSquares / n, 1.0, 4 * std::sqrt(2.0 / n));
    EXPECT_NEAR(static_cast<double>(below) / n, 0.975, 4 * std::sqrt(0.975 * 0.025 / n));
    EXPECT_NEAR(exponential / n, 1.0, 4 / std::sqrt(n));
    // Different seeds, different streams.
    Random a(1), b(2);
    EXPECT_NE(a.Bits(), b.Bits());
}

// The doubled tail is the test the Clopper-Pearson interval inverts: p0 at either bound of the
// (1 - alpha) interval has a two-sided significance of alpha.
TEST(OneSampleBinomial, DoubledTailAgreesWithClopperPearson) {
    const struct {
        std::size_t fSuccesses;
        std::size_t fTrials;
        double fProportion;
    } cases[] = {{4, 17, 0.95}, {12, 30, 0.9}, {80, 100, 0.99}};
    for (const auto& c : cases) {
        const ProportionInterval interval =
            ClopperPearsonInterval(c.fSuccesses, c.fTrials, c.fProportion);
        const double alpha = 1 - c.fProportion;
        EXPECT_NEAR(BinomialTest(c.fSuccesses, c.fTrials, interval.fLower).fExactSig2Tailed, alpha,
                    1e-9);
        EXPECT_NEAR(BinomialTest(c.fSuccesses, c.fTrials, interval.fUpper).fExactSig2Tailed, alpha,
                    1e-9);
    }
}

TEST(OneSampleRuns, ExactTailsMatchCompleteEnumeration) {
    for (std::size_t n = 3; n <= 14; ++n) {
        // count[n1][r]: sequences of length n with n1 cases of the first class and r runs.
        std::map<std::size_t, std::map<std::size_t, double>> count;
        std::map<std::pair<std::size_t, std::size_t>, std::vector<std::uint8_t>> example;
        for (std::uint32_t mask = 0; mask < (1u << n); ++mask) {
            std::vector<std::uint8_t> classes;
            std::size_t first = 0;
            std::size_t runs = 0;
            for (std::size_t i = 0; i < n; ++i) {
                const std::uint8_t c = (mask >> i) & 1u;
                first += c == 0;
                runs += i == 0 || c != classes.back();
                classes.push_back(c);
            }
            count[first][runs] += 1;
            example.emplace(std::pair{first, runs}, classes);
        }
        for (const auto& [key, classes] : example) {
            const auto [first, runs] = key;
            if (first == 0 || first == n) {
                continue;
            }
            double total = 0, atMost = 0, atLeast = 0;
            for (const auto& [r, c] : count[first]) {
                total += c;
                atMost += r <= runs ? c : 0;
                atLeast += r >= runs ? c : 0;
            }
            const OneSampleRunsResult result = RunsTest(classes);
            SCOPED_TRACE(testing::Message() << "n " << n << ", n1 " << first << ", runs " << runs);
            ASSERT_TRUE(result.Computed());
            EXPECT_EQ(result.fRuns, static_cast<double>(runs));
            EXPECT_NEAR(result.fExactSigLess, atMost / total, 1e-12);
            EXPECT_NEAR(result.fExactSigGreater, atLeast / total, 1e-12);
            EXPECT_NEAR(result.fExactSig2Tailed,
                        std::min(1.0, 2 * std::min(atMost, atLeast) / total), 1e-12);
        }
    }
}

namespace {

// sup |Fn - F| by its definition: Fn and F evaluated on a fine grid that holds every value and
// points just beside each.
double BruteForceD(std::vector<double> x, KsDistribution distribution, const KsParameters& p,
                   double (*cdf)(double, const KsParameters&)) {
    std::sort(x.begin(), x.end());
    std::vector<double> grid;
    const double low = x.front() - 3, high = x.back() + 3;
    for (int i = 0; i <= 20000; ++i) {
        grid.push_back(low + (high - low) * i / 20000);
    }
    for (double v : x) {
        grid.insert(grid.end(), {v, std::nextafter(v, -1e300), std::nextafter(v, 1e300)});
    }
    if (distribution == KsDistribution::kPoisson) {
        for (double u = -1; u <= x.back() + 30; u += 0.5) {
            grid.push_back(u);
        }
    }
    double d = 0;
    const double n = static_cast<double>(x.size());
    for (double g : grid) {
        const double fn =
            static_cast<double>(std::upper_bound(x.begin(), x.end(), g) - x.begin()) / n;
        d = std::max(d, std::fabs(fn - cdf(g, p)));
    }
    return d;
}

} // namespace

TEST(OneSampleKolmogorov, StatisticMatchesItsDefinitionOnSmallSamples) {
    Random random(23);
    const auto normal = [](double x, const KsParameters& p) {
        return 0.5 * std::erfc(-(x - p.fFirst) / (p.fSecond * std::sqrt(2.0)));
    };
    const auto uniform = [](double x, const KsParameters& p) {
        return std::clamp((x - p.fFirst) / (p.fSecond - p.fFirst), 0.0, 1.0);
    };
    const auto exponential = [](double x, const KsParameters& p) {
        return x <= 0 ? 0.0 : 1 - std::exp(-x / p.fFirst);
    };
    const auto poisson = [](double x, const KsParameters& p) {
        double sum = 0, term = std::exp(-p.fFirst);
        for (int k = 0; k <= std::floor(x); ++k) {
            sum += term;
            term *= p.fFirst / (k + 1);
        }
        return x < 0 ? 0.0 : sum;
    };
    for (std::size_t n : {1u, 2u, 3u, 6u, 12u}) {
        for (int repeat = 0; repeat < 5; ++repeat) {
            SCOPED_TRACE(testing::Message() << "n " << n << ", repeat " << repeat);
            std::vector<double> x = NormalData(random, n, 1, 1, 0.25); // ties on a coarse grid
            std::vector<double> positive(x), counts(x);
            for (double& v : positive) {
                v = std::fabs(v);
            }
            for (double& v : counts) {
                v = std::floor(3 * std::fabs(v));
            }
            const KsParameters pn{1.1, 0.8}, pu{-0.5, 2.5}, pe{0.9, 0}, pp{2.2, 0};
            EXPECT_NEAR(OneSampleKolmogorovSmirnov(x, KsDistribution::kNormal, pn).fAbsolute,
                        BruteForceD(x, KsDistribution::kNormal, pn, normal), 1e-12);
            EXPECT_NEAR(OneSampleKolmogorovSmirnov(x, KsDistribution::kUniform, pu).fAbsolute,
                        BruteForceD(x, KsDistribution::kUniform, pu, uniform), 1e-12);
            EXPECT_NEAR(
                OneSampleKolmogorovSmirnov(positive, KsDistribution::kExponential, pe).fAbsolute,
                BruteForceD(positive, KsDistribution::kExponential, pe, exponential), 1e-12);
            EXPECT_NEAR(OneSampleKolmogorovSmirnov(counts, KsDistribution::kPoisson, pp).fAbsolute,
                        BruteForceD(counts, KsDistribution::kPoisson, pp, poisson), 1e-12);
        }
    }
}

// Under the hypothesis the asymptotic significance is calibrated for large samples and
// conservative for small ones: P(sig <= alpha) is near alpha at N = 200 (0.048 and 0.095
// in 40000 samples) and at most alpha (up to simulation error) at N = 10 (0.034, 0.073).
TEST(OneSampleKolmogorov, AsymptoticSignificanceUnderTheHypothesisBySimulation) {
    Random random(29);
    const std::size_t repeats = 10000;
    for (std::size_t n : {10u, 200u}) {
        std::size_t at5 = 0, at10 = 0;
        std::vector<double> x(n);
        for (std::size_t k = 0; k < repeats; ++k) {
            for (double& v : x) {
                v = random.Uniform();
            }
            const double sig =
                OneSampleKolmogorovSmirnov(x, KsDistribution::kUniform, KsParameters{0, 1})
                    .fAsymptoticSig2Tailed;
            at5 += sig <= 0.05;
            at10 += sig <= 0.10;
        }
        const double rate5 = static_cast<double>(at5) / repeats;
        const double rate10 = static_cast<double>(at10) / repeats;
        SCOPED_TRACE(testing::Message() << "n " << n << ": " << rate5 << ", " << rate10);
        // Three simulation standard errors: 0.0065 at 5 %, 0.009 at 10 %.
        EXPECT_LE(rate5, 0.05 + 0.0065);
        EXPECT_LE(rate10, 0.10 + 0.009);
        if (n == 200) {
            EXPECT_GE(rate5, 0.05 - 0.0065 - 0.004); // and the finite-sample lag at N = 200
            EXPECT_GE(rate10, 0.10 - 0.009 - 0.007);
        } else {
            EXPECT_GE(rate5, 0.02);
        }
    }
}

TEST(OneSample, TestsSayWhyTheyStop) {
    const std::vector<double> same{2, 2, 2, 2, 2, 2}, four{1, 2, 4, 3}, values{4, 5, 6};
    const std::vector<double> twelve{1, 2}, one{2}, fraction{1, 2.5}, negative{1, -2};
    const std::vector<std::uint8_t> oneClass{1, 1, 1, 1}, pair{0, 1};
    const struct {
        const char* fWhat;
        std::function<Outcome()> fOutcome;
        Outcome fExpected;
    } cases[] = {
        {"binomial, no trials", [] { return BinomialTest(0, 0, 0.5).fOutcome; }, Outcome::kNoCases},
        {"binomial, p0 = 0", [] { return BinomialTest(3, 5, 0).fOutcome; }, Outcome::kBadParameter},
        {"binomial, more successes than trials", [] { return BinomialTest(6, 5, 0.5).fOutcome; },
         Outcome::kBadParameter},
        {"intervals, no trials", [] { return SuccessRateIntervalsOf(0, 0, 0.95).fOutcome; },
         Outcome::kNoCases},
        {"intervals, a level in percent", [] { return SuccessRateIntervalsOf(2, 5, 95).fOutcome; },
         Outcome::kBadParameter},
        {"chi-square, one category", [&] { return ChiSquareGoodnessOfFit(same).fOutcome; },
         Outcome::kOneCategory},
        {"chi-square, no case in the categories",
         [&] { return ChiSquareGoodnessOfFit(values, twelve).fOutcome; }, Outcome::kNoCases},
        {"chi-square, a zero frequency",
         [&] {
             return ChiSquareGoodnessOfFit(values, twelve, std::vector<double>{1, 0}).fOutcome;
         },
         Outcome::kBadParameter},
        {"chi-square, a category twice",
         [&] {
             return ChiSquareGoodnessOfFit(values, std::vector<double>{4, 4}).fOutcome;
         },
         Outcome::kBadParameter},
        {"runs, no cases", [] { return RunsTest({}).fOutcome; }, Outcome::kNoCases},
        {"runs, one class", [&] { return RunsTest(oneClass).fOutcome; }, Outcome::kOneCategory},
        {"runs, one case of each class", [&] { return RunsTest(pair).fOutcome; },
         Outcome::kTooFewCases},
        {"runs, every value above the cut", [&] { return RunsTestByCutPoint(values, 3).fOutcome; },
         Outcome::kOneCategory},
        {"runs, lists that share a value",
         [&] {
             return RunsTestByCategories(values, std::vector<double>{4, 5}, std::vector<double>{5})
                 .fOutcome;
         },
         Outcome::kBadParameter},
        {"Wilcoxon, no cases", [] { return OneSampleWilcoxon({}, 0).fOutcome; }, Outcome::kNoCases},
        {"Wilcoxon, every value at the median", [&] { return OneSampleWilcoxon(same, 2).fOutcome; },
         Outcome::kAllAtTestValue},
        {"Kolmogorov-Smirnov, one case",
         [&] { return OneSampleKolmogorovSmirnov(one, KsDistribution::kNormal).fOutcome; },
         Outcome::kTooFewCases},
        {"Kolmogorov-Smirnov, no variance",
         [&] { return OneSampleKolmogorovSmirnov(same, KsDistribution::kUniform).fOutcome; },
         Outcome::kNoVariance},
        {"Kolmogorov-Smirnov, below five cases for Lilliefors",
         [&] { return OneSampleKolmogorovSmirnov(four, KsDistribution::kNormal).fOutcome; },
         Outcome::kTooFewCases},
        {"Poisson, a fraction",
         [&] { return OneSampleKolmogorovSmirnov(fraction, KsDistribution::kPoisson).fOutcome; },
         Outcome::kOutsideSupport},
        {"exponential, a negative value",
         [&] {
             return OneSampleKolmogorovSmirnov(negative, KsDistribution::kExponential).fOutcome;
         },
         Outcome::kOutsideSupport},
        {"normal, no deviation given",
         [&] {
             return OneSampleKolmogorovSmirnov(four, KsDistribution::kNormal, KsParameters{0, 0})
                 .fOutcome;
         },
         Outcome::kBadParameter},
        {"uniform, minimum above maximum",
         [&] {
             return OneSampleKolmogorovSmirnov(four, KsDistribution::kUniform, KsParameters{3, 1})
                 .fOutcome;
         },
         Outcome::kBadParameter},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.fOutcome(), c.fExpected) << c.fWhat;
    }
    // Below five cases the normal statistic is there, its Lilliefors significance is not.
    const OneSampleKsResult small = OneSampleKolmogorovSmirnov(four, KsDistribution::kNormal);
    EXPECT_GT(small.fAbsolute, 0);
    EXPECT_TRUE(std::isnan(small.fLillieforsSig));
}

TEST(OneSampleChiSquare, CasesOutsideTheCategoriesAreCounted) {
    const std::vector<double> values{1, 2, 2, 3, 5, 5, 7};
    const std::vector<double> categories{3, 2, 9};
    const OneSampleChiSquareResult part = ChiSquareGoodnessOfFit(values, categories);
    EXPECT_EQ(part.fCategories, categories);
    EXPECT_EQ(part.fObserved, (std::vector<double>{1, 2, 0}));
    EXPECT_EQ(part.fOutsideCount, 4u);
    EXPECT_EQ(part.fValuesOutside, (std::vector<double>{1, 5, 7}));
    EXPECT_EQ(part.fExpectedBelowFive, 3u);
    EXPECT_DOUBLE_EQ(part.fMinimumExpected, 1.0);
}

TEST(OneSampleKolmogorov, LimitDistributionAtItsEnds) {
    EXPECT_EQ(KolmogorovLimitSf(0), 1.0);
    EXPECT_EQ(KolmogorovLimitSf(-1), 1.0);
    EXPECT_EQ(KolmogorovLimitSf(40), 0.0);
}
