// Chart dispatch for related-samples tests.
#include "backend/nonpar/RelatedSamples.h"

#include "backend/nonpar/MarginalHomogeneity.h"
#include "backend/nonpar/RSCochransQ.h"
#include "backend/nonpar/RSHistogram.h"
#include "backend/nonpar/RSMcNemarChangeTestView.h"
#include "backend/nonpar/RSPairChart.h"

using Stats = NOPROutputStats;

void RelatedSamples::MakeView(Stats::BaseHypothesisTest* test, const std::string& suffix,
                              bool appendSuffix) {
    if (!test || NOPRChartContext::HasErrorMessage(test)) {
        return;
    }
    switch (test->fAlgorithm) {
    case Stats::kARSign:
        if (auto* record = dynamic_cast<Stats::HTRSign*>(test)) {
            Draw(RSPairChart(fDictionary, fStats, record, test->fAlgorithm),
                 &RSPairChart::MakeChart, suffix, appendSuffix);
        }
        break;
    case Stats::kARWilcoxonSignedRanks:
        if (auto* record = dynamic_cast<Stats::HTRWilcoxonSignedRanks*>(test)) {
            Draw(RSPairChart(fDictionary, fStats, record, test->fAlgorithm),
                 &RSPairChart::MakeChart, suffix, appendSuffix);
        }
        break;
    case Stats::kARCochransQ:
        if (auto* record = dynamic_cast<Stats::HTRCochransQ*>(test)) {
            Draw(RSCochransQ(fDictionary, fStats, record), &RSCochransQ::MakeStackedChart, suffix,
                 appendSuffix);
        }
        break;
    case Stats::kARMcNemar:
        if (auto* record = dynamic_cast<Stats::HTRMcNemar*>(test)) {
            Draw(RSMcNemarChangeTestView(fDictionary, fStats, record),
                 &RSMcNemarChangeTestView::MakeChart, suffix, appendSuffix);
        }
        break;
    case Stats::kARFriedmansTwoWayByRanks:
        if (auto* record = dynamic_cast<Stats::HTRFriedmansTwoWayByRanks*>(test)) {
            Draw(RSHistogram(fDictionary, fStats, record), &RSHistogram::MakeChart, suffix,
                 appendSuffix);
        }
        break;
    case Stats::kARKendallsCoefficient:
        if (auto* record = dynamic_cast<Stats::HTRKendallsCoefficient*>(test)) {
            Draw(RSHistogram(fDictionary, fStats, record), &RSHistogram::MakeChart, suffix,
                 appendSuffix);
        }
        break;
    case Stats::kARMarginalHomogeneity:
        if (auto* record = dynamic_cast<Stats::HTRMarginalHomogeneity*>(test)) {
            Draw(MarginalHomogeneity(fDictionary, fStats, record), &MarginalHomogeneity::MakeChart,
                 suffix, appendSuffix);
        }
        break;
    default:
        break;
    }
}
