// Charts against their documents: every example rendered by the nptests
// program as JSON, and every chart in it checked against the numbers of the
// tables of its document, read here on their own with pugixml (never against
// a stored copy of a chart). Category labels are the field's categories in
// order with their value labels; observed and hypothesized frequencies are
// the test's table; bar counts add up to the test's N; histogram bins and the
// fitted curve's parameters are the document's; the network's nodes and
// edges are the pairwise table's samples and rows; facet and panel titles are
// value labels. The documents' tables must be laid out as
// host/cf/CFTableLayout.h says.
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <numeric>
#include <pugixml.hpp>
#include <set>
#include <sstream>

#include "RunCommand.h"
#include "host/cf/CFTableLayout.h"

namespace {

using json = nlohmann::json;
using Numbers = std::vector<double>;
using Texts = std::vector<std::string>;
namespace Layout = CFTableLayout;

double Number(std::string_view text) {
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    double value = std::nan("");
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

Texts Words(const std::string& text) {
    Texts words;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        words.push_back(word);
    }
    return words;
}

// A simple table of the document.
struct Table {
    Texts fRowNames;
    Texts fColumnNames;
    std::vector<Numbers> fRows;

    Numbers Column(size_t column) const {
        Numbers out;
        for (const Numbers& row : fRows) {
            out.push_back(column < row.size() ? row[column] : std::nan(""));
        }
        return out;
    }
};

Table ReadTable(pugi::xml_node simple) {
    Table table;
    table.fRowNames = Words(simple.child_value("RowNames"));
    table.fColumnNames = Words(simple.child_value("ColumnNames"));
    for (pugi::xml_node row : simple.children("Row")) {
        Numbers numbers;
        for (const std::string& word : Words(row.child_value())) {
            numbers.push_back(word == "__MISSING__" ? std::nan("") : Number(word));
        }
        table.fRows.push_back(numbers);
    }
    return table;
}

pugi::xml_node Simple(pugi::xml_node node, const char* name) {
    return node.find_node([&](pugi::xml_node n) {
        return std::string_view(n.name()) == "SimpleTable" &&
               std::string_view(n.attribute("name").value()) == name;
    });
}

pugi::xml_node Struct(pugi::xml_node node, const char* name) {
    return node.find_node([&](pugi::xml_node n) {
        return std::string_view(n.name()) == "StructuredTable" &&
               std::string_view(n.attribute("name").value()) == name;
    });
}

// The value of an attribute element directly inside a structured table.
std::string AttributeText(pugi::xml_node table, const char* name) {
    for (pugi::xml_node attribute : table.children("Attribute")) {
        if (std::string_view(attribute.attribute("name").value()) == name) {
            return attribute.attribute("value").value();
        }
    }
    return {};
}

double Attribute(pugi::xml_node table, const char* name) {
    return Number(AttributeText(table, name));
}

// Parameter %i of the test's condition as numbers.
Numbers Condition(pugi::xml_node algorithm, int i) {
    Numbers out;
    const std::string name = "%" + std::to_string(i);
    for (const std::string& word :
         Words(AttributeText(Struct(algorithm, "Condition"), name.c_str()))) {
        out.push_back(Number(word));
    }
    return out;
}

std::string ConditionKey(pugi::xml_node algorithm) {
    return AttributeText(Struct(algorithm, "Condition"), "ConditionKey");
}

double Statistic(pugi::xml_node algorithm, const char* name) {
    return Attribute(Struct(algorithm, "StatisticsResult"), name);
}

struct Category {
    std::string fValue;
    std::string fLabel; // the value label, else the value
};

struct Field {
    std::string fLabel;
    bool fDate = false;
    std::vector<Category> fCategories;
};

// What a chart draws: its data by source and variable, and its final chart
// document.
struct Chart {
    std::string fTemplate;
    std::string fTitle;
    json fData;
    pugi::xml_document fDocument;

    Numbers Values(const char* source, const char* variable) const {
        Numbers out;
        for (const json& value : fData.at(source).at(variable)) {
            out.push_back(value.is_number() ? value.get<double>() : std::nan(""));
        }
        return out;
    }
    Texts Strings(const char* source, const char* variable) const {
        Texts out;
        for (const json& value : fData.at(source).at(variable)) {
            out.push_back(value.is_string() ? value.get<std::string>() : "");
        }
        return out;
    }
    pugi::xml_node Variable(const char* id) const {
        return fDocument.find_node([&](pugi::xml_node n) {
            return (std::string_view(n.name()) == "variable" ||
                    std::string_view(n.name()) == "derivedVariable") &&
                   std::string_view(n.attribute("id").value()) == id;
        });
    }
    // The text the chart shows for a value of a variable: its relabel, else
    // the number itself.
    std::string Shown(const char* id, double value) const {
        for (pugi::xml_node relabel : Variable(id).children("relabel")) {
            if (Number(relabel.attribute("value").value()) == value) {
                return relabel.attribute("text").value();
            }
        }
        char text[32];
        std::snprintf(text, sizeof text, "%g", value);
        return text;
    }
    bool Has(std::string_view text) const {
        std::ostringstream out;
        fDocument.save(out, "", pugi::format_raw);
        return out.str().find(text) != std::string::npos;
    }
};

double Sum(const Numbers& numbers) {
    return std::accumulate(numbers.begin(), numbers.end(), 0.0);
}

// Numbers equal to 1e-6 (the documents write six decimals).
void ExpectNear(const Numbers& actual, const Numbers& expected, const std::string& what) {
    ASSERT_EQ(actual.size(), expected.size()) << what;
    for (size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], 1e-6) << what << " at " << i;
    }
}

// Days since 1970-01-01 of "yyyy-MM-ddThh:mm:ss"; NaN for other texts.
double DaysOfDateTime(const std::string& text) {
    int y = 0;
    unsigned m = 0;
    unsigned d = 0;
    int hh = 0;
    int mm = 0;
    int ss = 0;
    if (std::sscanf(text.c_str(), "%d-%u-%uT%d:%d:%d", &y, &m, &d, &hh, &mm, &ss) != 6) {
        return std::nan("");
    }
    using namespace std::chrono;
    const sys_days day{year_month_day{year{y}, month{m}, std::chrono::day{d}}};
    return day.time_since_epoch().count() + (hh * 3600 + mm * 60 + ss) / 86400.0;
}

class Example {
public:
    explicit Example(const std::string& name) : fName(name) {
        const std::string path = std::string(NPTESTS_EXAMPLES_DIR) + "/" + name;
        EXPECT_TRUE(fXml.load_file(path.c_str())) << path;
        for (const pugi::xpath_node& field_ : fXml.select_nodes("//DataDictionary/DataField")) {
            const pugi::xml_node field = field_.node();
            Field& record = fFields.emplace_back();
            record.fLabel = field.attribute("displayName").value();
            record.fDate = std::string_view(field.attribute("dataType").value()) == "date";
            for (pugi::xml_node value : field.children("Value")) {
                const std::string label = value.attribute("displayValue").value();
                record.fCategories.push_back(
                    {value.attribute("value").value(),
                     label.empty() ? std::string(value.attribute("value").value()) : label});
            }
        }
        const CommandResult result = RunNptests(NPTESTS_EXAMPLES_DIR, [&] {
            std::vector<std::string> arguments = {"-f", "json"};
            for (const std::string& argument : ExampleArguments(NPTESTS_EXAMPLES_DIR, name)) {
                arguments.push_back(argument);
            }
            return arguments;
        }());
        EXPECT_EQ(result.fStatus, 0) << result.fErr;
        Collect(json::parse(result.fOut).at("items"));
    }

    const Field& FieldAt(double index) const {
        static const Field none;
        const size_t i = static_cast<size_t>(index);
        return index >= 0 && i < fFields.size() ? fFields[i] : none;
    }
    // The label of category `position` of a field.
    std::string CategoryLabel(double field, double position) const {
        const auto& categories = FieldAt(field).fCategories;
        const size_t i = static_cast<size_t>(position);
        return position >= 0 && i < categories.size() ? categories[i].fLabel : "<none>";
    }
    double CategoryValue(double field, double position) const {
        const auto& categories = FieldAt(field).fCategories;
        const size_t i = static_cast<size_t>(position);
        return position >= 0 && i < categories.size() ? Number(categories[i].fValue) : std::nan("");
    }
    // The histogram of a field's information.
    Table FieldHistogram(double field) const {
        for (const pugi::xpath_node& info_ : fXml.select_nodes("//FieldInfos/FieldInfo")) {
            const pugi::xml_node info = info_.node();
            if (Number(info.attribute("varIndex").value()) == field) {
                return ReadTable(Simple(info, "Histogram"));
            }
        }
        return {};
    }

    // The tests that get a chart of their own, in document order: tests of
    // the charted algorithms without an error message.
    std::vector<pugi::xml_node> ChartedTests() const {
        static const std::set<std::string> kCharted = {"OChiSquare",
                                                       "OBinomial",
                                                       "ORuns",
                                                       "OWilcoxonSignedRanks",
                                                       "OKolmogorovSmirnov",
                                                       "RSign",
                                                       "RWilcoxonSignedRanks",
                                                       "RCochransQ",
                                                       "RMcNemar",
                                                       "RFriedmansTwoWayByRanks",
                                                       "RKendallsCoefficient",
                                                       "RMarginalHomogeneity",
                                                       "IMannWhitneyU",
                                                       "IWaldWolfowitzRuns",
                                                       "IKolmogorovSmirnov",
                                                       "IMoses",
                                                       "IKruskalWallis",
                                                       "IJonckheereTerpstra",
                                                       "IMedian"};
        std::vector<pugi::xml_node> tests;
        for (const pugi::xpath_node& test_ : fXml.select_nodes("//NonParametricTests/Algorithm")) {
            const pugi::xml_node test = test_.node();
            bool error = false;
            for (const pugi::xpath_node& message_ :
                 test.select_nodes(".//StructuredTable[@name='Message']")) {
                const pugi::xml_node message = message_.node();
                error = error || AttributeText(message, "type") == "error";
            }
            // A chi-square test without its frequency table has nothing to draw.
            const bool drawable =
                std::string_view(test.attribute("name").value()) != "OChiSquare" ||
                Simple(test, "Content");
            if (kCharted.count(test.attribute("name").value()) && !error && drawable) {
                tests.push_back(test);
            }
        }
        return tests;
    }
    // The tests with a pairwise result (and no blocking error), in order.
    std::vector<pugi::xml_node> PairwiseTests() const {
        std::vector<pugi::xml_node> tests;
        for (const pugi::xpath_node& test_ : fXml.select_nodes("//NonParametricTests/Algorithm")) {
            const pugi::xml_node test = test_.node();
            if (Struct(test, "PairwiseResult")) {
                tests.push_back(test);
            }
        }
        return tests;
    }
    std::vector<pugi::xml_node> FieldInfos() const {
        std::vector<pugi::xml_node> infos;
        for (const pugi::xpath_node& info_ : fXml.select_nodes("//FieldInfos/FieldInfo")) {
            const pugi::xml_node info = info_.node();
            infos.push_back(info);
        }
        return infos;
    }

    std::string fName;
    pugi::xml_document fXml;
    std::vector<Field> fFields;
    std::vector<std::unique_ptr<Chart>> fTestCharts;
    std::vector<std::unique_ptr<Chart>> fNetworks;
    std::vector<std::unique_ptr<Chart>> fFieldCharts;

private:
    void Collect(const json& items) {
        for (const json& item : items) {
            if (item.at("kind") == "heading") {
                Collect(item.at("items"));
                continue;
            }
            if (item.at("kind") != "chart") {
                continue;
            }
            auto chart = std::make_unique<Chart>();
            chart->fTemplate = item.at("template");
            chart->fTitle = item.at("title");
            chart->fData = item.at("data");
            const std::string document = item.at("document");
            EXPECT_TRUE(chart->fDocument.load_string(document.c_str())) << chart->fTitle;
            if (chart->fTemplate == "GLMMPairwiseContrasts.viztemplate") {
                fNetworks.push_back(std::move(chart));
            } else if (chart->fTitle.find("Field Information") != std::string::npos) {
                fFieldCharts.push_back(std::move(chart));
            } else {
                fTestCharts.push_back(std::move(chart));
            }
        }
    }
};

// ---------------------------------------------------------------------------
// One check per chart kind

void CheckFieldChart(const Example& example, pugi::xml_node info, const Chart& chart) {
    const double field = Number(info.attribute("varIndex").value());
    pugi::xml_node distribution = info.child("StructuredTable");
    const double total = Attribute(distribution, "Total");
    const Numbers counts = chart.Values("graphSource", "count");
    EXPECT_EQ(Sum(counts), total) << "bars add up to the field's N";
    if (std::string_view(distribution.attribute("name").value()) == "CategoricalDistribution") {
        EXPECT_EQ(chart.fTitle, "Categorical Field Information");
        const Table table = ReadTable(Simple(distribution, "Categories"));
        ASSERT_EQ(table.fColumnNames, (Texts{std::string(Layout::kCategoryColumnName),
                                             std::string(Layout::kCategoryCountColumnName)}));
        const Numbers positions = table.Column(Layout::kCategoryColumn);
        ExpectNear(counts, table.Column(Layout::kCategoryCountColumn), "category counts");
        const Numbers values = chart.Values("graphSource", "value");
        ASSERT_EQ(values.size(), positions.size());
        for (size_t k = 0; k < values.size(); ++k) {
            EXPECT_EQ(chart.Shown("value", values[k]), example.CategoryLabel(field, positions[k]))
                << "bar " << k;
        }
        EXPECT_EQ(positions.size(), example.FieldAt(field).fCategories.size())
            << "one bar per category";
        return;
    }
    EXPECT_EQ(chart.fTitle, "Continuous Field Information");
    const Table table = ReadTable(Simple(distribution, "Histogram"));
    ASSERT_EQ(table.fColumnNames, (Texts{std::string(Layout::kBinValueColumnName),
                                         std::string(Layout::kBinCountColumnName)}));
    ExpectNear(chart.Values("graphSource", "value"), table.Column(Layout::kBinValueColumn), "bins");
    ExpectNear(counts, table.Column(Layout::kBinCountColumn), "bin counts");
    if (example.FieldAt(field).fDate) {
        char mean[32];
        std::snprintf(mean, sizeof mean, "%.1f", Attribute(distribution, "Mean"));
        EXPECT_FALSE(chart.Has(mean)) << "a date field's mean is shown as a date";
    }
}

void CheckChiSquare(const Example& example, pugi::xml_node test, const Chart& chart) {
    const double field = Condition(test, 1).at(0);
    const Table table = ReadTable(Simple(test, "Content"));
    ASSERT_EQ(table.fRowNames, (Texts{std::string(Layout::kObservedRowName),
                                      std::string(Layout::kHypothesizedRowName)}));
    const Numbers categories = chart.Values("graphSource", "Category");
    const Numbers frequency = chart.Values("graphSource", "Frequency");
    const Numbers type = chart.Values("graphSource", "Type");
    Numbers observed;
    Numbers expected;
    Texts labels;
    for (size_t k = 0; k < categories.size(); ++k) {
        (type[k] == 0 ? observed : expected).push_back(frequency[k]);
        if (type[k] == 0) {
            labels.push_back(chart.Shown("Category", categories[k]));
        }
    }
    ExpectNear(observed, table.fRows.at(Layout::kObservedRow), "observed frequencies");
    ExpectNear(expected, table.fRows.at(Layout::kHypothesizedRow), "hypothesized frequencies");
    Texts categoryLabels;
    for (const std::string& name : table.fColumnNames) {
        categoryLabels.push_back(example.CategoryLabel(field, Layout::PositionOfName(name)));
    }
    EXPECT_EQ(labels, categoryLabels);
    EXPECT_EQ(Sum(observed), Statistic(test, "TotalN"));
}

void CheckBinomial(const Example& example, pugi::xml_node test, const Chart& chart) {
    const double field = Condition(test, 1).at(0);
    const Table table = ReadTable(Simple(test, "Content"));
    ASSERT_EQ(table.fColumnNames, (Texts{std::string(Layout::kSuccessColumnName),
                                         std::string(Layout::kFailureColumnName)}));
    const Texts rows = chart.Strings("graphSource", "categories");
    const Texts types = chart.Strings("graphSource", "type");
    const Numbers values = chart.Values("graphSource", "value");
    Numbers observed;
    Texts classes;
    for (size_t k = 0; k < rows.size(); ++k) {
        if (rows[k] != "Hypothesized") {
            observed.push_back(values[k]);
            classes.push_back(types[k]);
        }
    }
    Numbers positive;
    for (double value : table.fRows.at(Layout::kObservedRow)) {
        if (value > 0) {
            positive.push_back(value);
        }
    }
    ExpectNear(observed, positive, "observed percentages");
    const std::string key = ConditionKey(test);
    if (key == "ABinaryTestVariableIsSpecified_O_Binomial_5" ||
        key == "CategoryListsAreSpecified_O_Binomial_5") {
        // Each class names its categories by their labels; a position past the
        // field's categories is the next listed value outside them.
        Texts outside;
        for (pugi::xml_node value : Struct(test, "ValsNotInTheCategoreis").children("Attribute")) {
            outside.push_back(value.attribute("value").value());
        }
        size_t taken = 0;
        Texts expected;
        for (int parameter : {2, 3}) {
            std::string text;
            for (double code : Condition(test, parameter)) {
                const bool isOutside =
                    code >= static_cast<double>(example.FieldAt(field).fCategories.size());
                text += (text.empty() ? "" : ", ") +
                        (isOutside ? outside.at(taken++) : example.CategoryLabel(field, code));
            }
            expected.push_back(text);
        }
        Texts shown;
        for (const std::string& type : types) {
            if (std::find(shown.begin(), shown.end(), type) == shown.end()) {
                shown.push_back(type);
            }
        }
        EXPECT_EQ(shown, expected);
    }
    EXPECT_TRUE(chart.Has("<axis dim=\"x\" variable=\"categories\"><title><text>" +
                          example.FieldAt(field).fLabel))
        << "the field's label titles the category axis";
}

void CheckHistogramOfField(const Example& example, pugi::xml_node test, const Chart& chart) {
    const double field = Condition(test, 1).at(0);
    const Table table = example.FieldHistogram(field);
    ExpectNear(chart.Values("graphSource", "value"), table.Column(Layout::kBinValueColumn), "bins");
    ExpectNear(chart.Values("graphSource", "count"), table.Column(Layout::kBinCountColumn),
               "bin counts");
    if (std::string_view(test.attribute("name").value()) == "OWilcoxonSignedRanks") {
        pugi::xml_node distribution = Struct(test, "ContinuousDistribution");
        for (const char* median : {"HypotheticalMedian", "ObservedMedian"}) {
            bool found = false;
            for (const pugi::xpath_node& guide_ : chart.fDocument.select_nodes("//lineGuide")) {
                const pugi::xml_node guide = guide_.node();
                found = found || std::abs(Number(guide.attribute("x").value()) -
                                          Attribute(distribution, median)) < 1e-9;
            }
            EXPECT_TRUE(found) << median;
        }
        return;
    }
    // Kolmogorov-Smirnov: the fitted curve's parameters are the condition's.
    pugi::xml_node fit = chart.fDocument.select_node("//distributionStatistic").node();
    const Numbers first = Condition(test, 2);
    if (first.empty() || std::isnan(first[0])) {
        EXPECT_FALSE(fit);
        return;
    }
    ASSERT_TRUE(fit);
    const bool date = example.FieldAt(field).fDate;
    const auto read = [&](const char* name) {
        const std::string text = fit.attribute(name).value();
        return date && text.find('T') != std::string::npos ? DaysOfDateTime(text) : Number(text);
    };
    EXPECT_NEAR(read("parameter"), first[0], 1e-6);
    if (date) {
        EXPECT_NE(std::string(fit.attribute("parameter").value()).find('T'), std::string::npos)
            << "a date field's parameter is a date-time";
    }
    const Numbers second = Condition(test, 3);
    if (!second.empty()) {
        EXPECT_NEAR(read("secondaryParameter"), second[0], 1e-6);
    }
}

void CheckPairChart(pugi::xml_node test, const Chart& chart) {
    pugi::xml_node distribution = Struct(test, "ContinuousDistribution");
    const Table table = ReadTable(Simple(distribution, "Histogram"));
    const Numbers values = chart.Values("graphSource", "value");
    const Numbers counts = chart.Values("graphSource", "count");
    ExpectNear(values, table.Column(Layout::kBinValueColumn), "bins");
    ExpectNear(counts, table.Column(Layout::kBinCountColumn), "bin counts");
    double positive = 0;
    double negative = 0;
    for (size_t k = 0; k < values.size(); ++k) {
        (values[k] > 0 ? positive : negative) += values[k] == 0 ? 0 : counts[k];
    }
    // Each bar is coloured by its sign: the colours count the differences.
    EXPECT_EQ(positive, Attribute(distribution, "PositiveDifferences"));
    EXPECT_EQ(negative, Attribute(distribution, "NegativeDifferences"));
    EXPECT_EQ(positive + negative + Attribute(distribution, "Ties"), Statistic(test, "TotalN"));
}

void CheckCochran(const Example& example, pugi::xml_node test, const Chart& chart) {
    const Table table = ReadTable(Simple(test, "Content"));
    const Texts rows = chart.Strings("graphSource", "categories");
    std::set<std::string> shown(rows.begin(), rows.end());
    for (const std::string& name : table.fRowNames) {
        EXPECT_TRUE(shown.count(example.FieldAt(Number(name)).fLabel)) << name;
    }
    Numbers expected;
    for (const Numbers& row : table.fRows) {
        for (double value : row) {
            if (value > 0) {
                expected.push_back(value);
            }
        }
    }
    ExpectNear(chart.Values("graphSource", "value"), expected, "percentages");
}

void CheckFacets(const Example& example, pugi::xml_node test, const Chart& chart) {
    pugi::xml_node comparison = Struct(test, "CategoryFieldsComparison");
    const double rowField = Attribute(comparison, "RowNames");
    const double columnField = Attribute(comparison, "ColumnNames");
    const Table table = ReadTable(Simple(comparison, "Crosstab"));
    const Numbers rows = chart.Values("graphSource", "CellText");
    const Numbers columns = chart.Values("graphSource", "Column");
    const Numbers kinds = chart.Values("graphSource", "Category");
    const Numbers cells = chart.Values("graphSource", "CellValue");
    Numbers observed;
    Texts rowLabels;
    Texts columnLabels;
    for (size_t k = 0; k < cells.size(); ++k) {
        if (kinds[k] == 0) {
            observed.push_back(cells[k]);
            rowLabels.push_back(chart.Shown("Row", rows[k]));
            columnLabels.push_back(chart.Shown("Column", columns[k]));
        }
    }
    Numbers expected;
    Texts expectedRows;
    Texts expectedColumns;
    for (size_t r = 0; r < table.fRows.size(); ++r) {
        for (size_t c = 0; c < table.fRows[r].size(); ++c) {
            expected.push_back(table.fRows[r][c]);
            expectedRows.push_back(
                example.CategoryLabel(rowField, Layout::PositionOfName(table.fRowNames.at(r))));
            expectedColumns.push_back(example.CategoryLabel(
                columnField, Layout::PositionOfName(table.fColumnNames.at(c))));
        }
    }
    ExpectNear(observed, expected, "crosstab");
    EXPECT_EQ(chart.Shown("category", 0), "Observed") << "bars are named by their series";
    EXPECT_EQ(rowLabels, expectedRows) << "facets are the first field's categories";
    EXPECT_EQ(columnLabels, expectedColumns) << "bars are the second field's categories";
    EXPECT_EQ(Sum(observed), Statistic(test, "TotalN"));
}

void CheckRankHistograms(const Example& example, pugi::xml_node test, const Chart& chart) {
    const Numbers counts = chart.Values("graphSource", "COUNTS");
    const Numbers ranks = chart.Values("graphSource", "MEANS");
    const Texts labels = chart.Strings("graphSource", "LABELNAME");
    Numbers expectedCounts;
    Numbers expectedRanks;
    Texts expectedLabels;
    for (const pugi::xpath_node& info_ :
         test.select_nodes("StructuredTable[@name='VariableInformation']")) {
        const pugi::xml_node info = info_.node();
        const Table table = ReadTable(Simple(info, "RankCounts"));
        const std::string label = example.FieldAt(Attribute(info, "GroupIndex")).fLabel;
        for (const Numbers& row : table.fRows) {
            expectedRanks.push_back(row.at(Layout::kRankColumn));
            expectedCounts.push_back(row.at(Layout::kRankCountColumn));
            expectedLabels.push_back(label);
        }
        EXPECT_EQ(Sum(table.Column(Layout::kRankCountColumn)), Statistic(test, "TotalN"));
    }
    ExpectNear(counts, expectedCounts, "rank counts");
    ExpectNear(ranks, expectedRanks, "ranks");
    EXPECT_EQ(labels, expectedLabels) << "panels are titled by the fields' labels";
}

void CheckGroupHistograms(const Example& example, pugi::xml_node test, const Chart& chart) {
    const double groupField = Condition(test, 2).at(0);
    Numbers expectedCounts;
    Numbers expectedValues;
    Texts expectedLabels;
    for (pugi::xml_node group : test.children("StructuredTable")) {
        if (std::string_view(group.attribute("name").value()).rfind("Group", 0) != 0) {
            continue;
        }
        const Table table = ReadTable(Simple(group, "Histogram"));
        const std::string label = example.CategoryLabel(groupField, Attribute(group, "GroupIndex"));
        for (const Numbers& row : table.fRows) {
            expectedValues.push_back(row.at(Layout::kBinValueColumn));
            expectedCounts.push_back(row.at(Layout::kBinCountColumn));
            expectedLabels.push_back(label);
        }
    }
    const Numbers counts = chart.Values("graphSource", "COUNTS");
    ExpectNear(counts, expectedCounts, "group bin counts");
    ExpectNear(chart.Values("graphSource", "MEANS"), expectedValues, "group bins");
    EXPECT_EQ(chart.Strings("graphSource", "LABELNAME"), expectedLabels);
    EXPECT_EQ(Sum(counts), Statistic(test, "TotalN"));
    // The panels are titled by the groups' value labels.
    pugi::xml_node title = chart.fDocument.select_node("//panelTitle").node();
    EXPECT_EQ(std::string(title.attribute("variable").value()), "LABELNAME") << chart.fTitle;
}

void CheckBoxPlot(const Example& example, pugi::xml_node test, const Chart& chart) {
    pugi::xml_node info = Struct(test, "BoxPlotInfo");
    const double groupField = Attribute(info, "GroupFieldIndex");
    const Numbers values = chart.Values("boxplotSource", "Value");
    const Numbers categories = chart.Values("boxplotSource", "Category");
    for (pugi::xml_node group : info.children("StructuredTable")) {
        const double position = Attribute(group, "GroupIndex");
        const double category = example.CategoryValue(groupField, position);
        EXPECT_EQ(chart.Shown("Category", category), example.CategoryLabel(groupField, position));
        std::multiset<double> members;
        for (size_t k = 0; k < values.size(); ++k) {
            if (categories[k] == category) {
                members.insert(values[k]);
            }
        }
        const Table box = ReadTable(Simple(group, "Box"));
        ASSERT_EQ(box.fRows.size(), 1u);
        for (double number : box.fRows[0]) {
            EXPECT_TRUE(members.count(number)) << "box number " << number;
        }
        for (const Numbers& outlier : ReadTable(Simple(group, "Outliers")).fRows) {
            EXPECT_TRUE(members.count(outlier.at(0))) << "outlier " << outlier.at(0);
        }
    }
}

void CheckNetwork(const Example& example, pugi::xml_node test, const Chart& chart) {
    pugi::xml_node result = Struct(test, "PairwiseResult");
    const Table info = ReadTable(Simple(result, "PairwiseInfo"));
    const Table content = ReadTable(Simple(result, "Content"));
    ASSERT_EQ(info.fRows.size(), 2u);
    const Numbers nodes = chart.Values("nodeSource_1", "node");
    const Texts names = chart.Strings("nodeSource_1", "label");
    const bool independent =
        std::string_view(test.attribute("classification").value()) == "Independent_Samples";
    const double groupField = independent ? Condition(test, 2).at(0) : -1;
    for (size_t k = 0; k < info.fRows[Layout::kSampleIndexRow].size(); ++k) {
        const double sample = info.fRows[Layout::kSampleIndexRow][k];
        ASSERT_LT(static_cast<size_t>(sample), nodes.size());
        EXPECT_NEAR(nodes[static_cast<size_t>(sample)], info.fRows[Layout::kSampleValueRow][k],
                    1e-6);
        EXPECT_EQ(names[static_cast<size_t>(sample)],
                  independent ? example.CategoryLabel(groupField, sample)
                              : example.FieldAt(sample).fLabel);
    }
    const auto column = [&](std::string_view name) {
        return content.Column(Layout::IndexOfName(content.fColumnNames, name, 99));
    };
    ExpectNear(chart.Values("edgeSource_1", "from"), column(Layout::kFirstSampleColumnName),
               "edges from");
    ExpectNear(chart.Values("edgeSource_1", "to"), column(Layout::kSecondSampleColumnName),
               "edges to");
    ExpectNear(chart.Values("edgeSource_1", "weightInPopup"),
               column(Layout::kAdjustedSigColumnName), "adjusted significances");
    const bool median = std::string_view(test.attribute("name").value()) == "IMedian";
    EXPECT_EQ(chart.Has("sample median"), median) << "the note names what the nodes show";
    EXPECT_EQ(chart.Has("average rank"), !median && independent);
}

class ChartConsistency : public testing::TestWithParam<std::string> {};

TEST_P(ChartConsistency, EveryChartAgreesWithItsDocument) {
    const Example example(GetParam());
    const std::vector<pugi::xml_node> tests = example.ChartedTests();
    ASSERT_EQ(example.fTestCharts.size(), tests.size()) << "one chart per test";
    for (size_t i = 0; i < tests.size(); ++i) {
        const std::string name = tests[i].attribute("name").value();
        const Chart& chart = *example.fTestCharts[i];
        SCOPED_TRACE(name + ": " + chart.fTitle);
        if (name == "OChiSquare") {
            CheckChiSquare(example, tests[i], chart);
        } else if (name == "OBinomial") {
            CheckBinomial(example, tests[i], chart);
        } else if (name == "OKolmogorovSmirnov" || name == "OWilcoxonSignedRanks") {
            CheckHistogramOfField(example, tests[i], chart);
        } else if (name == "ORuns") {
            EXPECT_TRUE(chart.Has("<lineGuide x=\"" +
                                  std::to_string(static_cast<int>(Attribute(
                                      Struct(tests[i], "RunsParameters"), "ObservedRunNumber")))));
        } else if (name == "RSign" || name == "RWilcoxonSignedRanks") {
            CheckPairChart(tests[i], chart);
        } else if (name == "RCochransQ") {
            CheckCochran(example, tests[i], chart);
        } else if (name == "RMcNemar" || name == "RMarginalHomogeneity") {
            CheckFacets(example, tests[i], chart);
        } else if (name == "RFriedmansTwoWayByRanks" || name == "RKendallsCoefficient") {
            CheckRankHistograms(example, tests[i], chart);
        } else if (name == "IMannWhitneyU" || name == "IWaldWolfowitzRuns" ||
                   name == "IKolmogorovSmirnov") {
            CheckGroupHistograms(example, tests[i], chart);
        } else {
            CheckBoxPlot(example, tests[i], chart);
        }
    }
    const std::vector<pugi::xml_node> pairwise = example.PairwiseTests();
    ASSERT_EQ(example.fNetworks.size(), pairwise.size()) << "one network per pairwise table";
    for (size_t i = 0; i < pairwise.size(); ++i) {
        SCOPED_TRACE(std::string(pairwise[i].attribute("name").value()) + " network");
        CheckNetwork(example, pairwise[i], *example.fNetworks[i]);
    }
    const std::vector<pugi::xml_node> infos = example.FieldInfos();
    ASSERT_EQ(example.fFieldCharts.size(), infos.size()) << "one chart per analysed field";
    for (size_t i = 0; i < infos.size(); ++i) {
        SCOPED_TRACE(std::string("field ") + infos[i].attribute("varIndex").value());
        CheckFieldChart(example, infos[i], *example.fFieldCharts[i]);
    }
}

std::string Name(const testing::TestParamInfo<std::string>& info) {
    return std::filesystem::path(info.param).stem().string();
}

INSTANTIATE_TEST_SUITE_P(Examples, ChartConsistency,
                         testing::ValuesIn(ExampleDocuments(NPTESTS_EXAMPLES_DIR)), Name);

} // namespace
