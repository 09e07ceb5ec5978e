// The --splits file of nptests: which variables split the data, whether each
// split gets a heading of its own, and each split's document and values.
//   {"variables": ["gender"], "heading": true,
//    "splits": [{"document": "split_1.xml", "values": [1]}, ...]}
#pragma once

#include <string>
#include <vector>

struct SplitPlan {
    struct Split {
        std::string fDocument; // relative to the current folder
        std::vector<double> fValues;
    };
    std::vector<std::string> fVariables;
    bool fHeading = true;
    std::vector<Split> fSplits;
};

// Reads the plan from `text`, the contents of the file at `path`; documents
// are taken relative to the file's folder. False with `error` set when the
// text is not such a plan.
bool ReadSplitPlan(const std::string& path, const std::string& text, SplitPlan& plan,
                   std::string& error);
