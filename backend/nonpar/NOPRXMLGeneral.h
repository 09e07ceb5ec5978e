// Readers of the result document's generic element shapes (attribute
// elements, simple tables, structured tables) into plain records, and the
// converters from a table's text to words and numbers.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "backend/nonpar/NOPROutputStats.h"

class SDOMXMLWrapper;

struct AttributeData {
    std::string fName;
    std::string fValue;
};

struct NumericAttributeData {
    std::string fName;
    double fValue = 0.0;
};

struct SimpleTableData {
    std::string fName;
    std::string fRowNames;    // raw text of RowNames
    std::string fColumnNames; // raw text of ColumnNames
    std::vector<std::string> fRows;
};

struct ElementOrderEntry {
    std::int32_t fKind = 0; // 0 attribute element, 1 simple table, 2 structured table
    std::uint64_t fIndex = 0;
};

struct StructuredTableData {
    std::string fName;
    std::vector<AttributeData> fAttributes;
    std::vector<SimpleTableData> fSimpleTables;
    std::vector<StructuredTableData> fStrucTables;
    std::vector<ElementOrderEntry> fOrder;
};

bool ReadAttribute(const SDOMXMLWrapper* attributeElm, AttributeData& data);
bool ReadAttributeDouble(const SDOMXMLWrapper* attributeElm, NumericAttributeData& data);
bool ReadSimpleTable(const SDOMXMLWrapper* simpleTableElm, SimpleTableData& data);
bool ReadStructuredTable(const SDOMXMLWrapper* structTableElm, StructuredTableData& data);

bool ParseDoubleList(std::string_view text, double missingValue, std::vector<double>& out);
bool ParseIntegerList(std::string_view text, std::vector<std::int32_t>& out);
bool ParseStringList(std::string_view text, std::vector<std::string>& out);
bool ToNumericTable(const SimpleTableData& in, NumericTableData& out, double missingValue);
