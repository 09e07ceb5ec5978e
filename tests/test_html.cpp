// The HTML report: table markup (nested headers, row groups, marks, missing
// cells), the outline, messages, chart containers and the inlined scripts.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "host/bp/BpOutput.h"
#include "host/cf/CFSysmis.h"
#include "render/HtmlRenderer.h"

namespace {
namespace fs = std::filesystem;

// A web folder with small stand-ins for the stylesheet and the scripts.
class WebFolder {
public:
    WebFolder() : fPath(fs::temp_directory_path() / ("nptests-web-" + std::to_string(getpid()))) {
        fs::create_directories(fPath);
        Write("report.css", "body{}\n");
        Write("vega.min.js", "var vega={};\n//# sourceMappingURL=vega.min.js.map\n");
        Write("vega-lite.min.js", "var s=\"</SCRIPT>\",r=/</g;\n");
        Write("vega-embed.min.js", "var vegaEmbed=1;\n");
        Write("charts.js", "var charts=1;\n");
    }
    ~WebFolder() { fs::remove_all(fPath); }
    void Write(const std::string& name, const std::string& text) const {
        std::ofstream(fPath / name) << text;
    }
    std::string Path() const { return fPath.string(); }

private:
    fs::path fPath;
};

std::string Between(const std::string& text, const std::string& from, const std::string& to) {
    const size_t start = text.find(from);
    if (start == std::string::npos) {
        return "<no " + from + ">";
    }
    const size_t end = text.find(to, start);
    return text.substr(start,
                       end == std::string::npos ? std::string::npos : end + to.size() - start);
}

size_t Count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        ++n;
    }
    return n;
}

// A table of two splits by two tests, with "Sig." and a "95% CI" group of
// "Lower" and "Upper" in the columns.
void AddSummary(BpHeading& heading) {
    BpPivotTable table = heading.PivotTable(BpString("Summary <all>", false),
                                            BpString("Hypothesis Test Summary", false), false);
    BpDimension split = table.Dimension(BpString("Split", false), BpGroup::kNone);
    split.Position(BpDimension::kRows, 1, false, false);
    BpDimension rows = table.Dimension(BpString("Item", false), BpGroup::kNone);
    rows.Position(BpDimension::kRows, 2, true, false);
    BpDimension columns = table.Dimension(BpString("Statistics", false), BpGroup::kNone);
    columns.Position(BpDimension::kColumns, 1, true, false);
    for (const char* group : {"Female", "Male"}) {
        split.Category(BpString(group, false));
        for (int i = 1; i <= 2; ++i) {
            rows.Category(BpNumber(i, BpProcedure::Count()));
            BpCategory sig = columns.Category(BpString("Sig.", false));
            sig.Cell(BpNumber(i == 1 ? 0.5 : kCFSysmis, BpProcedure::Significance()));
            sig.Note(BpString("Level note", false).Replicate());
            if (i == 2) {
                sig.CellNote(BpString("Cannot compute", false).Replicate());
            }
            BpGroup ci = columns.Group(BpString("95% CI", false), true, BpGroup::kNone);
            ci.Category(BpString("Lower", false)).Cell(BpNumber(i, BpProcedure::Coefficient()));
            if (i == 1) {
                ci.Category(BpString("Upper", false)).Cell(BpString("wide", false));
            }
        }
    }
    table.Caption(BpString("Asymptotic significances are displayed.", false));
}

std::unique_ptr<BpChartNode> SmallChart() {
    auto chart = std::make_unique<BpChartNode>();
    chart->fTemplate = "NPARBoxplot.viztemplate";
    chart->fTitle = "Independent-Samples Kruskal-Wallis Test";
    chart->fDescription = "Kruskal-Wallis; a </script> in a text";
    chart->fSources.push_back({"boxplotSource",
                               {{"Value", {1.5, BpChartNode::Value{}}},
                                {"Tooltips", {std::string("<b>"), std::string("2.00")}}}});
    chart->fDocument = "<visualization><graph id=\"graph1\"/></visualization>";
    return chart;
}
} // namespace

TEST(HtmlRenderer, WritesNestedHeadersRowGroupsMarksAndFootnotes) {
    WebFolder web;
    BpProcedure procedure("Nonparametric Tests", nullptr, nullptr);
    BpHeading heading = procedure.Heading(BpString("Kruskal-Wallis & co", false));
    AddSummary(heading);
    const HtmlRenderer renderer(web.Path());
    ASSERT_TRUE(renderer.Ready()) << renderer.Error();
    const std::string html = renderer.Render(procedure.Root(), {});

    EXPECT_EQ(Between(html, "<thead>", "</thead>"),
              "<thead>\n"
              "<tr><td class=\"corner\" rowspan=\"2\" colspan=\"2\"></td>"
              "<th scope=\"col\" rowspan=\"2\">Sig.<sup class=\"mark\">a</sup></th>"
              "<th scope=\"colgroup\" colspan=\"2\">95% CI</th></tr>\n"
              "<tr><th scope=\"col\">Lower</th><th scope=\"col\">Upper</th></tr>\n"
              "</thead>");
    // The split is a leading row label spanning its tests; a missing number
    // shows "." right-aligned, an absent cell stays empty, texts stay left.
    EXPECT_EQ(Between(html, "<tbody>", "</tbody>"),
              "<tbody>\n"
              "<tr><th scope=\"rowgroup\" rowspan=\"2\">Female</th><th scope=\"row\">1</th>"
              "<td class=\"num\">0.500</td><td class=\"num\">1.000</td><td>wide</td></tr>\n"
              "<tr><th scope=\"row\">2</th><td class=\"num\">.<sup class=\"mark\">b</sup></td>"
              "<td class=\"num\">2.000</td><td></td></tr>\n"
              "<tr><th scope=\"rowgroup\" rowspan=\"2\">Male</th><th scope=\"row\">1</th>"
              "<td class=\"num\">0.500</td><td class=\"num\">1.000</td><td>wide</td></tr>\n"
              "<tr><th scope=\"row\">2</th><td class=\"num\">.<sup class=\"mark\">b</sup></td>"
              "<td class=\"num\">2.000</td><td></td></tr>\n"
              "</tbody>");
    EXPECT_NE(html.find("<caption>Summary &lt;all&gt;</caption>"), std::string::npos);
    EXPECT_NE(html.find("<p class=\"table-caption\">Asymptotic significances are displayed.</p>"),
              std::string::npos);
    EXPECT_NE(html.find("<ul class=\"footnotes\"><li><sup class=\"mark\">a</sup> Level note</li>"
                        "<li><sup class=\"mark\">b</sup> Cannot compute</li></ul>"),
              std::string::npos);
    EXPECT_NE(html.find("<h2>Kruskal-Wallis &amp; co</h2>"), std::string::npos);
    // A report without charts carries no chart library.
    EXPECT_EQ(html.find("<script"), std::string::npos);
}

TEST(HtmlRenderer, OutlineLinksEveryItemInNestedLists) {
    WebFolder web;
    BpProcedure procedure("Nonparametric Tests", nullptr, nullptr);
    BpHeading split = procedure.Heading(BpString("Split A", false));
    BpHeading test = split.Heading(BpString("Test 1", false));
    AddSummary(test);
    test.AddChart(SmallChart());
    procedure.Heading(BpString("Split B", false));
    const std::string html = HtmlRenderer(web.Path()).Render(procedure.Root(), {});

    EXPECT_EQ(
        Between(html, "<nav", "</nav>"),
        "<nav class=\"outline\" aria-label=\"Outline\">\n"
        "<ul><li class=\"heading\"><a href=\"#item-1\">Split A</a>"
        "<ul class=\"nested\"><li class=\"heading\"><a href=\"#item-2\">Test 1</a>"
        "<ul class=\"nested\"><li class=\"table\"><a href=\"#item-3\">Summary &lt;all&gt;</a></li>"
        "<li class=\"chart\"><a href=\"#item-4\">Independent-Samples Kruskal-Wallis Test</a>"
        "</li></ul></li></ul></li>"
        "<li class=\"heading\"><a href=\"#item-5\">Split B</a></li></ul>\n</nav>");
    for (const char* id : {"item-1", "item-2", "item-3", "item-4", "item-5"}) {
        EXPECT_EQ(Count(html, std::string("id=\"") + id + "\""), 1u) << id;
    }
    EXPECT_EQ(Count(html, "<section"), Count(html, "</section>"));
    EXPECT_NE(html.find("<h3>Test 1</h3>"), std::string::npos);
}

TEST(HtmlRenderer, ChartCarriesItsDataAndScriptsAreInlinedSafely) {
    WebFolder web;
    BpProcedure procedure("Nonparametric Tests", nullptr, nullptr);
    procedure.Heading(BpString("Test", false)).AddChart(SmallChart());
    const std::vector<CFMessage> messages = {{CFMessage::kError, "Not parse element: Foo", ""},
                                             {CFMessage::kWarning, "a <warning>", "b&.xml"}};
    const std::string html = HtmlRenderer(web.Path()).Render(procedure.Root(), messages);

    const std::string data =
        Between(html, "<script type=\"application/json\" class=\"chart-data\">", "</script>");
    EXPECT_NE(data.find("\"title\":\"Independent-Samples Kruskal-Wallis Test\""),
              std::string::npos);
    EXPECT_NE(data.find("\"subtitle\":null"), std::string::npos);
    EXPECT_NE(data.find("\"boxplotSource\":{\"Value\":[1.5,null],"
                        "\"Tooltips\":[\"\\u003cb>\",\"2.00\"]}"),
              std::string::npos);
    EXPECT_NE(data.find("\"document\":\"\\u003cvisualization>"), std::string::npos);
    EXPECT_EQ(data.find("</script>", 10), data.size() - 9); // only its own end tag

    // Libraries in order, their source-map comments dropped, "</" escaped.
    const size_t vega = html.find("<script>var vega={};");
    const size_t lite = html.find("<script>var s=\"<\\/SCRIPT>\",r=/</g;");
    const size_t embed = html.find("<script>var vegaEmbed=1;");
    const size_t charts = html.find("<script>var charts=1;");
    EXPECT_LT(vega, lite);
    EXPECT_LT(lite, embed);
    EXPECT_LT(embed, charts);
    EXPECT_NE(charts, std::string::npos);
    EXPECT_EQ(html.find("sourceMappingURL"), std::string::npos);

    EXPECT_NE(
        html.find("<li class=\"error\"><span class=\"kind\">Error</span> Not parse element: "
                  "Foo</li><li class=\"warning\"><span class=\"kind\">Warning</span> b&amp;.xml: "
                  "a &lt;warning&gt;</li>"),
        std::string::npos);
}

TEST(HtmlRenderer, NamesTheMissingWebFileAndStillWritesTheTables) {
    WebFolder web;
    fs::remove(fs::path(web.Path()) / "vega-lite.min.js");
    BpProcedure procedure("Nonparametric Tests", nullptr, nullptr);
    AddSummary(procedure);
    procedure.AddChart(SmallChart());
    const HtmlRenderer renderer(web.Path());
    EXPECT_FALSE(renderer.Ready());
    EXPECT_NE(renderer.Error().find("vega-lite.min.js"), std::string::npos) << renderer.Error();
    const std::string html = renderer.Render(procedure.Root(), {});
    EXPECT_EQ(html.find("<script>"), std::string::npos);
    EXPECT_NE(html.find("<tbody>"), std::string::npos);
    EXPECT_NE(html.find("This chart cannot be drawn: cannot read "), std::string::npos);
    EXPECT_FALSE(HtmlRenderer("/nonexistent").Ready());
}
