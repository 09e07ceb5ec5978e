// Chooses and makes the chart of a one-sample test.
#pragma once

#include <string>

#include "backend/nonpar/NOPROutputStats.h"

class FacSTDictionary;

class OneSample {
public:
    OneSample(FacSTDictionary* dictionary, NOPROutputStats* stats)
        : fDictionary(dictionary), fStats(stats) {}
    virtual ~OneSample() = default;
    // Makes the chart of `test` when it is a one-sample test that has one.
    virtual void MakeView(NOPROutputStats::BaseHypothesisTest* test, int fieldIndex,
                          const std::string& suffix, bool appendSuffix);

protected:
    FacSTDictionary* fDictionary;
    NOPROutputStats* fStats;
};
