// The chart of one analysed field: a bar chart of its categories or a
// histogram of its values.
#pragma once

#include <string>

#include "backend/nonpar/NOPRHistogramChart.h"

class FacSTDictionary;

class FieldInformation : public NOPRHistogramChart {
public:
    FieldInformation(FacSTDictionary* dictionary, NOPROutputStats* stats, bool isCategorical)
        : NOPRHistogramChart(dictionary, stats, nullptr, false), fIsCategorical(isCategorical) {}
    ~FieldInformation() override = default;
    // The field's record when it is of this chart's kind; sets the title.
    const NOPROutputStats::FieldInfoRecord* GetHistogramRecord() override;
    void CustomizeTemplate(std::string& text) override;
    void CustomizeDocument(XDocument& document) override;

protected:
    bool fIsCategorical;
};
