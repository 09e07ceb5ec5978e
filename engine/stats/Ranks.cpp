// Mid-ranks by sorting the values as 64-bit integer keys that order as the
// doubles do, each carrying its position in a parallel array: an LSD radix
// sort with 11-bit digits for large samples (a pass whose digit is the same
// for every key is skipped), std::sort of positions for small ones. One scan
// of the sorted keys then writes the ranks and the tie terms.
//
// For millions of values the sort itself is cheap next to the first touch of
// the fresh memory it needs (keys, positions, their copies and the ranks), so
// large buffers ask the kernel for transparent huge pages: a fault then
// supplies 2 MiB instead of 4 KiB.
#include "engine/stats/Ranks.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <numeric>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

namespace {

// Below this many values a comparison sort is cheaper than clearing and
// scanning the radix histograms.
constexpr std::size_t kRadixMinimum = 1024;
constexpr int kDigitBits = 11;
constexpr std::size_t kBuckets = std::size_t{1} << kDigitBits;
constexpr int kPasses = (64 + kDigitBits - 1) / kDigitBits;

// An unsigned key that orders as the double does: negative values have all
// bits flipped, others the sign bit set. Adding 0.0 turns -0.0 into 0.0, so
// that the two zeros tie.
std::uint64_t OrderedKey(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);
    const std::uint64_t mask = (bits >> 63) != 0 ? ~std::uint64_t{0} : std::uint64_t{1} << 63;
    return bits ^ mask;
}

constexpr std::size_t kHugePage = std::size_t{2} << 20;

// Asks for huge pages over the whole 4 KiB pages of [data, data + bytes); a
// hint only, so failure is ignored.
void AdviseHugePages([[maybe_unused]] void* data, [[maybe_unused]] std::size_t bytes) {
#if defined(MADV_HUGEPAGE)
    const auto begin = (reinterpret_cast<std::uintptr_t>(data) + 4095) & ~std::uintptr_t{4095};
    const auto end = (reinterpret_cast<std::uintptr_t>(data) + bytes) & ~std::uintptr_t{4095};
    if (end > begin) {
        madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
    }
#endif
}

struct FreeDeleter {
    void operator()(void* data) const { std::free(data); }
};

// An uninitialized array of n trivial values, aligned to a huge page when it
// spans several.
template <typename T> std::unique_ptr<T[], FreeDeleter> ScratchArray(std::size_t n) {
    const std::size_t bytes = std::max<std::size_t>(n * sizeof(T), 1);
    void* data = nullptr;
    if (bytes >= 2 * kHugePage) {
        const std::size_t rounded = (bytes + kHugePage - 1) / kHugePage * kHugePage;
        data = std::aligned_alloc(kHugePage, rounded);
        if (data != nullptr) {
            AdviseHugePages(data, rounded);
        }
    } else {
        data = std::malloc(bytes);
    }
    if (data == nullptr) {
        throw std::bad_alloc();
    }
    return std::unique_ptr<T[], FreeDeleter>(static_cast<T*>(data));
}

// Makes room for the ranks, after the sort so that its scratch copies are
// gone before the ranks take their memory.
void AllocateRanks(Ranking& ranking, std::size_t n) {
    ranking.fRanks.reserve(n);
    AdviseHugePages(ranking.fRanks.data(), n * sizeof(double));
    ranking.fRanks.resize(n);
}

// Writes the mid-ranks of positions `index` in the order of `keys` (sorted
// ascending) and the tie terms.
template <typename Index>
void RanksFromSorted(const std::uint64_t* keys, const Index* index, Ranking& ranking) {
    const std::size_t n = ranking.fRanks.size();
    double* ranks = ranking.fRanks.data();
    for (std::size_t first = 0; first < n;) {
        const std::uint64_t key = keys[first];
        std::size_t last = first + 1;
        while (last < n && keys[last] == key) {
            ++last;
        }
        // Positions first..last-1 hold ranks first+1..last; their mean:
        const double rank = 0.5 * static_cast<double>(first + 1 + last);
        for (std::size_t k = first; k < last; ++k) {
            ranks[index[k]] = rank;
        }
        if (last - first > 1) {
            const double t = static_cast<double>(last - first);
            ranking.fTieSum += t * t * t - t;
            ++ranking.fTieGroups;
        }
        first = last;
    }
}

template <typename Index> void RankByRadix(std::span<const double> values, Ranking& ranking) {
    const std::size_t n = values.size();
    auto keys = ScratchArray<std::uint64_t>(n);
    auto index = ScratchArray<Index>(n);
    std::vector<std::array<std::size_t, kBuckets>> counts(kPasses);
    for (auto& count : counts) {
        count.fill(0);
    }
    for (std::size_t i = 0; i < n; ++i) {
        const std::uint64_t key = OrderedKey(values[i]);
        keys[i] = key;
        index[i] = static_cast<Index>(i);
        for (int pass = 0; pass < kPasses; ++pass) {
            ++counts[static_cast<std::size_t>(pass)][(key >> (pass * kDigitBits)) & (kBuckets - 1)];
        }
    }
    auto keysTo = ScratchArray<std::uint64_t>(n);
    auto indexTo = ScratchArray<Index>(n);
    for (int pass = 0; pass < kPasses; ++pass) {
        auto& count = counts[static_cast<std::size_t>(pass)];
        const int shift = pass * kDigitBits;
        // Every key has the same digit here: the pass would not move anything.
        if (count[(keys[0] >> shift) & (kBuckets - 1)] == n) {
            continue;
        }
        std::size_t start = 0;
        for (std::size_t& c : count) {
            const std::size_t size = c;
            c = start;
            start += size;
        }
        for (std::size_t i = 0; i < n; ++i) {
            const std::uint64_t key = keys[i];
            const std::size_t to = count[(key >> shift) & (kBuckets - 1)]++;
            keysTo[to] = key;
            indexTo[to] = index[i];
        }
        keys.swap(keysTo);
        index.swap(indexTo);
    }
    keysTo.reset();
    indexTo.reset();
    AllocateRanks(ranking, n);
    RanksFromSorted(keys.get(), index.get(), ranking);
}

void RankBySort(std::span<const double> values, Ranking& ranking) {
    const std::size_t n = values.size();
    std::vector<std::uint64_t> keyOf(n);
    std::vector<std::size_t> index(n);
    for (std::size_t i = 0; i < n; ++i) {
        keyOf[i] = OrderedKey(values[i]);
    }
    std::iota(index.begin(), index.end(), std::size_t{0});
    std::sort(index.begin(), index.end(),
              [&keyOf](std::size_t a, std::size_t b) { return keyOf[a] < keyOf[b]; });
    std::vector<std::uint64_t> keys(n);
    for (std::size_t k = 0; k < n; ++k) {
        keys[k] = keyOf[index[k]];
    }
    AllocateRanks(ranking, n);
    RanksFromSorted(keys.data(), index.data(), ranking);
}

} // namespace

Ranking RankValues(std::span<const double> values) {
    Ranking ranking;
    if (values.size() < kRadixMinimum) {
        RankBySort(values, ranking);
    } else if (values.size() <= std::numeric_limits<std::uint32_t>::max()) {
        RankByRadix<std::uint32_t>(values, ranking);
    } else {
        RankByRadix<std::size_t>(values, ranking);
    }
    return ranking;
}
