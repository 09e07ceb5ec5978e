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
            RSPairChart(fDictionary, fStats, record, test->fAlgorithm)
                .MakeChart(suffix, appendSuffix);
        }
        break;
    case Stats::kARWilcoxonSignedRanks:
        if (auto* record = dynamic_cast<Stats::HTRWilcoxonSignedRanks*>(test)) {
            RSPairChart(fDictionary, fStats, record, test->fAlgorithm)
                .MakeChart(suffix, appendSuffix);
        }
        break;
    case Stats::kARCochransQ:
        if (auto* record = dynamic_cast<Stats::HTRCochransQ*>(test)) {
            RSCochransQ(fDictionary, fStats, record).MakeStackedChart(suffix, appendSuffix);
        }
        break;
    case Stats::kARMcNemar:
        if (auto* record = dynamic_cast<Stats::HTRMcNemar*>(test)) {
            RSMcNemarChangeTestView(fDictionary, fStats, record).MakeChart(suffix, appendSuffix);
        }
        break;
    case Stats::kARFriedmansTwoWayByRanks:
        if (auto* record = dynamic_cast<Stats::HTRFriedmansTwoWayByRanks*>(test)) {
            RSHistogram(fDictionary, fStats, record).MakeChart(suffix, appendSuffix);
        }
        break;
    case Stats::kARKendallsCoefficient:
        if (auto* record = dynamic_cast<Stats::HTRKendallsCoefficient*>(test)) {
            RSHistogram(fDictionary, fStats, record).MakeChart(suffix, appendSuffix);
        }
        break;
    case Stats::kARMarginalHomogeneity:
        if (auto* record = dynamic_cast<Stats::HTRMarginalHomogeneity*>(test)) {
            MarginalHomogeneity(fDictionary, fStats, record).MakeChart(suffix, appendSuffix);
        }
        break;
    default:
        break;
    }
}
