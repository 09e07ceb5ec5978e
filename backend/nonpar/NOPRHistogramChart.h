// A histogram of one field's binned data ("NPARHistogram.viztemplate"): the
// base of the one-sample Kolmogorov-Smirnov and Wilcoxon charts and of the
// field information charts.
#pragma once

#include <string>
#include <string_view>

#include "backend/nonpar/NOPRChartContext.h"

class NOPRHistogramChart : public NOPRChartContext {
public:
    // `test` may be null for charts that draw a field alone (`needsTest` false).
    NOPRHistogramChart(FacSTDictionary* dictionary, NOPROutputStats* stats,
                       const NOPROutputStats::BaseHypothesisTest* test, bool needsTest);
    ~NOPRHistogramChart() override;

    void SetFieldIndex(int index) { fFieldIndex = index; }
    // Runs the common sequence; true when sent.
    virtual bool MakeChart(const std::string& suffix, bool appendSuffix);
    // The field record whose binned data are drawn: the record of the field
    // index when it is continuous (kind 0), or categorical (kind 1) with bin
    // data present; else none.
    virtual const NOPROutputStats::FieldInfoRecord* GetHistogramRecord();
    // Fills "graphSource" ("value", "count"): one row per row of the record's
    // distribution table holding at least two numbers (value, count).
    virtual bool FillChartData(VarDataProcessor& data);
    virtual void CustomizeTemplate(std::string& text);
    virtual void CustomizeDocument(XDocument& document);

protected:
    const NOPROutputStats::BaseHypothesisTest* fTest;
    bool fNeedsTest;
    int fFieldIndex = -1;
    const NOPROutputStats::FieldInfoRecord* fRecord = nullptr;
};
