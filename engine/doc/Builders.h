// The writers of the test records, one entry point per family of tests. Each
// runs its family's tests of the plan on one split and appends their
// Algorithm elements to the split's document.
//
// Conventions every writer follows:
// - Fields are named by their index in SplitData, which is also their index
//   in the document's dictionary (condition parameters, FieldInfo, box plots).
// - A test uses the cases valid on all of its fields (SplitData already
//   holds the missing-value decisions and the listwise deletion).
// - The decision is Decide(significance, criteria.fAlpha); a test that cannot
//   be computed keeps its Algorithm with Decision::kUnableToCompute and a
//   message that says why.
// - Confidence intervals use criteria.fCILevel (percent); anything random
//   draws from a generator seeded with criteria.fSeed, so that the same seed
//   gives the same document.
// - An option that does not fit a field (a cut point for a nominal field) was
//   rejected when the plan was made; a writer may rely on the plan.
#pragma once

#include <vector>

#include "engine/data/SplitData.h"
#include "engine/doc/StatXml.h"
#include "engine/plan/AnalysisPlan.h"

// Chi-square, binomial (and the success-rate intervals), runs, Wilcoxon
// signed rank, Kolmogorov-Smirnov (and the Lilliefors companions). Returns
// the ordinal fields (by document index) that a test treated as continuous,
// as the related tests do.
std::vector<int> WriteOneSampleTests(const SplitData& data, const OneSamplePlan& plan,
                                     const Criteria& criteria, Document& doc);

// Mann-Whitney, Wald-Wolfowitz, Kolmogorov-Smirnov, Moses, Hodges-Lehmann,
// Kruskal-Wallis, median test, Jonckheere-Terpstra, with their pairwise and
// stepwise comparisons.
void WriteIndependentTests(const SplitData& data, const IndependentPlan& plan,
                           const Criteria& criteria, Document& doc);

// Sign, Wilcoxon, McNemar, marginal homogeneity, Cochran's Q, Friedman,
// Kendall's W, Hodges-Lehmann, with their pairwise and stepwise comparisons.
std::vector<int> WriteRelatedTests(const SplitData& data, const RelatedPlan& plan,
                                   const Criteria& criteria, Document& doc);
