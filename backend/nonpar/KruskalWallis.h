// The box plot of the Kruskal-Wallis test, with each group's mean rank in a
// popup on its median.
#pragma once

#include "backend/nonpar/Boxplot.h"

class KruskalWallis final : public Boxplot {
public:
    KruskalWallis(FacSTDictionary* dictionary, NOPROutputStats* stats,
                  const NOPROutputStats::HTIKruskalWallis* test);
    void CustomizeTemplate(std::string& text) override;

protected:
    bool ShowsMeanRank() const override { return true; }
};
