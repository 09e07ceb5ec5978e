// The faceted bar chart of the McNemar change test: for each cell of the
// two-way table of the two fields, the observed and the hypothesized count.
#pragma once

#include <string>

#include "backend/nonpar/NOPRChartContext.h"

class VarDataProcessor;
class XVariable;

class RSMcNemarChangeTestView : public NOPRChartContext {
public:
    RSMcNemarChangeTestView(FacSTDictionary* dictionary, NOPROutputStats* stats,
                            const NOPROutputStats::HTRMcNemar* test);
    ~RSMcNemarChangeTestView() override;
    // True when a chart was sent.
    virtual bool MakeChart(const std::string& suffix, bool appendSuffix);

    // Fills "graphSource" from a two-way table; with `hypothesized`, each
    // cell also gets its count expected under symmetry. False without cells.
    static bool FillFacetData(VarDataProcessor& data,
                              const NOPROutputStats::CategoryFieldsComparison& comparison,
                              bool hypothesized);
    // The row value of a category name: the name read as a number, else its
    // position.
    static double CategoryCode(const std::vector<std::string>& names, size_t position);
    // Binds a facet variable to a field and gives each category of the table
    // (by its name) the text the field shows for it.
    static void BindFacet(const XVariable& facet, const VEXA_Variable* field,
                          const std::vector<std::string>& names);

private:
    const NOPROutputStats::HTRMcNemar* fTest;
};
