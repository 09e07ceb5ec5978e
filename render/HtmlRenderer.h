// The HTML report: one self-contained HTML5 page with an outline of the
// output, every pivot table as an HTML table with its footnotes, the host's
// messages, and every chart as a container that the page's scripts draw with
// vega-lite when it scrolls into view. The scripts and styles are read from
// the web folder (resources/web/README.md) and inlined, so the page opens
// offline.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "host/bp/BpTree.h"
#include "host/cf/CFErrorChannel.h"
#include "render/Renderer.h"

class HtmlRenderer final : public Renderer {
public:
    // Reads report.css, the vega builds and charts.js from `webFolder`.
    explicit HtmlRenderer(std::string webFolder);

    // Whether every file of the web folder was read; else Error() names the
    // first that was not.
    bool Ready() const { return fError.empty(); }
    const std::string& Error() const { return fError; }

    // The report of the output under `root` (its text is the procedure's
    // title) and the host's messages. The chart libraries go into the page
    // only when the output holds a chart; a renderer that is not Ready()
    // writes its charts as a line saying that they cannot be drawn.
    std::string Render(const BpHeadingNode& root,
                       const std::vector<CFMessage>& messages) const override;
    // Writes the report as it is made, an item at a time.
    bool RenderTo(const BpHeadingNode& root, const std::vector<CFMessage>& messages,
                  std::FILE* out) const override;

    // The web folder: "web" under NPTESTS_RESOURCES when that is set, else
    // the one the build fills.
    static std::string DefaultWebFolder();

private:
    // Makes the report in `out`, calling `drain` after each item.
    void Write(const BpHeadingNode& root, const std::vector<CFMessage>& messages, std::string& out,
               const std::function<void()>& drain) const;
    bool ReadWebFile(const std::string& name, std::string& text);
    std::string fWebFolder;
    std::string fError;
    std::string fStyle;
    std::vector<std::string> fScripts; // in the order they are inlined
};
