// The output tree: cell texts, composites, formats, categories, cells,
// footnotes and the layout renderers read.
#include <gtest/gtest.h>

#include "host/bp/BpOutput.h"
#include "host/cf/CFSysmis.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
std::string Text(const BpProcedure& procedure, const BpCellText& text) {
    return text.Resolve(procedure).fText;
}
} // namespace

TEST(BpFormat, FormatsNumbers) {
    EXPECT_EQ(BpProcedure::Count().Format(10000), "10000");
    EXPECT_EQ(BpProcedure::Significance().Format(0.0423), "0.042");
    EXPECT_EQ(BpProcedure::Significance().Format(0.0001), "<0.001");
    EXPECT_EQ(BpProcedure::Coefficient().Format(-0.0001), "0.000");
    EXPECT_EQ(BpProcedure::Percent().Format(95), "95%");
    EXPECT_EQ(BpProcedure::Percent().Format(97.5), "97.5%");
    EXPECT_EQ(BpProcedure::SigDigit(95.5).Format(95.5), "95.5");
    EXPECT_EQ(BpProcedure::CountOrCoefficent(3).Format(3), "3");
    EXPECT_EQ(BpProcedure::CountOrCoefficent(0.25).Format(0.25), "0.250");
    EXPECT_EQ(BpProcedure::Significance().Format(kCFSysmis), ".");
}

TEST(BpCellText, ResolvesVariablesAndDataValues) {
    VEXA_DataSource source;
    VEXA_Variable& group = source.AddVariable("group", 0);
    group.SetLabel("Treatment group");
    group.ValueLabels().Add(1.0, "Placebo");
    group.SetFormat({VEXA_Format::kNumber, 8, 0});
    VEXA_Variable& visit = source.AddVariable("visit", 0);
    visit.SetFormat({VEXA_Format::kDate, 11, 0});
    VEXA_Variable& city = source.AddVariable("city", 8);
    city.ValueLabels().Add(std::string("NY"), "New York");
    BpProcedure procedure("P", nullptr, &source);

    EXPECT_EQ(Text(procedure, BpVariable(&group, BpVariable::kDefault)), "Treatment group");
    EXPECT_EQ(Text(procedure, BpVariable(&group, BpVariable::kName)), "group");
    EXPECT_EQ(Text(procedure, BpDataValue(&group, 1.0, BpDataValue::kDefault)), "Placebo");
    EXPECT_EQ(Text(procedure, BpDataValue(&group, 1.0, BpDataValue::kValue)), "1");
    EXPECT_EQ(Text(procedure, BpDataValue(&group, 2.0, BpDataValue::kDefault)), "2");
    EXPECT_EQ(Text(procedure, BpDataValue(&group, kCFSysmis, 2)), ".");
    // 2024-02-29 is day 19782 after 1970-01-01.
    EXPECT_EQ(Text(procedure, BpDataValue(&visit, 19782 * 86400.0, 0)), "29-FEB-2024");
    EXPECT_EQ(Text(procedure, BpDataValue(&city, std::string("NY   "), 2)), "New York");
    EXPECT_EQ(Text(procedure, BpDataValue(&city, std::string("LA   "), 2)), "LA");
    EXPECT_EQ(procedure.StdDev(1).Format(129600), "129600");
    EXPECT_EQ(procedure.StdDev(0).Format(1.26), "1.3");
}

TEST(BpComposite, FillsPlacesAndLists) {
    VEXA_DataSource source;
    VEXA_Variable& a = source.AddVariable("a", 0);
    VEXA_Variable& b = source.AddVariable("b", 0);
    b.ValueLabels().Add(2.0, "two");
    BpProcedure procedure("P", nullptr, &source);

    BpComposite places("^2 across ^1 (^^1, 100%%)", false);
    places.Add(BpString("x", false)).Add(BpString("y", false)).Finish();
    EXPECT_EQ(Text(procedure, places), "y across x (^1, 100%)");

    BpComposite list("[%1:, ^1]1", false);
    list.Sublist();
    list.Add(BpVariable(&a, 2)).Add(BpVariable(&b, 2)).Add(BpString("c", false));
    list.EndSublist().Finish();
    EXPECT_EQ(Text(procedure, list), "a, b, c");

    BpComposite pairs("[%1 = %2:, ^1 = ^2:]1", false);
    pairs.Sublist();
    pairs.Add(BpVariable(&a, 2)).Add(BpDataValue(&a, 1.0, 2));
    pairs.Add(BpVariable(&b, 2)).Add(BpDataValue(&b, 2.0, 2));
    pairs.EndSublist().Finish();
    EXPECT_EQ(Text(procedure, pairs), "a = 1.00, b = two");

    BpComposite missing("^1 and ^3 [x]", false);
    missing.Add(BpString("one", false)).Finish();
    EXPECT_EQ(Text(procedure, missing), "one and  [x]");

    // Copies are deep.
    BpComposite copy = list;
    EXPECT_EQ(Text(procedure, copy), "a, b, c");
}

TEST(BpPivotTable, MergesCategoriesAndLettersFootnotes) {
    BpProcedure procedure("Nonparametric Tests", nullptr, nullptr);
    BpHeading heading = procedure.Heading(BpString("Test", false));
    BpPivotTable table =
        heading.PivotTable(BpString("Summary", false), BpString("Summary", false), false);
    BpDimension rows = table.Dimension(BpString("Item", false), BpGroup::kNone);
    rows.Position(BpDimension::kRows, 1, true, false);
    BpDimension columns = table.Dimension(BpString("Statistics", false), BpGroup::kNone);
    columns.Position(BpDimension::kColumns, 1, true, false);

    for (int i = 1; i <= 2; ++i) {
        rows.Category(BpNumber(i, BpProcedure::Count()));
        BpCategory sig = columns.Category(BpString("Sig.", false));
        sig.Cell(BpNumber(i == 1 ? 0.5 : kCFSysmis, BpProcedure::Significance()));
        sig.Note(BpString("Level note", false).Replicate());
        sig.CellNote(BpString(i == 1 ? "Exact" : "Cannot compute", false).Replicate());
        BpGroup ci = columns.Group(BpString("95% CI", false), true, BpGroup::kNone);
        ci.Category(BpString("Lower", false)).Cell(BpNumber(i, BpProcedure::Coefficient()));
        ci.Category(BpString("Upper", false)).Cell(BpNumber(i + 1, BpProcedure::Coefficient()));
    }
    // The same text on the same dimension is one category.
    columns.Category(BpString("Sig.", false)).CellNote(BpString("Exact", false).Replicate());

    const BpTableNode& node = *table.Node();
    EXPECT_EQ(node.fFootnotes, (std::vector<std::string>{"Level note", "Exact", "Cannot compute"}));
    EXPECT_EQ(BpTableNode::Mark(0), "a");
    EXPECT_EQ(BpTableNode::Mark(26), "aa");

    const BpTableLayout layout = BpTableLayout::Of(node);
    ASSERT_EQ(layout.fRows.size(), 2u);
    ASSERT_EQ(layout.fColumns.size(), 3u);
    const BpTableDimension& cols = node.fDimensions[1];
    EXPECT_EQ(cols.fNodes[static_cast<size_t>(layout.fColumns[0][0])].fLabel, "Sig.");
    auto path = cols.Path(layout.fColumns[2][0]);
    ASSERT_EQ(path.size(), 2u);
    EXPECT_EQ(path[0]->fLabel, "95% CI");
    EXPECT_EQ(path[1]->fLabel, "Upper");

    const BpTableCell* first = layout.Cell(node, 0, 0);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->fText.fText, "0.500");
    EXPECT_EQ(first->fNotes, (std::vector<int>{1}));
    const BpTableCell* second = layout.Cell(node, 1, 0);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->fText.fText, ".");
    EXPECT_FALSE(second->fText.fValue.has_value());
    EXPECT_EQ(second->fNotes, (std::vector<int>{2, 1}));
}

TEST(BpHeading, RemovedHeadingLeavesTheOutput) {
    BpProcedure procedure("P", nullptr, nullptr);
    BpHeading kept = procedure.Heading(BpString("kept", false));
    BpHeading dropped = kept.Heading(BpString("dropped", false));
    EXPECT_EQ(procedure.CurrentHeading().Node(), dropped.Node());
    dropped.Remove();
    ASSERT_EQ(kept.Node()->fChildren.size(), 0u);
    EXPECT_EQ(procedure.CurrentHeading().Node(), kept.Node());
    EXPECT_EQ(BpProcedure::Active(), &procedure);
}
