// The engine's statistics against R, a table of cases at a time. A case names
// a test, the R expressions of its data columns and its parameters. One run
// of R (the family's reference script in tests/engine/reference, after
// common.R) prints each
// case's data and the test's reference numbers by name; the family's own
// function for the test computes the same names from the same data, and the
// driver compares them (KindOf): significances within 1e-6, counts exactly,
// every other number within 1e-9 (relative above 1). A number R gives that the engine does not, or the other way
// round, fails the case; a missing Rscript fails the suite.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/RReference.h"

struct RCase {
    const char* fTest;               // the name of the test in both languages
    std::vector<std::string> fData;  // one R expression per data column
    std::vector<double> fParameters; // the test's parameters, the same in both languages
};

using Columns = std::vector<std::vector<double>>;
using Named = std::map<std::string, double>;
using OurTest = std::function<Named(const Columns& columns, const std::vector<double>& parameters)>;

inline std::string RCaseName(const RCase& c) {
    std::ostringstream name;
    name << c.fTest;
    for (const std::string& data : c.fData) {
        name << ' ' << data.substr(0, 40);
    }
    for (double p : c.fParameters) {
        name << ' ' << p;
    }
    return name.str();
}

// The largest differences from R of one family, printed when the tests end.
struct LargestDifference {
    double fStatistic = 0;
    double fSignificance = 0;
};

inline std::map<std::string, LargestDifference>& LargestDifferences() {
    static std::map<std::string, LargestDifference> largest;
    return largest;
}

class LargestDifferencesReport final : public testing::Environment {
public:
    void TearDown() override {
        for (const auto& [family, d] : LargestDifferences()) {
            std::printf("[ largest  ] %s against R: statistics %.3g, significances %.3g\n",
                        family.c_str(), d.fStatistic, d.fSignificance);
        }
    }
};

inline const bool kLargestDifferencesReported =
    (testing::AddGlobalTestEnvironment(new LargestDifferencesReport), true);

// How a name compares: a significance when one of its dot-separated parts
// starts with "sig" or "adjsig", a count when its first part is "n" or its
// last "first" or "second" (the samples of a comparison row), else a
// statistic.
enum class NameKind { kStatistic, kSignificance, kCount };
inline NameKind KindOf(const std::string& name) {
    std::vector<std::string> parts;
    std::istringstream in(name);
    for (std::string part; std::getline(in, part, '.');) {
        parts.push_back(part);
    }
    for (const std::string& part : parts) {
        if (part.rfind("sig", 0) == 0 || part.rfind("adjsig", 0) == 0) {
            return NameKind::kSignificance;
        }
    }
    if (!parts.empty() && (parts.front() == "n" || parts.back() == "first" ||
                           parts.back() == "second")) {
        return NameKind::kCount;
    }
    return NameKind::kStatistic;
}

// One number against R's.
inline void ExpectNamed(const std::string& family, const std::string& name, double ours,
                        double r) {
    SCOPED_TRACE(name);
    if (std::isnan(r) || std::isnan(ours)) {
        EXPECT_EQ(std::isnan(ours), std::isnan(r)) << "ours " << ours << ", R " << r;
        return;
    }
    const NameKind kind = KindOf(name);
    if (kind == NameKind::kCount) {
        EXPECT_EQ(ours, r);
        return;
    }
    const bool significance = kind == NameKind::kSignificance;
    const double difference =
        std::fabs(ours - r) / (significance ? 1.0 : std::max(1.0, std::fabs(r)));
    LargestDifference& largest = LargestDifferences()[family];
    double& worst = significance ? largest.fSignificance : largest.fStatistic;
    worst = std::max(worst, difference);
    EXPECT_LE(difference, significance ? 1e-6 : 1e-9) << "ours " << ours << ", R " << r;
}

// Runs every case of a family through R (reference/`family`.R) and through
// `ours`, the family's functions by test name.
inline void CompareWithR(const std::string& family, const std::vector<RCase>& cases,
                         const std::map<std::string, OurTest>& ours) {
    ASSERT_TRUE(HaveR()) << "Rscript is needed: scripts/setup installs it";
    std::ostringstream script;
    script.precision(17);
    const std::string folder = std::string(NPTESTS_SOURCE_DIR) + "/tests/engine/reference/";
    script << "source('" << folder << "common.R')\nsource('" << folder << family << ".R')\n";
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const RCase& c = cases[i];
        script << "cols <- list(";
        for (std::size_t k = 0; k < c.fData.size(); ++k) {
            script << (k ? ", " : "") << "as.numeric(" << c.fData[k] << ")";
        }
        script << ")\np <- c(";
        for (std::size_t k = 0; k < c.fParameters.size(); ++k) {
            script << (k ? ", " : "") << c.fParameters[k];
        }
        script << ")\ncat('case', " << i << ", length(cols), '\\n')\n"
               << "for (x in cols) cat('column', length(x), x, '\\n')\n"
               << "r <- " << c.fTest << "(cols, p)\n"
               << "for (k in names(r)) cat('value', k, r[[k]], '\\n')\n";
    }
    const std::string text = RunRText(script.str());
    std::istringstream in(text);
    std::vector<Columns> columns(cases.size());
    std::vector<Named> reference(cases.size());
    std::size_t at = cases.size();
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string kind;
        words >> kind;
        if (kind == "case") {
            words >> at;
        } else if (kind == "column" && at < cases.size()) {
            std::size_t n = 0;
            words >> n;
            std::vector<double>& column = columns[at].emplace_back();
            for (std::string word; column.size() < n && words >> word;) {
                column.push_back(ParseRNumber(word));
            }
        } else if (kind == "value" && at < cases.size()) {
            std::string name, word;
            words >> name >> word;
            reference[at][name] = ParseRNumber(word);
        }
    }
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const RCase& c = cases[i];
        SCOPED_TRACE(RCaseName(c));
        const auto test = ours.find(c.fTest);
        ASSERT_NE(test, ours.end()) << "no function for " << c.fTest;
        ASSERT_EQ(columns[i].size(), c.fData.size()) << "R did not run the case:\n" << text;
        const Named mine = test->second(columns[i], c.fParameters);
        for (const auto& [name, r] : reference[i]) {
            const auto found = mine.find(name);
            if (found == mine.end()) {
                ADD_FAILURE() << "the engine gives no " << name;
                continue;
            }
            ExpectNamed(family, name, found->second, r);
        }
        for (const auto& [name, value] : mine) {
            EXPECT_TRUE(reference[i].count(name)) << "R gives no " << name;
        }
    }
}
