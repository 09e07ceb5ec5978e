// The records of the one-sample tests.
#include "engine/doc/Builders.h"

void WriteOneSampleTests(const SplitData& /*data*/, const OneSamplePlan& /*plan*/,
                         const Criteria& /*criteria*/, Document& /*doc*/) {}
