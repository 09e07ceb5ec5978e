// Chooses and makes the chart of a related-samples test.
#pragma once

#include <string>

#include "backend/nonpar/NOPROutputStats.h"

class FacSTDictionary;

class RelatedSamples {
public:
    RelatedSamples(FacSTDictionary* dictionary, NOPROutputStats* stats)
        : fDictionary(dictionary), fStats(stats) {}
    virtual ~RelatedSamples() = default;
    // Makes the chart of `test` when it is a related-samples test that has one.
    virtual void MakeView(NOPROutputStats::BaseHypothesisTest* test, const std::string& suffix,
                          bool appendSuffix);

protected:
    FacSTDictionary* fDictionary;
    NOPROutputStats* fStats;
};
