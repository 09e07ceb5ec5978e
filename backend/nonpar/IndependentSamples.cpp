// Chart dispatch for independent-samples tests.
#include "backend/nonpar/IndependentSamples.h"

#include "backend/nonpar/IJonckheere_Terpstra.h"
#include "backend/nonpar/IMedian.h"
#include "backend/nonpar/IMoses.h"
#include "backend/nonpar/ISHistogram.h"
#include "backend/nonpar/KruskalWallis.h"

using Stats = NOPROutputStats;

namespace {

// Makes the chart of class Chart when the test is of record type Record.
template <typename Chart, typename Record>
void Make(FacSTDictionary* dictionary, NOPROutputStats* stats, Stats::BaseHypothesisTest* test,
          const std::string& suffix, bool appendSuffix) {
    if (auto* record = dynamic_cast<Record*>(test)) {
        Draw(Chart(dictionary, stats, record), &Chart::MakeChart, suffix, appendSuffix);
    }
}

} // namespace

void IndependentSamples::MakeView(Stats::BaseHypothesisTest* test, const std::string& suffix,
                                  bool appendSuffix) {
    if (!test || NOPRChartContext::HasErrorMessage(test)) {
        return;
    }
    switch (test->fAlgorithm) {
    case Stats::kAIMoses:
        Make<IMoses, Stats::HTIMoses>(fDictionary, fStats, test, suffix, appendSuffix);
        break;
    case Stats::kAIMannWhitneyU:
        Make<ISHistogram, Stats::HTIMannWhitneyU>(fDictionary, fStats, test, suffix, appendSuffix);
        break;
    case Stats::kAIWaldWolfowitzRuns:
        Make<ISHistogram, Stats::HTIWaldWolfowitzRuns>(fDictionary, fStats, test, suffix,
                                                       appendSuffix);
        break;
    case Stats::kAIKolmogorovSmirnov:
        Make<ISHistogram, Stats::HTIKolmogorovSmirnov>(fDictionary, fStats, test, suffix,
                                                       appendSuffix);
        break;
    case Stats::kAIKruskalWallis:
        Make<KruskalWallis, Stats::HTIKruskalWallis>(fDictionary, fStats, test, suffix,
                                                     appendSuffix);
        break;
    case Stats::kAIJonckheereTerpstra:
        Make<IJonckheere_Terpstra, Stats::HTIJonckheereTerpstra>(fDictionary, fStats, test, suffix,
                                                                 appendSuffix);
        break;
    case Stats::kAIMedian:
        Make<IMedian, Stats::HTIMedian>(fDictionary, fStats, test, suffix, appendSuffix);
        break;
    default:
        break;
    }
}
