// Chooses and makes the chart of an independent-samples test.
#pragma once

#include <string>

#include "backend/nonpar/NOPROutputStats.h"

class FacSTDictionary;

class IndependentSamples {
public:
    IndependentSamples(FacSTDictionary* dictionary, NOPROutputStats* stats)
        : fDictionary(dictionary), fStats(stats) {}
    virtual ~IndependentSamples() = default;
    // Makes the chart of `test` when it is an independent-samples test that has one.
    virtual void MakeView(NOPROutputStats::BaseHypothesisTest* test, const std::string& suffix,
                          bool appendSuffix);

protected:
    FacSTDictionary* fDictionary;
    NOPROutputStats* fStats;
};
