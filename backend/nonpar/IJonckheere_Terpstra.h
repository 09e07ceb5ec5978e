// The box plot of the Jonckheere-Terpstra test for ordered alternatives.
#pragma once

#include "backend/nonpar/Boxplot.h"

class IJonckheere_Terpstra final : public Boxplot {
public:
    IJonckheere_Terpstra(FacSTDictionary* dictionary, NOPROutputStats* stats,
                         const NOPROutputStats::HTIJonckheereTerpstra* test);
};
