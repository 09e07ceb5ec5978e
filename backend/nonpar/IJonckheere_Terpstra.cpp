// Jonckheere-Terpstra box plot: the common box plot under its own title.
#include "backend/nonpar/IJonckheere_Terpstra.h"

IJonckheere_Terpstra::IJonckheere_Terpstra(FacSTDictionary* dictionary, NOPROutputStats* stats,
                                           const NOPROutputStats::HTIJonckheereTerpstra* test)
    : Boxplot(dictionary, stats, test, test ? &test->fBoxPlot : nullptr,
              "Independent-Samples Jonckheere-Terpstra Test for Ordered Alternatives") {}
