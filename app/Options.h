// The command line of nptests: what to read, how to render, where to write.
#pragma once

#include <string>
#include <vector>

#include "render/Renderer.h"

struct Options {
    std::vector<std::string> fDocuments; // one result document per split, in split order
    std::string fSplitsFile;             // JSON: split variables and each split's document
    std::string fCommand = "NPTESTS.";   // the command, or "@FILE"
    std::string fDictionaryFile;         // JSON variables; empty: the first document's
    bool fCheckCommand = false;          // print what the command yields instead
    Renderer::Format fFormat = Renderer::kText;
    std::string fOutput;               // empty: standard output
    bool fNoCharts = false;            // tables only
    bool fColorsOnly = false;          // charts tell series apart by colour alone
    bool fDumpModel = false;           // print what was read instead of rendering
    bool fMissingStrings = false;      // list the text keys without an entry
    std::string fModule;               // empty: the module next to the program
    std::string fDataFile;             // CSV or TSV: the engine computes the documents from it
    std::vector<std::string> fSplitBy; // variables whose values split the data
    bool fSplitTable = false;          // split dimensions in the tables instead of split headings
    std::string fWriteDocuments;       // folder where the engine's documents are also saved
};

// The exit statuses of nptests.
inline constexpr int kExitOk = 0;       // every split produced output
inline constexpr int kExitRejected = 1; // a split's document was rejected
inline constexpr int kExitUsage = 2;    // the command line cannot be run

// Reads the command line into `options`. False when the program is to stop
// at once (help was shown, or a usage error was reported), with `exitCode`.
bool ParseOptions(int argc, char** argv, Options& options, int& exitCode);
