// The engine: from a data set and a parsed NPTESTS command to one result
// document per split of the data, as the procedure module reads them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class CommandSpec;
class Dataset;

struct EngineOptions {
    std::string fDataName;             // the data file, named in each document's comment
    std::vector<std::string> fSplitBy; // split variables; none: one split of every case
    // The seed of the Monte Carlo significances, as the procedure chose it
    // from the command (it draws one for SEED=RANDOM) and names it in its
    // notes.
    std::uint32_t fSeed = 2000000;
    // Called before each split is computed with its number (from 0) and the count.
    std::function<void(std::size_t split, std::size_t splits)> fProgress;
    // Called now and then during a Monte Carlo significance with the samples
    // drawn and the samples asked for.
    std::function<void(std::size_t done, std::size_t total)> fMonteCarloProgress;
};

struct SplitDocument {
    std::vector<double> fSplitValues; // the split's value of each split variable
    std::string fDocument;            // the result document
};

struct EngineResult {
    std::vector<SplitDocument> fDocuments; // one per split, in split order
    // The decimals of each variable's display format for these tests'
    // output (AnalysisPlan::DisplayDecimals); the documents' dictionaries
    // carry them too.
    std::vector<int> fDisplayDecimals;
};

// Plans the tests the command asks for and computes them on every split:
// one split per combination of the split variables' values, in ascending
// order of the values (cases with a missing split value belong to no split).
// False with `error` set when the command does not fit the data (an unknown
// variable, an option that does not fit its field, a string split variable)
// or a split variable is unknown; the message names the option or variable.
bool RunEngine(const Dataset& data, const CommandSpec& command, const EngineOptions& options,
               EngineResult& result, std::string& error);

// The split variables' indices in `data`; false with `error` set when one is
// not there or is not numeric.
bool ResolveSplitBy(const Dataset& data, const std::vector<std::string>& names,
                    std::vector<int>& indices, std::string& error);
