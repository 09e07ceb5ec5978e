// The records of the related-samples tests.
#include "engine/doc/Builders.h"

void WriteRelatedTests(const SplitData& /*data*/, const RelatedPlan& /*plan*/,
                       const Criteria& /*criteria*/, Document& /*doc*/) {}
