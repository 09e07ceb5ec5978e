// Chart dispatch for independent-samples tests.
#include "backend/nonpar/IndependentSamples.h"

void IndependentSamples::MakeView(NOPROutputStats::BaseHypothesisTest*, const std::string&, bool) {}
