// The box plot of the Moses test of extreme reaction, with a legend that
// tells the control group from the experimental group.
#pragma once

#include "backend/nonpar/Boxplot.h"

class IMoses final : public Boxplot {
public:
    IMoses(FacSTDictionary* dictionary, NOPROutputStats* stats,
           const NOPROutputStats::HTIMoses* test);
    void CustomizeDocument(XDocument& document) override;
};
