// The box plot of the median test, with a line at the grand median and a
// note giving its value.
#pragma once

#include "backend/nonpar/Boxplot.h"

class IMedian final : public Boxplot {
public:
    IMedian(FacSTDictionary* dictionary, NOPROutputStats* stats,
            const NOPROutputStats::HTIMedian* test);
    void CustomizeTemplate(std::string& text) override;
};
