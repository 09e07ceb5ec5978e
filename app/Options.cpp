// Reading the command line of nptests.
#include "app/Options.h"

#include <iostream>

#include <CLI/CLI.hpp>

#include "render/HtmlRenderer.h"

namespace {
bool EndsWith(const std::string& text, std::string_view suffix) {
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

int UsageError(const std::string& text) {
    std::cerr << "nptests: " << text << "\nRun with --help for more information.\n";
    return kExitUsage;
}
} // namespace

bool ParseOptions(int argc, char** argv, Options& options, int& exitCode) {
    CLI::App app{"Runs the NPTESTS nonparametric-tests command on a data file (--data), or renders "
                 "result documents (one per split of the data, in split order). The command's "
                 "options: docs/command.md.",
                 "nptests"};
    std::string layout = "headings";
    std::string splitBy;
    std::string format;
    app.add_option("--data", options.fDataFile,
                   "CSV or TSV data file with a header row (.tsv or .tab: tab-separated); the "
                   "engine computes the tests the command asks for")
        ->type_name("FILE");
    app.add_option("--split-by", splitBy,
                   "with --data: one split per combination of these numeric variables' values, "
                   "in ascending order")
        ->type_name("VAR[,VAR...]");
    app.add_option("--split-layout", layout,
                   "with --split-by: a heading per split (default) or split dimensions in the "
                   "tables")
        ->type_name("headings|table");
    app.add_option("--write-documents", options.fWriteDocuments,
                   "with --data: also save the result documents the engine wrote in this folder")
        ->type_name("DIR");
    app.add_option("documents", options.fDocuments,
                   "result documents, one per split (not with --splits)")
        ->type_name("RESULT.xml");
    app.add_option("--splits", options.fSplitsFile,
                   "JSON: the split variables, whether each split gets a heading, and each "
                   "split's document (relative to the file) and values")
        ->type_name("FILE");
    app.add_option("-c,--command", options.fCommand,
                   "the NPTESTS command, or @FILE to read it from a file (default: NPTESTS.)")
        ->type_name("TEXT|@FILE");
    app.add_option("--dictionary", options.fDictionaryFile,
                   "JSON: the variables of the data: names, labels, types, formats, measurement "
                   "levels, value labels, user-missing values (default: from the data file, or "
                   "the first document's dictionary)")
        ->type_name("FILE");
    app.add_flag("--check-command", options.fCheckCommand,
                 "print what the command yields as JSON (exit status 2 when the command "
                 "cannot be run); needs --data, --dictionary or a document");
    app.add_option("-f,--format", format,
                   "text, json or html (default: text; html when --output ends in .html)")
        ->type_name("text|json|html");
    app.add_option("-o,--output", options.fOutput, "where to write (default: standard output)")
        ->type_name("FILE");
    app.add_flag("--no-charts", options.fNoCharts, "tables only");
    app.add_flag("--colors-only", options.fColorsOnly,
                 "charts tell series apart by colour alone, without fill patterns");
    app.add_flag("--dump-model", options.fDumpModel,
                 "print what was read from each document as JSON (a debugging aid)");
    app.add_flag("--missing-strings", options.fMissingStrings,
                 "list on standard error every text key that has no entry in the string "
                 "table (a check of the string table)");
    app.add_option("--module", options.fModule, "the procedure module to load")->type_name("FILE");
    app.footer("Exit status: 0 when every split produced output; 1 when the data file cannot be "
               "read or a result document was rejected; 2 for a usage error or a command that "
               "does not fit the data. The NPTESTS command and its options: docs/command.md.");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        exitCode = app.exit(e) == 0 ? kExitOk : kExitUsage;
        return false;
    }

    if (!options.fDataFile.empty() &&
        (!options.fDocuments.empty() || !options.fSplitsFile.empty())) {
        exitCode = UsageError("give either --data or result documents, not both");
        return false;
    }
    if (options.fDataFile.empty() &&
        (!splitBy.empty() || !options.fWriteDocuments.empty() || layout != "headings")) {
        exitCode = UsageError("--split-by, --split-layout and --write-documents need --data");
        return false;
    }
    if (layout != "headings" && layout != "table") {
        exitCode =
            UsageError("unknown split layout \"" + layout + "\" (expected headings or table)");
        return false;
    }
    options.fSplitTable = layout == "table";
    for (std::size_t start = 0; !splitBy.empty() && start <= splitBy.size();) {
        const std::size_t comma = std::min(splitBy.find(',', start), splitBy.size());
        const std::string name = splitBy.substr(start, comma - start);
        if (name.empty()) {
            exitCode = UsageError("--split-by: expected variable names separated by commas");
            return false;
        }
        options.fSplitBy.push_back(name);
        start = comma + 1;
    }
    if (options.fDocuments.empty() && options.fSplitsFile.empty() && options.fDataFile.empty() &&
        !options.fCheckCommand) {
        exitCode = UsageError("no data file or result document given");
        return false;
    }
    if (!options.fDocuments.empty() && !options.fSplitsFile.empty()) {
        exitCode = UsageError("give the result documents either on the command line or in "
                              "--splits, not both");
        return false;
    }
    if (format.empty()) {
        format = EndsWith(options.fOutput, ".html") ? "html" : "text";
    }
    const std::optional<Renderer::Format> chosen = Renderer::FormatNamed(format);
    if (!chosen) {
        exitCode = UsageError("unknown format \"" + format + "\" (expected text, json or html)");
        return false;
    }
    if (*chosen == Renderer::kHtml) {
        // The report inlines the web folder's styles and chart libraries.
        const HtmlRenderer html(HtmlRenderer::DefaultWebFolder());
        if (!html.Ready()) {
            exitCode = UsageError("HTML output needs its web folder: " + html.Error());
            return false;
        }
    }
    options.fFormat = *chosen;
    return true;
}
