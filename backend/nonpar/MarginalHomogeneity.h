// The faceted bar chart of the marginal homogeneity test: the observed count
// of each cell of the two-way table of the two fields.
#pragma once

#include <string>

#include "backend/nonpar/NOPRChartContext.h"

class MarginalHomogeneity : public NOPRChartContext {
public:
    MarginalHomogeneity(FacSTDictionary* dictionary, NOPROutputStats* stats,
                        const NOPROutputStats::HTRMarginalHomogeneity* test);
    ~MarginalHomogeneity() override;
    // True when a chart was sent.
    virtual bool MakeChart(const std::string& suffix, bool appendSuffix);

private:
    const NOPROutputStats::HTRMarginalHomogeneity* fTest;
};
