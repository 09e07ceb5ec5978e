// The HTML report: one self-contained HTML5 page with an outline of the
// output, every pivot table as an HTML table with its footnotes, the host's
// messages, and every chart as a container that the page's scripts draw with
// vega-lite when it scrolls into view. The scripts and styles are read from
// the web folder and inlined, so the page opens offline.
#pragma once

#include <string>
#include <vector>

#include "host/bp/BpTree.h"
#include "host/cf/CFErrorChannel.h"

class HtmlRenderer final {
public:
    // `webFolder` holds report.css, charts.js and the vega builds.
    explicit HtmlRenderer(std::string webFolder) : fWebFolder(std::move(webFolder)) {}

    // Writes the report of the output under `root` (its text is the
    // procedure's title) to `out`. False, with Error() set, when a file of
    // the web folder cannot be read; the chart libraries are read only when
    // the output holds a chart.
    bool Render(const BpHeadingNode& root, const std::vector<CFMessage>& messages,
                std::string& out);
    const std::string& Error() const { return fError; }

    // The web folder: "web" under NPTESTS_RESOURCES when that is set, else
    // the one the build fills.
    static std::string DefaultWebFolder();
    // The files read from the web folder, in the order they are inlined.
    static const std::vector<std::string>& ChartScripts();

private:
    bool ReadWebFile(const std::string& name, std::string& text);
    std::string fWebFolder;
    std::string fError;
};
