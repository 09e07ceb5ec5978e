// The histogram of the one-sample Wilcoxon signed-rank test, with lines at
// the hypothesized and the observed median and a legend for them.
#pragma once

#include "backend/nonpar/NOPRHistogramChart.h"

class OneSampleWilcoxonSignedRanks final : public NOPRHistogramChart {
public:
    OneSampleWilcoxonSignedRanks(FacSTDictionary* dictionary, NOPROutputStats* stats,
                                 const NOPROutputStats::HTOWilcoxonSignedRanks* test);
    void CustomizeTemplate(std::string& text) override;
    void CustomizeDocument(XDocument& document) override;

private:
    const NOPROutputStats::HTOWilcoxonSignedRanks* fWilcoxon;
};
