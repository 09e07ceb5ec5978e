// Chart dispatch for one-sample tests.
#include "backend/nonpar/OneSample.h"

#include "backend/nonpar/Binomial.h"
#include "backend/nonpar/ChiSquare.h"
#include "backend/nonpar/KolmogorovSmirnov.h"
#include "backend/nonpar/OneSampleRunsChart.h"
#include "backend/nonpar/OneSampleWilcoxonSignedRanks.h"

using Stats = NOPROutputStats;

void OneSample::MakeView(Stats::BaseHypothesisTest* test, int fieldIndex, const std::string& suffix,
                         bool appendSuffix) {
    if (!test || NOPRChartContext::HasErrorMessage(test)) {
        return;
    }
    switch (test->fAlgorithm) {
    case Stats::kAOChiSquare:
        if (auto* record = dynamic_cast<Stats::HTOChiSquare*>(test)) {
            ChiSquare(fDictionary, fStats, record).MakeChart(suffix, appendSuffix);
        }
        break;
    case Stats::kAOBinomial:
        if (auto* record = dynamic_cast<Stats::HTOBinomial*>(test)) {
            Binomial(fDictionary, fStats, record).MakeStackedChart(suffix, appendSuffix);
        }
        break;
    case Stats::kAORuns:
        if (auto* record = dynamic_cast<Stats::HTORuns*>(test)) {
            OneSampleRunsChart(fDictionary, fStats, record).MakeChart(suffix, appendSuffix);
        }
        break;
    case Stats::kAOWilcoxonSignedRanks:
        if (auto* record = dynamic_cast<Stats::HTOWilcoxonSignedRanks*>(test)) {
            OneSampleWilcoxonSignedRanks chart(fDictionary, fStats, record);
            chart.SetFieldIndex(fieldIndex);
            chart.MakeChart(suffix, appendSuffix);
        }
        break;
    case Stats::kAOKolmogorovSmirnov: {
        KolmogorovSmirnov chart(fDictionary, fStats, test);
        chart.SetFieldIndex(fieldIndex);
        chart.MakeChart(suffix, appendSuffix);
        break;
    }
    default:
        break;
    }
}
