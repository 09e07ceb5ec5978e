// Kruskal-Wallis box plot: "Tooltips" holds the group's mean rank.
#include "backend/nonpar/KruskalWallis.h"

KruskalWallis::KruskalWallis(FacSTDictionary* dictionary, NOPROutputStats* stats,
                             const NOPROutputStats::HTIKruskalWallis* test)
    : Boxplot(dictionary, stats, test, test ? &test->fBoxPlot : nullptr,
              "Independent-Samples Kruskal-Wallis Test") {}

void KruskalWallis::CustomizeTemplate(std::string& text) {
    const std::string popup = "<popup part=\"median\" target=\"schema\" tokenTemplate=\"" +
                              TemplateText(Text("Mean Rank")) +
                              "=$[1]$\"><tokenMapping valueToken=\"1\" "
                              "variable=\"Tooltips\"/></popup>";
    InsertBefore(text, "</visualization>", popup);
}
