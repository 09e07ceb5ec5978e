// The records of the independent-samples tests.
#include "engine/doc/Builders.h"

void WriteIndependentTests(const SplitData& /*data*/, const IndependentPlan& /*plan*/,
                           const Criteria& /*criteria*/, Document& /*doc*/) {}
