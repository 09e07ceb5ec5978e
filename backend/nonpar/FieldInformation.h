// The chart of one analysed field: a bar chart of its categories or a
// histogram of its values.
#pragma once

#include <string>

#include "backend/nonpar/NOPROutputStats.h"

class FacSTDictionary;

class FieldInformation {
public:
    FieldInformation(FacSTDictionary* dictionary, NOPROutputStats* stats, bool isCategorical)
        : fDictionary(dictionary), fStats(stats), fIsCategorical(isCategorical) {}
    virtual ~FieldInformation() = default;
    void SetFieldIndex(int index) { fFieldIndex = index; }
    // Sends the chart when the field is of this chart's kind; true when sent.
    virtual bool MakeChart(const std::string& suffix, bool appendSuffix);

protected:
    FacSTDictionary* fDictionary;
    NOPROutputStats* fStats;
    bool fIsCategorical;
    int fFieldIndex = -1;
};
