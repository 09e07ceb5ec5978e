// The text and JSON renderers over small output trees built through the
// output handles.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/bp/BpOutput.h"
#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFSysmis.h"
#include "host/vexa/VEXA_DataSource.h"
#include "render/JsonRenderer.h"
#include "render/TextRenderer.h"

namespace {
BpString S(const char* text) {
    return BpString(text, false);
}

BpPivotTable MakeTable(BpHeading& heading, const char* title) {
    return heading.PivotTable(S(title), S(title), false);
}

// Estimates of two items with a confidence-interval column group; the notes
// are attached out of display order, and one text twice.
void BuildEstimates(BpProcedure& procedure) {
    BpHeading heading = procedure.Heading(S("Estimates"));
    BpPivotTable table = MakeTable(heading, "Interval Summary");
    table.Caption(S("Two items."));
    BpDimension items = table.Dimension(S("Item"), BpGroup::kNone);
    items.Position(BpDimension::kRows, 1, true, false);
    BpDimension statistics = table.Dimension(S("Statistics"), BpGroup::kNone);
    statistics.Position(BpDimension::kColumns, 1, true, false);

    items.Category(BpNumber(1, BpProcedure::Count()));
    BpCategory estimate = statistics.Category(S("Estimate"));
    estimate.Cell(BpNumber(1.5, BpProcedure::Coefficient()));
    estimate.CellNote(S("Computed from ranks.").Replicate());
    BpGroup interval = statistics.Group(S("95% Confidence Interval"), true, BpGroup::kNone);
    interval.Category(S("Lower")).Cell(BpNumber(1.25, BpProcedure::Coefficient()));
    BpCategory upper = interval.Category(S("Upper"));
    upper.Cell(BpNumber(12.75, BpProcedure::Coefficient()));
    interval.Note(S("Exact interval.").Replicate());
    upper.CellNote(S("Computed from ranks.").Replicate());

    items.Category(BpNumber(2, BpProcedure::Count()));
    estimate = statistics.Category(S("Estimate"));
    estimate.Cell(BpNumber(kCFSysmis, BpProcedure::Coefficient()));
    estimate.CellNote(S("Too few cases.").Replicate());
    interval.Category(S("Lower")).Cell(S("n/a"));
}
} // namespace

TEST(TextRenderer, NestsColumnGroupsAndLettersFootnotesInOrderOfAttachment) {
    BpProcedure procedure("Nonparametric Tests", nullptr, nullptr);
    BuildEstimates(procedure);
    EXPECT_EQ(TextRenderer().Render(procedure.Root(), {}),
              "Nonparametric Tests\n"
              "===================\n"
              "\n"
              "1 Estimates\n"
              "\n"
              "Interval Summary\n"
              "Two items.\n"
              "------------------------------------------\n"
              "                95% Confidence Interval[b]\n"
              "Item  Estimate  Lower       Upper\n"
              "------------------------------------------\n"
              "1     1.500[a]       1.250       12.750[a]\n"
              "2         .[c]  n/a\n"
              "------------------------------------------\n"
              "a. Computed from ranks.\n"
              "b. Exact interval.\n"
              "c. Too few cases.\n");
}

TEST(JsonRenderer, WritesTheContract) {
    BpProcedure procedure("Nonparametric Tests", nullptr, nullptr);
    BuildEstimates(procedure);
    std::vector<CFMessage> messages = {{CFMessage::kError, "Not parse element: X", "a.xml"},
                                       {CFMessage::kWarning, "careful", ""}};
    const std::string json = JsonRenderer().Render(procedure.Root(), messages);
    const char* expected = R"({
  "procedure": "Nonparametric Tests",
  "items": [
    {
      "kind": "heading",
      "text": "Estimates",
      "items": [
        {
          "kind": "table",
          "title": "Interval Summary",
          "subtype": "Interval Summary",
          "caption": "Two items.",
          "columns": [
            [
              {
                "text": "Estimate",
                "footnotes": []
              }
            ],
            [
              {
                "text": "95% Confidence Interval",
                "footnotes": [
                  "b"
                ]
              },
              {
                "text": "Lower",
                "footnotes": []
              }
            ],
            [
              {
                "text": "95% Confidence Interval",
                "footnotes": [
                  "b"
                ]
              },
              {
                "text": "Upper",
                "footnotes": []
              }
            ]
          ],
          "rows": [
            {
              "labels": [
                {
                  "text": "1",
                  "footnotes": []
                }
              ],
              "cells": [
                {
                  "text": "1.500",
                  "value": 1.5,
                  "footnotes": [
                    "a"
                  ]
                },
                {
                  "text": "1.250",
                  "value": 1.25,
                  "footnotes": []
                },
                {
                  "text": "12.750",
                  "value": 12.75,
                  "footnotes": [
                    "a"
                  ]
                }
              ]
            },
            {
              "labels": [
                {
                  "text": "2",
                  "footnotes": []
                }
              ],
              "cells": [
                {
                  "text": ".",
                  "value": null,
                  "footnotes": [
                    "c"
                  ]
                },
                {
                  "text": "n/a",
                  "value": null,
                  "footnotes": []
                },
                null
              ]
            }
          ],
          "footnotes": [
            {
              "mark": "a",
              "text": "Computed from ranks."
            },
            {
              "mark": "b",
              "text": "Exact interval."
            },
            {
              "mark": "c",
              "text": "Too few cases."
            }
          ]
        }
      ]
    }
  ],
  "messages": [
    {
      "kind": "error",
      "text": "Not parse element: X",
      "document": "a.xml"
    },
    {
      "kind": "warning",
      "text": "careful",
      "document": null
    }
  ]
}
)";
    EXPECT_EQ(json, expected);
}

TEST(TextRenderer, ShowsSplitDimensionsAndRowGroupsAsLabelColumns) {
    VEXA_DataSource source;
    VEXA_Variable& gender = source.AddVariable("gender", 0);
    gender.SetLabel("Gender");
    gender.ValueLabels().Add(1.0, "Female");
    BpProcedure procedure("Nonparametric Tests", nullptr, &source);
    BpPivotTable table = MakeTable(procedure, "Runs Test Summary");
    BpDimension split = table.Dimension(BpVariable(&gender, 2), BpGroup::kAscending);
    split.Position(BpDimension::kRows, 1, false, false);
    split.Category(BpDataValue(&gender, 1.0, 2));
    BpDimension statistics = table.Dimension(S("Statistics"), BpGroup::kNone);
    statistics.Position(BpDimension::kRows, 1, true, false);
    BpDimension values = table.Dimension(S("Value"), BpGroup::kNone);
    values.Position(BpDimension::kColumns, 1, false, false);
    BpCategory value = values.Category(S("Value"));

    statistics.Category(S("Total N"));
    value.Cell(BpNumber(40, BpProcedure::Count()));
    BpGroup minimum = statistics.Group(S("Minimum Possible"), true, BpGroup::kNone);
    BpCategory statistic = minimum.Category(S("Test Statistic"));
    value.Cell(BpNumber(9, BpProcedure::Count()));
    statistic.Note(S("The number of runs.").Replicate());
    minimum.Category(S("Sig."));
    value.Cell(BpNumber(0.0004, BpProcedure::Significance()));
    BpGroup maximum = statistics.Group(S("Maximum Possible"), true, BpGroup::kNone);
    statistic = maximum.Category(S("Test Statistic"));
    value.Cell(BpNumber(15, BpProcedure::Count()));
    statistic.Note(S("The number of runs.").Replicate());

    EXPECT_EQ(TextRenderer().Render(procedure.Root(), {}),
              "Nonparametric Tests\n"
              "===================\n"
              "\n"
              "Runs Test Summary\n"
              "---------------------------------------------------\n"
              "        Statistics                           Value\n"
              "---------------------------------------------------\n"
              "Female  Total N                                  40\n"
              "        Minimum Possible  Test Statistic[a]       9\n"
              "                          Sig.               <0.001\n"
              "        Maximum Possible  Test Statistic[a]      15\n"
              "---------------------------------------------------\n"
              "a. The number of runs.\n");
}

TEST(Renderers, WriteAnEmptyTableFrameHeadingOutlineAndCharts) {
    BpProcedure procedure("Nonparametric Tests", nullptr, nullptr);
    BpHeading first = procedure.Heading(S("Gender = Female"));
    BpHeading test = first.Heading(S("One-Sample Runs Test"));
    BpPivotTable table = MakeTable(test, "Pairwise Comparisons");
    table.Caption(S("Each row tests one pair.\nThe significance level is 0.050."));
    table.Dimension(S("Sample 1-Sample 2"), BpGroup::kNone)
        .Position(BpDimension::kRows, 1, false, false);
    auto chart = std::make_unique<BpChartNode>();
    chart->fTemplate = "NPAROneSampleRunsTest.viztemplate";
    chart->fTitle = "One-Sample Runs Test";
    chart->fDescription = "One-Sample Runs Test; Gender = Female";
    chart->fSources.push_back({"graphSource", {{"value", {1.5, std::string("x"), {}}}}});
    chart->fDocument = "<visualization/>";
    test.AddChart(std::move(chart));
    procedure.Heading(S("Gender = Male"));

    EXPECT_EQ(TextRenderer().Render(procedure.Root(), {}),
              "Nonparametric Tests\n"
              "===================\n"
              "\n"
              "1 Gender = Female\n"
              "\n"
              "  1.1 One-Sample Runs Test\n"
              "\n"
              "Pairwise Comparisons\n"
              "Each row tests one pair.\n"
              "The significance level is 0.050.\n"
              "(no rows)\n"
              "\n"
              "[chart] One-Sample Runs Test \u2014 One-Sample Runs Test; Gender = Female\n"
              "\n"
              "2 Gender = Male\n");

    const nlohmann::json json = nlohmann::json::parse(JsonRenderer().Render(procedure.Root(), {}));
    const nlohmann::json& inner = json["items"][0]["items"][0]["items"];
    EXPECT_EQ(inner[0].dump(), R"({"caption":"Each row tests one pair.\nThe significance level )"
                               R"(is 0.050.","columns":[],"footnotes":[],"kind":"table",)"
                               R"("rows":[],"subtype":"Pairwise Comparisons",)"
                               R"("title":"Pairwise Comparisons"})");
    EXPECT_EQ(inner[1].dump(),
              R"({"data":{"graphSource":{"value":[1.5,"x",null]}},"description":"One-Sample )"
              R"(Runs Test; Gender = Female","document":"<visualization/>","kind":"chart",)"
              R"("subtitle":null,"template":"NPAROneSampleRunsTest.viztemplate",)"
              R"("title":"One-Sample Runs Test"})");
    EXPECT_EQ(json["items"][1].dump(), R"({"items":[],"kind":"heading","text":"Gender = Male"})");
    EXPECT_EQ(json["messages"].dump(), "[]");
}
