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
            Draw(ChiSquare(fDictionary, fStats, record), &ChiSquare::MakeChart, suffix,
                 appendSuffix);
        }
        break;
    case Stats::kAOBinomial:
        if (auto* record = dynamic_cast<Stats::HTOBinomial*>(test)) {
            Draw(Binomial(fDictionary, fStats, record), &Binomial::MakeStackedChart, suffix,
                 appendSuffix);
        }
        break;
    case Stats::kAORuns:
        if (auto* record = dynamic_cast<Stats::HTORuns*>(test)) {
            Draw(OneSampleRunsChart(fDictionary, fStats, record), &OneSampleRunsChart::MakeChart,
                 suffix, appendSuffix);
        }
        break;
    case Stats::kAOWilcoxonSignedRanks:
        if (auto* record = dynamic_cast<Stats::HTOWilcoxonSignedRanks*>(test)) {
            OneSampleWilcoxonSignedRanks chart(fDictionary, fStats, record);
            chart.SetFieldIndex(fieldIndex);
            Draw(chart, &OneSampleWilcoxonSignedRanks::MakeChart, suffix, appendSuffix);
        }
        break;
    case Stats::kAOKolmogorovSmirnov: {
        KolmogorovSmirnov chart(fDictionary, fStats, test);
        chart.SetFieldIndex(fieldIndex);
        Draw(chart, &KolmogorovSmirnov::MakeChart, suffix, appendSuffix);
        break;
    }
    default:
        break;
    }
}
