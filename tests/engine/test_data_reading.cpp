// Reading data files: RFC 4180 quoting, separators, byte-order mark and line
// ends; types with and without a dictionary; dates and user-missing values;
// and hostile input, which must give an error that names the line and the
// column, never a crash.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "engine/data/CsvReader.h"
#include "engine/data/Dataset.h"
#include "host/vexa/DictionaryJson.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
Dataset Read(const std::string& text, const std::string& name = "data.csv",
             const VEXA_DataSource* dictionary = nullptr) {
    Dataset data;
    std::string error;
    EXPECT_TRUE(ReadDataText(name, text, dictionary, data, error)) << error;
    return data;
}

std::string Error(const std::string& text, const std::string& name = "data.csv",
                  const VEXA_DataSource* dictionary = nullptr) {
    Dataset data;
    std::string error;
    EXPECT_FALSE(ReadDataText(name, text, dictionary, data, error)) << text;
    return error;
}

std::unique_ptr<VEXA_DataSource> Dictionary(const std::string& json) {
    std::string error;
    auto source = DataSourceFromDictionary(json, error);
    EXPECT_TRUE(source) << error;
    return source;
}
} // namespace

TEST(DataReading, QuotedFieldsHoldSeparatorsQuotesAndLineBreaks) {
    const Dataset data = Read("\xEF\xBB\xBF"
                              "id,name,score\r\n"
                              "1,\"Smith, J.\",2.5\r\n"
                              "2,\"say \"\"hi\"\"\nnext line\",+3e1\r\n"
                              "\r\n"
                              "3,,  -0.5 \r\n");
    ASSERT_EQ(data.CaseCount(), 3u);
    ASSERT_EQ(data.VariableCount(), 3);
    EXPECT_EQ(data.GetVariable(0).fName, "id"); // the byte-order mark is not part of the name
    const Column& name = data.GetColumn(1);
    EXPECT_TRUE(name.fVariable.IsString());
    EXPECT_EQ(name.fVariable.fLevel, MeasureLevel::kNominal);
    EXPECT_EQ(name.fTexts[0], "Smith, J.");
    EXPECT_EQ(name.fTexts[1], "say \"hi\"\nnext line");
    EXPECT_TRUE(data.IsSysMissing(1, 2));
    const Column& score = data.GetColumn(2);
    EXPECT_FALSE(score.fVariable.IsString());
    EXPECT_EQ(score.fVariable.fLevel, MeasureLevel::kContinuous);
    EXPECT_EQ(score.fVariable.fLabel, "score");
    EXPECT_EQ(score.fNumbers[0], 2.5);
    EXPECT_EQ(score.fNumbers[1], 30);
    EXPECT_EQ(score.fNumbers[2], -0.5);
    EXPECT_EQ(data.GetVariable(0).fType, StorageType::kInteger);
}

TEST(DataReading, TabSeparatedFilesByTheirName) {
    const Dataset data = Read("a\tb c\n1\tx, y\n", "data.tsv");
    ASSERT_EQ(data.VariableCount(), 2);
    EXPECT_EQ(data.GetVariable(1).fName, "b c");
    EXPECT_EQ(data.GetColumn(1).fTexts[0], "x, y");
}

TEST(DataReading, EmptyFileHeaderOnlyAndHeaderFaults) {
    EXPECT_EQ(Error(""), "data.csv: the file is empty; expected a header row of variable names");
    EXPECT_EQ(Error("\n\n"),
              "data.csv: the file is empty; expected a header row of variable names");
    const Dataset empty = Read("a,b\n");
    EXPECT_EQ(empty.CaseCount(), 0u);
    EXPECT_EQ(empty.VariableCount(), 2);
    EXPECT_EQ(Error("a,,c\n1,2,3\n"), "data.csv: line 1: column 2 of the header has no name");
    EXPECT_EQ(Error("a,b,a\n"),
              "data.csv: line 1: the column name a is given twice (columns 1 and 3)");
}

TEST(DataReading, FaultsNameTheLineAndTheColumn) {
    EXPECT_EQ(Error("a,b\n1,2\n3\n"), "data.csv: line 3: the row has 1 cells, the header 2");
    EXPECT_EQ(Error("a,b\n1,2\n\"x\ny\",2,3\n"),
              "data.csv: line 3: the row has 3 cells, the header 2");
    EXPECT_EQ(Error("a,b\n1,\"open\n"),
              "data.csv: line 2: a quoted field is not closed before the end of the file");
    EXPECT_EQ(Error("a,b\n1,x\"y\n"),
              "data.csv: line 2: malformed quoting (a quote inside an unquoted field, or text "
              "after a closing quote)");
    EXPECT_EQ(Error("a,b\n1,ok\n2,caf\xE9\n"),
              "data.csv: line 3, column 2 (b): the byte 0xE9 is not UTF-8 text");
    EXPECT_EQ(Error("a,b\n1,2\n1e400,3\n"),
              "data.csv: line 3, column 1 (a): the number 1e400 is out of range");
}

TEST(DataReading, NotANumberMakesAStringWithoutADictionaryAndAnErrorWithOne) {
    // Without a dictionary a column with any text is a string: "nan" is text.
    const Dataset data = Read("a\n1\nnan\n");
    EXPECT_TRUE(data.GetVariable(0).IsString());
    const auto dictionary = Dictionary(R"({"variables": [{"name": "a"}]})");
    EXPECT_EQ(Error("a\n1\nnan\n", "data.csv", dictionary.get()),
              "data.csv: line 3, column 1 (a): \"nan\" is not a number, and a is numeric");
    EXPECT_EQ(Error("a\n1\ninf\n", "data.csv", dictionary.get()),
              "data.csv: line 3, column 1 (a): \"inf\" is not a number, and a is numeric");
    EXPECT_EQ(Error("b\n1\n", "data.csv", dictionary.get()),
              "data.csv: the dictionary's variable a is not a column of the file");
}

TEST(DataReading, DictionaryGivesTypesLabelsDatesAndMissingValues) {
    const auto dictionary = Dictionary(R"({"variables": [
        {"name": "when", "format": "DATE11", "label": "Visit"},
        {"name": "us", "format": "ADATE10"},
        {"name": "code", "type": "string", "measure": "nominal", "missing": ["?"]},
        {"name": "score", "measure": "ordinal", "missing": [9],
         "valueLabels": [{"value": 1, "label": "Low"}]}]})");
    const Dataset data = Read("when,us,code,score,extra\n"
                              "01-JAN-1970,01/02/1970,a,1,x\n"
                              "2026-04-16,12/31/1969,?,9,y\n"
                              ",,,,\n",
                              "data.csv", dictionary.get());
    ASSERT_EQ(data.CaseCount(), 3u);
    EXPECT_EQ(data.GetVariable(0).fLabel, "Visit");
    EXPECT_EQ(data.GetVariable(0).fType, StorageType::kDate);
    EXPECT_EQ(data.GetColumn(0).fNumbers[0], 0);
    EXPECT_EQ(data.GetColumn(0).fNumbers[1], 20559);
    EXPECT_EQ(data.GetColumn(1).fNumbers[0], 1);
    EXPECT_EQ(data.GetColumn(1).fNumbers[1], -1);
    EXPECT_TRUE(data.IsSysMissing(0, 2));
    EXPECT_TRUE(data.IsUserMissing(2, 1));
    EXPECT_FALSE(data.IsUserMissing(2, 0));
    EXPECT_TRUE(data.IsUserMissing(3, 1));
    EXPECT_EQ(data.GetVariable(3).fLevel, MeasureLevel::kOrdinal);
    ASSERT_EQ(data.GetVariable(3).fValueLabels.size(), 1u);
    EXPECT_EQ(data.GetVariable(3).fValueLabels[0].fLabel, "Low");
    EXPECT_TRUE(data.GetVariable(4).IsString()); // a column the dictionary does not name
    EXPECT_EQ(Error("when,us,code,score\n31-FEB-2020,,,\n", "data.csv", dictionary.get()),
              "data.csv: line 2, column 1 (when): \"31-FEB-2020\" is not a date in the format "
              "of when");
}

TEST(DataReading, DatesInEveryFormat) {
    double days = 0;
    EXPECT_TRUE(ParseDate("16-apr-2026", VEXA_Format::kDate, days));
    EXPECT_EQ(days, 20559);
    EXPECT_TRUE(ParseDate("16.04.2026", VEXA_Format::kEuropeanDate, days));
    EXPECT_EQ(days, 20559);
    EXPECT_TRUE(ParseDate("2026/04/16", VEXA_Format::kSortableDate, days));
    EXPECT_EQ(days, 20559);
    EXPECT_TRUE(ParseDate("2000-02-29", VEXA_Format::kDate, days));
    EXPECT_EQ(days, 11016);
    EXPECT_FALSE(ParseDate("1900-02-29", VEXA_Format::kDate, days));
    EXPECT_FALSE(ParseDate("16-APRIL-2026", VEXA_Format::kDate, days));
    EXPECT_FALSE(ParseDate("04/16/2026", VEXA_Format::kEuropeanDate, days));
    EXPECT_FALSE(ParseDate("", VEXA_Format::kDate, days));
}

TEST(DataReading, AHugeLineIsRefused) {
    std::string text = "a\n\"";
    text.append(std::size_t{65} << 20, 'x');
    EXPECT_EQ(Error(text), "data.csv: line 2: the line is longer than 64 MiB (an unclosed quote?)");
}

TEST(DataReading, MissingFile) {
    Dataset data;
    std::string error;
    EXPECT_FALSE(ReadDataFile("/nonexistent/data.csv", nullptr, data, error));
    EXPECT_EQ(error, "/nonexistent/data.csv: cannot open the data file");
}
