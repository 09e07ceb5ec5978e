// Chart dispatch for one-sample tests.
#include "backend/nonpar/OneSample.h"

void OneSample::MakeView(NOPROutputStats::BaseHypothesisTest*, int, const std::string&, bool) {}
