// Chart dispatch for related-samples tests.
#include "backend/nonpar/RelatedSamples.h"

void RelatedSamples::MakeView(NOPROutputStats::BaseHypothesisTest*, const std::string&, bool) {}
