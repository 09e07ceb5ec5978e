// The field dictionary a procedure builds from a result document: fields with
// name, measurement level, storage type, label, values and value labels.
#pragma once

#include <memory>
#include <string>
#include <vector>

class VEXA_Variable;

// The most bytes a name, label or value text of the data may have. Each is
// copied into every table and chart that shows it; a longer one is refused.
inline constexpr std::size_t kCFMaxLabelBytes = std::size_t{1} << 16;

// One value of a field: a number or a text, by the field's storage type.
class CFDatum final {
public:
    CFDatum() = default;
    explicit CFDatum(double number) : fNumber(number) {}
    explicit CFDatum(std::string text) : fIsString(true), fText(std::move(text)) {}

    bool IsString() const { return fIsString; }
    double GetNumber() const { return fNumber; }
    const std::string& GetString() const { return fText; }

private:
    bool fIsString = false;
    double fNumber = 0.0;
    std::string fText;
};

// A value with a text attached (its label, or its own text form).
struct CFValue {
    CFDatum fDatum;
    std::string fLabel;
};

class CFField final {
public:
    enum Measure { kContinuous = 0, kCategorical = 1, kOrdinal = 2, kUnknownMeasure = 6 };
    enum Storage { kUnknownStorage = 0, kInteger = 1, kReal = 2, kString = 3, kDate = 4 };

    CFField(std::string name, int measure, int storage, int role)
        : fName(std::move(name)), fMeasure(measure), fStorage(storage), fRole(role) {}

    void SetLabel(std::string label) { fLabel = std::move(label); }
    void SetValueLabels(std::vector<CFValue> labels) { fValueLabels = std::move(labels); }
    void SetValues(std::vector<CFValue> values) { fValues = std::move(values); }

    const std::string& GetName() const { return fName; }
    const std::string& GetLabel() const { return fLabel; }
    int GetMeasure() const { return fMeasure; }
    int GetStorage() const { return fStorage; }
    int GetRole() const { return fRole; }
    // The field's category values, each with its text form as label.
    const std::vector<CFValue>& GetValues() const { return fValues; }
    // The same values, each with its display label.
    const std::vector<CFValue>& GetValueLabels() const { return fValueLabels; }

private:
    std::string fName;
    std::string fLabel;
    int fMeasure;
    int fStorage;
    int fRole;
    std::vector<CFValue> fValues;
    std::vector<CFValue> fValueLabels;
};

class CFMetaData final {
public:
    void AppendField(std::unique_ptr<CFField> field) { fFields.push_back(std::move(field)); }
    int GetFieldCount() const { return static_cast<int>(fFields.size()); }
    // The field at a position, or null outside the list.
    const CFField* GetField(int index) const {
        return index < 0 || index >= GetFieldCount() ? nullptr
                                                     : fFields[static_cast<size_t>(index)].get();
    }

private:
    std::vector<std::unique_ptr<CFField>> fFields;
};

// A value as the host's variable sees it: numbers converted to the host's
// units (dates from days to seconds), texts kept.
class CFStatVariableValue final {
public:
    void SetCompleteValue(const CFDatum& datum, const VEXA_Variable* variable);

    bool IsString() const { return fIsString; }
    double GetNumber() const { return fNumber; }
    const std::string& GetString() const { return fText; }

private:
    bool fIsString = false;
    double fNumber = 0.0;
    std::string fText;
};

// A number written by the engine converted to the host's representation for
// a display format type: date and time values from days to seconds.
double NumericFormatCFToStat(double value, int formatType);
