// The pairwise comparisons network chart.
#include "backend/nonpar/NOPRPairwiseChart.h"

bool NOPRPairwiseChart::MakeChart(const std::string&, bool) {
    return false;
}
