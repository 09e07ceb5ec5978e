// The layout of every table of a result document that a chart draws: which
// row or column holds categories, category positions, values or counts.
// The document writer writes its tables this way and the charts read them
// this way; nothing else may decide it.
//
// Categories, positions and values. A categorical field lists its categories
// in the data dictionary ("Value" children, in value order). A category's
// POSITION is its 0-based place in that list; its VALUE is what the data hold
// ("value"), shown by its value label ("displayValue"). Tables index the
// categories of a field by position, never by value; a chart turns a
// position into the category's value and label through the dictionary. A
// listed value that is no category of the field is written as a position
// past the list (its text stands in "ValsNotInTheCategoreis").
//
// The tables, each a simple table (row names, column names, rows of numbers):
//
//   frequency table of the one-sample chi-square test ("Content" inside
//   "TwoClassComparison"): row 0 "Observed" holds the observed counts, row 1
//   "Hypothesized" the expected counts; one column per category, named by
//   its position. Read down a column for one category.
//
//   two-class table of the binomial test (same element): rows as above, in
//   percent of the test's cases; column 0 "Success" (the first class), column
//   1 "Failure".
//
//   two-class table of Cochran's Q (same element): one row per field, named
//   by its dictionary index; columns "Success", "Failure" in percent.
//
//   histogram ("Histogram": field information of a continuous field, the
//   one-sample Wilcoxon test, each group of the two-sample tests, the
//   differences of the sign and related Wilcoxon tests): one row per bin,
//   lowest first, column 0 "Value" the bin's midpoint in the field's unit
//   (dates in days), column 1 "Count". Bins have one width, so neighbouring
//   midpoints lie one width apart (a bin may be empty); a chart draws each
//   bin as it is, midpoint ± half the width, and never bins them again.
//   Differences are binned with zero as a bin edge and without the zero
//   differences (their number is the "Ties" attribute), so that no bin mixes
//   positive and negative differences.
//
//   category counts ("Categories": field information of a categorical
//   field): one row per category in position order, column 0 "Category" the
//   category's position, column 1 "Count".
//
//   rank counts ("RankCounts" of Friedman's and Kendall's tests): one row per
//   rank that occurs, column 0 "Rank", column 1 "Count".
//
//   crosstab ("Crosstab" inside "CategoryFieldsComparison"): one row per
//   category of the first field, one column per category of the second, row
//   and column names the categories' positions; cells are counts.
//
//   sample values ("PairwiseInfo", "StepwiseInfo"): row 0 "SampleIndex" the
//   samples (related samples: field indices; independent samples: category
//   positions of the grouping field), row 1 each sample's value ("MeanRank",
//   "Successes" or "Median"); one column per sample.
//
//   pairwise rows ("Content" of "PairwiseResult"): one row per pair, columns
//   "Sample1", "Sample2", "TestStatistic", "StdError", "StdTestStatistic",
//   "Sig", "AdjSig".
//
// Group indices of box plots and two-sample histograms are category
// positions of the grouping field.
#pragma once

#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace CFTableLayout {

// Frequency and two-class tables: the rows.
inline constexpr std::size_t kObservedRow = 0;
inline constexpr std::size_t kHypothesizedRow = 1;
inline constexpr std::string_view kObservedRowName = "Observed";
inline constexpr std::string_view kHypothesizedRowName = "Hypothesized";
// Two-class tables: the columns.
inline constexpr std::size_t kSuccessColumn = 0;
inline constexpr std::size_t kFailureColumn = 1;
inline constexpr std::string_view kSuccessColumnName = "Success";
inline constexpr std::string_view kFailureColumnName = "Failure";

// Histograms.
inline constexpr std::size_t kBinValueColumn = 0;
inline constexpr std::size_t kBinCountColumn = 1;
inline constexpr std::string_view kBinValueColumnName = "Value";
inline constexpr std::string_view kBinCountColumnName = "Count";

// Category counts.
inline constexpr std::size_t kCategoryColumn = 0;
inline constexpr std::size_t kCategoryCountColumn = 1;
inline constexpr std::string_view kCategoryColumnName = "Category";
inline constexpr std::string_view kCategoryCountColumnName = "Count";

// Rank counts.
inline constexpr std::size_t kRankColumn = 0;
inline constexpr std::size_t kRankCountColumn = 1;

// Sample values.
inline constexpr std::size_t kSampleIndexRow = 0;
inline constexpr std::size_t kSampleValueRow = 1;

// Pairwise rows.
inline constexpr std::string_view kFirstSampleColumnName = "Sample1";
inline constexpr std::string_view kSecondSampleColumnName = "Sample2";
inline constexpr std::string_view kAdjustedSigColumnName = "AdjSig";

// The category position a row or column name stands for; -1 when the name
// is not a whole number of 0 or more.
inline int PositionOfName(std::string_view name) {
    int position = -1;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), position);
    return error == std::errc() && end == name.data() + name.size() && position >= 0 ? position
                                                                                     : -1;
}

// The index of the name in a list of row or column names; `fallback` when
// the list does not hold it (a table written without names).
inline std::size_t IndexOfName(const std::vector<std::string>& names, std::string_view name,
                               std::size_t fallback) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i] == name) {
            return i;
        }
    }
    return fallback;
}

} // namespace CFTableLayout
