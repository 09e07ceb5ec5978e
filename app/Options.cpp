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
    CLI::App app{"Renders the result documents of the nonparametric-tests engine (one per "
                 "split of the data, in split order).",
                 "nptests"};
    std::string format;
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
                   "JSON: the variables of the data (default: the first document's dictionary)")
        ->type_name("FILE");
    app.add_flag("--check-command", options.fCheckCommand,
                 "print what the command yields as JSON (exit status 2 when the command "
                 "cannot be run); needs --dictionary or a document");
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
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        exitCode = app.exit(e) == 0 ? kExitOk : kExitUsage;
        return false;
    }

    if (options.fDocuments.empty() && options.fSplitsFile.empty() && !options.fCheckCommand) {
        exitCode = UsageError("no result document given");
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
