// Descriptive numbers and histograms of a field against R; the seeded random
// numbers.
#include "engine/stats/OneSample.h"

#include <numeric>

#include "engine/test_one_sample_support.h"

TEST(OneSampleDescriptives, MatchROnRDatasets) {
    REQUIRE_R();
    const std::vector<std::string> expressions{"precip", "islands", "faithful$eruptions", "rivers",
                                               "c(3.5)", "c(2, 1)", "mtcars$mpg"};
    std::string script;
    for (const std::string& e : expressions) {
        script += "x <- " + e +
                  "\nq <- quantile(x, c(0.25, 0.75), type = 6, names = FALSE)\n"
                  "cat(length(x), mean(x), if (length(x) > 1) sd(x) else NA, min(x), max(x), "
                  "median(x), max(q[1], min(x)), min(q[2], max(x)), '\\n')\n";
    }
    const std::vector<std::vector<double>> data = RDataSets(expressions);
    const std::vector<double> r = RunR(script);
    ASSERT_EQ(r.size(), 8 * expressions.size());
    for (std::size_t i = 0; i < expressions.size(); ++i) {
        SCOPED_TRACE(expressions[i]);
        const double* row = &r[8 * i];
        const Descriptives d = Describe(data[i]);
        EXPECT_EQ(d.fN, row[0]);
        EXPECT_STAT(d.fMean, row[1]);
        if (std::isnan(row[2])) {
            EXPECT_TRUE(std::isnan(d.fStdDev));
        } else {
            EXPECT_STAT(d.fStdDev, row[2]);
        }
        EXPECT_EQ(d.fMin, row[3]);
        EXPECT_EQ(d.fMax, row[4]);
        EXPECT_STAT(d.fMedian, row[5]);
        EXPECT_STAT(Median(data[i]), row[5]);
        EXPECT_STAT(d.fLowerQuartile, row[6]);
        EXPECT_STAT(d.fUpperQuartile, row[7]);
    }
    EXPECT_EQ(Describe({}).fN, 0u);
    EXPECT_TRUE(std::isnan(Describe({}).fMean));
    EXPECT_TRUE(std::isnan(Median({})));
}

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
