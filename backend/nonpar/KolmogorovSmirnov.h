// The histogram of the one-sample Kolmogorov-Smirnov test, with the fitted
// distribution drawn over it and its parameters beside it.
#pragma once

#include "backend/nonpar/NOPRHistogramChart.h"

class KolmogorovSmirnov final : public NOPRHistogramChart {
public:
    KolmogorovSmirnov(FacSTDictionary* dictionary, NOPROutputStats* stats,
                      const NOPROutputStats::BaseHypothesisTest* test);
    void CustomizeTemplate(std::string& text) override;
    void CustomizeDocument(XDocument& document) override;

private:
    enum Distribution { kNone, kNormal, kUniform, kPoisson, kExponential };
    Distribution fDistribution = kNone;
    // The i-th condition parameter's first value; false when absent.
    bool Parameter(size_t i, double& value) const;
};
