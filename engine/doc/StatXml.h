// Writing result documents: the outer document (counts, data dictionary,
// test settings, field information) and the element shapes that every test
// record is made of (attributes, simple and structured tables), with the
// tables that many tests write the same way (condition, messages,
// statistics, histogram, box plots, pairwise and stepwise comparisons).
//
// Numbers are written as the shortest text that reads back to the same
// double; the missing value (and NaN or an infinity, which a document cannot
// hold) is written as "__MISSING__". Texts are escaped by pugixml.
#pragma once

#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <pugixml.hpp>

#include "engine/data/Variable.h"
#include "engine/doc/Tests.h"
#include "engine/stats/MultipleComparisons.h"
#include "engine/stats/Numerics.h"

// True for the system-missing value and for NaN.
bool IsSysMis(double value);

// A number as a document writes it: shortest round-trip text, "__MISSING__"
// for the missing value, NaN and the infinities.
std::string FormatNumber(double value);
// Numbers separated by blanks.
std::string FormatNumbers(std::span<const double> values);

// One parameter of a condition or a message ("%1", "%2", ...): one number or
// a list of them (a list of field indices, category positions).
class Param final {
public:
    Param(double value) : fValues{value} {}
    Param(int value) : fValues{static_cast<double>(value)} {}
    Param(std::size_t value) : fValues{static_cast<double>(value)} {}
    Param(std::vector<double> values) : fValues(std::move(values)) {}
    Param(std::span<const int> values) : fValues(values.begin(), values.end()) {}

    std::vector<double> fValues;
};

// A named value of a statistics group.
using NamedValue = std::pair<std::string_view, double>;

class SimpleTable final {
public:
    explicit SimpleTable(pugi::xml_node node) : fNode(node) {}

    // Appends one row of numbers.
    SimpleTable& Row(std::span<const double> cells);
    SimpleTable& Row(std::initializer_list<double> cells) {
        return Row(std::span<const double>(cells.begin(), cells.size()));
    }
    pugi::xml_node Node() const { return fNode; }

private:
    pugi::xml_node fNode;
};

class StructuredTable {
public:
    explicit StructuredTable(pugi::xml_node node) : fNode(node) {}

    // An "Attribute" element with a number, a list of numbers or a text.
    StructuredTable& Attribute(std::string_view name, double value);
    StructuredTable& Attribute(std::string_view name, std::span<const double> values);
    StructuredTable& Attribute(std::string_view name, std::string_view text);
    StructuredTable& Attribute(std::string_view name, const char* text) {
        return Attribute(name, std::string_view(text));
    }
    // A nested structured table.
    StructuredTable Table(std::string_view name);
    // A nested simple table with its row and column names (words without blanks).
    SimpleTable Simple(std::string_view name, std::span<const std::string> rowNames,
                       std::span<const std::string> columnNames);
    SimpleTable Simple(std::string_view name, std::initializer_list<std::string> rowNames,
                       std::initializer_list<std::string> columnNames) {
        return Simple(name, std::span<const std::string>(rowNames.begin(), rowNames.size()),
                      std::span<const std::string>(columnNames.begin(), columnNames.size()));
    }
    pugi::xml_node Node() const { return fNode; }

protected:
    pugi::xml_node fNode;
};

enum class MessageType { kError, kWarning, kHelp };

// One message of a test: a code of the string table, its kind, its
// parameters and, for a message about one pair of samples, the pair ("1-2").
struct Message {
    int fCode = 0;
    MessageType fType = MessageType::kError;
    std::vector<Param> fParams;
    std::string fGroup;
};

// The statistics of a test: top-level named values and named groups of
// values.
class StatisticsResult final : public StructuredTable {
public:
    explicit StatisticsResult(pugi::xml_node node) : StructuredTable(node) {}

    StatisticsResult& Value(std::string_view name, double value) {
        Attribute(name, value);
        return *this;
    }
    StatisticsResult& Group(std::string_view name, std::initializer_list<NamedValue> values);
};

// The outcome written in an Algorithm's "decision".
enum class Decision {
    kReject,
    kRetain,
    kUnableToCompute, // the test could not be computed; its messages say why
    kNone,            // an estimate, which has no decision
};

// The decision for a significance at level `alpha`; kUnableToCompute for a
// missing significance.
Decision Decide(double significance, double alpha);

// One Algorithm element: a test and its tables.
class Algorithm final : public StructuredTable {
public:
    explicit Algorithm(pugi::xml_node node, std::string_view key = {})
        : StructuredTable(node), fKey(key) {}

    // The "Condition" table: its key, its parameters %1, %2, ... and, when
    // given, whether the parameters came from the sample and the field
    // indices of ordinal fields treated as continuous.
    StructuredTable Condition(std::string_view key, std::initializer_list<Param> params,
                              std::optional<bool> useSample = std::nullopt,
                              std::span<const int> ordinalAsContinuous = {});
    StructuredTable Condition(std::string_view key, std::span<const Param> params,
                              std::optional<bool> useSample = std::nullopt,
                              std::span<const int> ordinalAsContinuous = {});
    // The same with the test's own key (Tests.h).
    StructuredTable Condition(std::initializer_list<Param> params,
                              std::span<const int> ordinalAsContinuous = {}) {
        return Condition(fKey, params, std::nullopt, ordinalAsContinuous);
    }
    // The "WarningMessages" table with one "Message" table each; nothing for none.
    void Messages(std::span<const Message> messages);
    // The "StatisticsResult" table.
    StatisticsResult Statistics();
    // The values found outside the categories of the command ("ValsNotInTheCategoreis").
    void ValuesNotInCategories(std::span<const std::string> values);
    // Changes the decision (written when the test turned out not computable).
    void SetDecision(Decision decision);
    // Marks the test as not computable, with the message that says why
    // (the code of Messages.h and its parameters).
    void Unable(int code, std::vector<Param> params = {});

private:
    std::string_view fKey;
};

// A "Histogram" simple table (columns Value and Count: each bin's midpoint
// and count) in `parent`.
void WriteHistogram(StructuredTable parent, const ValueHistogram& histogram,
                    std::string_view name = "Histogram");

// The five numbers of a box and the outlying values with their case numbers.
struct BoxNumbers {
    double fLowerWhisker = kSysMis;
    double fLowerQuartile = kSysMis;
    double fMedian = kSysMis;
    double fUpperQuartile = kSysMis;
    double fUpperWhisker = kSysMis;
    std::vector<std::pair<double, double>> fOutliers; // value, case number (1-based)
};

// The "Box" and "Outliers" simple tables in `parent`.
void WriteBoxTables(StructuredTable parent, const BoxNumbers& box);

// One group of a box-plot table.
struct BoxPlotGroup {
    int fGroupIndex = 0; // category position in the grouping field
    int fN = 0;
    std::optional<double> fMeanRank;
    std::optional<double> fAboveMedian;     // "GTMedian": cases above the grand median
    std::optional<double> fAtOrBelowMedian; // "STMedian": cases at or below it
    BoxNumbers fBox;
};

// A "BoxPlotInfo" table (a test field split by a grouping field).
void WriteBoxPlotInfo(Algorithm& algorithm, int groupFieldIndex,
                      std::span<const BoxPlotGroup> groups,
                      std::optional<double> grandMedian = std::nullopt);

enum class ComparisonKind { kPairwise, kStepwise };

// A "PairwiseResult" or "StepwiseResult" table: the samples (field indices
// or category positions) with one value each (named `valueName`: "MeanRank",
// "Successes", "Median"), the rows (pairwise: the two samples as written
// above; stepwise: first and last position of a subset in that list), and
// the test field's index when given.
void WriteComparison(Algorithm& algorithm, ComparisonKind kind, std::string_view valueName,
                     std::span<const double> samples, std::span<const double> values,
                     std::span<const ComparisonResult> rows,
                     std::optional<int> fieldIndex = std::nullopt);

// A field of the document's data dictionary.
struct DocumentField {
    std::string fName;
    std::string fLabel; // "displayName"
    MeasureLevel fLevel = MeasureLevel::kContinuous;
    StorageType fType = StorageType::kDouble;
    // The categories in order: the value as text and its label.
    std::vector<std::pair<std::string, std::string>> fValues;
    // The decimals its numbers show with ("decimals", read by the host that
    // renders the document without the data); none when negative.
    int fDecimals = -1;
};

// The case counts of a document.
struct DocumentCounts {
    long long fTotal = 0;   // cases in the split
    long long fDropped = 0; // cases left out of every test (listwise deletion)
};

enum class MissingTreatment { kTestwise, kListwise };

// One result document.
class Document final {
public:
    Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // A comment written after the XML declaration.
    void SetComment(std::string_view comment);
    void SetCounts(const DocumentCounts& counts);
    void SetSettings(double sigLevel, double confidenceLevel, MissingTreatment missing);

    // Appends a field to the dictionary and returns its index. The module
    // makes field information for every field but the last, so a document
    // ends its dictionary with a field that needs none.
    int AddField(const DocumentField& field);
    int FieldCount() const { return fFieldCount; }

    // Appends an Algorithm; its tables follow through the returned handle.
    Algorithm AddAlgorithm(std::string_view name, Classification classification, Decision decision);
    // Appends the Algorithm of `test`, named as Tests.h names it.
    Algorithm AddAlgorithm(Test test, Decision decision);

    // Field information of a categorical field: the count of each category
    // position.
    void AddCategoricalInfo(int fieldIndex, double total, std::span<const double> counts);
    // Field information of a continuous field: descriptives and a histogram.
    void AddContinuousInfo(int fieldIndex, double total, double min, double max, double mean,
                           double stdDev, const ValueHistogram& histogram);

    int AlgorithmCount() const { return fAlgorithmCount; }
    // The document text.
    std::string Write() const;

private:
    pugi::xml_document fDoc;
    pugi::xml_node fCounts;
    pugi::xml_node fDictionary;
    pugi::xml_node fTests;
    pugi::xml_node fInfos;
    int fFieldCount = 0;
    int fAlgorithmCount = 0;
};
