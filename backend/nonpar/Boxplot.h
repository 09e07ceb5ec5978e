// The box plot of a test field by the groups of a grouping field, drawn from
// the box-plot information of an independent-samples test. The chart engine
// is given, per group, a few values whose box plot is the group's box plot,
// not the raw data.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "backend/nonpar/NOPRChartContext.h"

class Boxplot : public NOPRChartContext {
public:
    // One value handed to the chart engine; `fHasLabel` when a case number
    // goes with it (an outlying or extreme case).
    struct BoxValue {
        double fValue = 0.0;
        bool fHasLabel = false;
        double fLabel = 0.0;
    };
    // An outlying or extreme case: its value and case number.
    struct Outlier {
        double fValue = 0.0;
        double fCase = 0.0;
    };

    // The record may be null (no chart); the title key is looked up at once.
    Boxplot(FacSTDictionary* dictionary, NOPROutputStats* stats,
            const NOPROutputStats::BaseHypothesisTest* test,
            const NOPROutputStats::BoxPlotInfo* boxPlot, std::string_view titleKey);
    ~Boxplot() override;

    // Runs the common sequence with "NPARBoxplot.viztemplate"; true when sent.
    virtual bool MakeChart(const std::string& suffix, bool appendSuffix);
    // Fills "boxplotSource" ("Value", "Label", "Category", "Tooltips").
    virtual bool FillChartData(VarDataProcessor& data);
    virtual void CustomizeTemplate(std::string& text);
    virtual void CustomizeDocument(XDocument& document);

    // The values of one group, from its five numbers (lower whisker end,
    // lower quartile, median, upper quartile, upper whisker end) and its
    // outlying cases: the low list (cases below the median, s0, s1 repeated),
    // padded with middle elements to the length of the high list (cases at or
    // above the median, s4, s3 repeated), then the median, then the high list.
    // Values that are cases carry their case number (a later case of the same
    // value wins). Empty when fewer than five numbers are given.
    static std::vector<BoxValue> BoxValues(const std::vector<double>& five,
                                           const std::vector<Outlier>& outliers);

protected:
    // Whether the "Tooltips" of a group hold its mean rank.
    virtual bool ShowsMeanRank() const { return false; }

    const NOPROutputStats::BaseHypothesisTest* fTest;
    const NOPROutputStats::BoxPlotInfo* fBoxPlot;
    int fTestField = -1;
    int fGroupField = -1;
};
