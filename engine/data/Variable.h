// A variable of a data set: its name, label, measurement level, storage
// type, display format, value labels and user-missing values.
#pragma once

#include <limits>
#include <string>
#include <vector>

// The system-missing value: the most negative finite double.
inline constexpr double kSysMis = -std::numeric_limits<double>::max();

enum class MeasureLevel { kContinuous, kNominal, kOrdinal };
enum class StorageType { kInteger, kDouble, kString, kDate };

// A value of a variable as a dictionary or a command names it: a number, or
// a text for a string variable.
struct DataValue {
    double fNumber = 0;
    std::string fText;
};

struct ValueLabel {
    DataValue fValue;
    std::string fLabel;
};

struct Variable {
    std::string fName;
    std::string fLabel; // the name when no label is given
    MeasureLevel fLevel = MeasureLevel::kContinuous;
    StorageType fType = StorageType::kDouble;
    // Display format (the host's VEXA_Format type, width, decimals); dates are read by it.
    int fFormatType = 5;
    int fFormatWidth = 8;
    int fFormatDecimals = 2;
    std::vector<ValueLabel> fValueLabels;
    std::vector<DataValue> fMissingValues; // user-missing values

    bool IsString() const { return fType == StorageType::kString; }
    bool IsCategorical() const { return fLevel != MeasureLevel::kContinuous; }
};
