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

    // Fills "graphSource" from a two-way table whose rows and columns stand
    // for the given categories; with `hypothesized`, each cell also gets its
    // count expected under symmetry. False without cells.
    static bool FillFacetData(VarDataProcessor& data,
                              const NOPROutputStats::CategoryFieldsComparison& comparison,
                              bool hypothesized, const TableCategories& rows,
                              const TableCategories& columns);
    // Binds a facet variable to a field and names each category by its text.
    static void BindFacet(const XVariable& facet, const VEXA_Variable* field,
                          const TableCategories& categories);

private:
    const NOPROutputStats::HTRMcNemar* fTest;
};
