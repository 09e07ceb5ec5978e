// The host's view of the data: variables with names, labels, types, display
// formats and value labels, looked up by name or by position.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// A display format: its type, width and number of decimals. Numeric types are
// the host's codes; the date and time types are listed by IsDateTime.
struct VEXA_Format {
    enum Type : int {
        kString = 1,        // text of `width` characters
        kComma = 3,         // number with grouping commas
        kNumber = 5,        // plain number
        kDollar = 4,        // currency
        kPercent = 8,       // number followed by "%"
        kScientific = 17,   // exponent notation
        kDate = 20,         // dd-mmm-yyyy
        kTime = 21,         // hh:mm:ss (a duration)
        kDateTime = 22,     // dd-mmm-yyyy hh:mm:ss
        kAmericanDate = 23, // mm/dd/yyyy
        kJulianDate = 24,   // yyyyddd
        kDayTime = 25,      // ddd hh:mm (a duration)
        kWeekday = 26,      // weekday name
        kMonth = 27,        // month name
        kMonthYear = 28,    // mmm yyyy
        kQuarterYear = 29,  // q Q yyyy
        kWeekYear = 30,     // ww WK yyyy
        kEuropeanDate = 38, // dd.mm.yyyy
        kSortableDate = 39, // yyyy/mm/dd
    };

    int fType = kNumber;
    int fWidth = 8;
    int fDecimals = 2;

    // True for the formats that show a point in time (20, 23, 24, 28, 29, 30,
    // 38, 39): their values are seconds in the host and days in the engine.
    static bool IsDateTime(int type);
};

// Labels of a variable's values. Numeric variables label numbers, string
// variables label texts.
class VEXA_ValueLabelMap final {
public:
    void Add(double value, std::string label) { fNumeric[value] = std::move(label); }
    void Add(std::string value, std::string label) { fString[std::move(value)] = std::move(label); }
    // The label of a value, or null when it has none.
    const std::string* Find(double value) const;
    const std::string* Find(std::string_view value) const;
    bool Empty() const { return fNumeric.empty() && fString.empty(); }
    const std::map<double, std::string>& Numeric() const { return fNumeric; }
    const std::map<std::string, std::string, std::less<>>& Strings() const { return fString; }

private:
    std::map<double, std::string> fNumeric;
    std::map<std::string, std::string, std::less<>> fString;
};

class VEXA_Variable final {
public:
    enum Measure { kContinuous = 0, kCategorical = 1, kOrdinal = 2, kUnknownMeasure = 6 };

    VEXA_Variable(std::string name, int type) : fName(std::move(name)), fType(type) {}

    const std::string& GetName() const { return fName; }
    const std::string& GetLabel() const { return fLabel; }
    // The label when the variable has one, else its name.
    const std::string& GetPreferredLabel() const { return fLabel.empty() ? fName : fLabel; }
    // 0 for a numeric variable, else the width of a string variable.
    int GetType() const { return fType; }
    bool IsNumeric() const { return fType == 0; }
    const VEXA_Format& GetFormat() const { return fFormat; }
    int GetMeasure() const { return fMeasure; }
    const VEXA_ValueLabelMap& GetValueLabels() const { return fValueLabels; }
    // The user-missing values: numbers of a numeric variable, texts of a string variable.
    const std::vector<double>& GetMissingNumbers() const { return fMissingNumbers; }
    const std::vector<std::string>& GetMissingTexts() const { return fMissingTexts; }

    void SetLabel(std::string label) { fLabel = std::move(label); }
    void SetFormat(const VEXA_Format& format) { fFormat = format; }
    void SetMeasure(int measure) { fMeasure = measure; }
    VEXA_ValueLabelMap& ValueLabels() { return fValueLabels; }
    void AddMissing(double value) { fMissingNumbers.push_back(value); }
    void AddMissing(std::string value) { fMissingTexts.push_back(std::move(value)); }

private:
    std::string fName;
    std::string fLabel;
    int fType = 0;
    int fMeasure = kUnknownMeasure;
    VEXA_Format fFormat;
    VEXA_ValueLabelMap fValueLabels;
    std::vector<double> fMissingNumbers;
    std::vector<std::string> fMissingTexts;
};

class VEXA_DataSource final {
public:
    // Appends a variable and returns it; names are matched without regard to
    // case, as the host's command language does.
    VEXA_Variable& AddVariable(std::string name, int type);

    int GetVariableCount() const { return static_cast<int>(fVariables.size()); }
    // The position of the variable of that name at or after `start`; -1 when
    // there is none.
    int FindVarIndex(std::string_view name, int start = 0) const;
    // The variable at a position, or null outside the list.
    VEXA_Variable* GetVariable(int index) const;

private:
    std::vector<std::unique_ptr<VEXA_Variable>> fVariables;
};

// The data source a procedure is constructed with.
using ProcedureDataSource = VEXA_DataSource;
