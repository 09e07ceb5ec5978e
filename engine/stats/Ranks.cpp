// Mid-ranks by one sort of (value, position) pairs.
#include "engine/stats/Ranks.h"

#include <algorithm>
#include <utility>

Ranking RankValues(std::span<const double> values) {
    const std::size_t n = values.size();
    std::vector<std::pair<double, std::size_t>> sorted(n);
    for (std::size_t i = 0; i < n; ++i) {
        sorted[i] = {values[i], i};
    }
    std::sort(sorted.begin(), sorted.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
    Ranking ranking;
    ranking.fRanks.resize(n);
    for (std::size_t first = 0; first < n;) {
        std::size_t last = first + 1;
        while (last < n && sorted[last].first == sorted[first].first) {
            ++last;
        }
        // Positions first..last-1 hold ranks first+1..last; their mean:
        const double rank = 0.5 * static_cast<double>(first + 1 + last);
        for (std::size_t k = first; k < last; ++k) {
            ranking.fRanks[sorted[k].second] = rank;
        }
        const double t = static_cast<double>(last - first);
        if (t > 1) {
            ranking.fTieSum += t * t * t - t;
            ++ranking.fTieGroups;
        }
        first = last;
    }
    return ranking;
}
