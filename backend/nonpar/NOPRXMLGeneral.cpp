// Readers of the generic element shapes of the result document and the
// converters from a table's text to words and numbers.
#include "backend/nonpar/NOPRXMLGeneral.h"

#include "host/cf/CFAssert.h"
#include "host/cf/CFSysmis.h"
#include "host/xml/SDOMXMLWrapper.h"
#include "host/xml/XMLText.h"

#define CF_ASSERT_SOURCE "backend/nonpar/NOPRXMLGeneral"

namespace {
// The result document nests structured tables two levels deep; a document
// nested far deeper is rejected rather than allowed to exhaust the stack.
constexpr int kMaxTableDepth = 64;

constexpr std::string_view kMissingWord = "__MISSING__";

bool ReadStructuredTableAt(const SDOMXMLWrapper& element, StructuredTableData& data, int depth) {
    if (!element.GetAttribute("name", data.fName)) {
        return false;
    }
    SDOMXMLIterator children;
    if (!element.GetElementIterator("", children, true)) {
        return true;
    }
    data.fAttributes.clear();
    data.fSimpleTables.clear();
    data.fStrucTables.clear();
    data.fOrder.clear();
    SDOMXMLWrapper child;
    while (children.Next(child)) {
        const std::string_view tag = child.GetName();
        bool ok = true;
        if (tag == "Attribute") {
            data.fOrder.push_back({0, data.fAttributes.size()});
            ok = ReadAttribute(&child, data.fAttributes.emplace_back());
        } else if (tag == "SimpleTable") {
            data.fOrder.push_back({1, data.fSimpleTables.size()});
            ok = ReadSimpleTable(&child, data.fSimpleTables.emplace_back());
        } else if (tag == "StructuredTable") {
            data.fOrder.push_back({2, data.fStrucTables.size()});
            StructuredTableData& nested = data.fStrucTables.emplace_back();
            ok = depth < kMaxTableDepth && ReadStructuredTableAt(child, nested, depth + 1);
        }
        if (!ok) {
            return false;
        }
    }
    return true;
}
} // namespace

bool ReadAttribute(const SDOMXMLWrapper* attributeElm, AttributeData& data) {
    CF_ASSERT(attributeElm);
    const bool hasName = attributeElm->GetAttribute("name", data.fName);
    attributeElm->GetAttribute("value", data.fValue);
    return hasName;
}

bool ReadAttributeDouble(const SDOMXMLWrapper* attributeElm, NumericAttributeData& data) {
    if (!attributeElm) {
        data.fValue = kCFSysmis;
        return false;
    }
    const bool hasName = attributeElm->GetAttribute("name", data.fName);
    if (!attributeElm->GetAttribute("value", data.fValue)) {
        data.fValue = kCFSysmis;
    }
    return hasName;
}

bool ReadSimpleTable(const SDOMXMLWrapper* simpleTableElm, SimpleTableData& data) {
    CF_ASSERT(simpleTableElm);
    if (!simpleTableElm->GetAttribute("name", data.fName)) {
        return false;
    }
    // One pass over the children: the first RowNames, the first ColumnNames
    // and every Row, in document order.
    SDOMXMLIterator children;
    if (!simpleTableElm->GetElementIterator("", children, true)) {
        return false;
    }
    data.fRows.clear();
    bool haveRowNames = false;
    bool haveColumnNames = false;
    SDOMXMLWrapper child;
    while (children.Next(child)) {
        const std::string_view tag = child.GetName();
        bool ok = true;
        if (tag == "Row") {
            ok = child.GetTextBody(data.fRows.emplace_back());
        } else if (tag == "RowNames" && !haveRowNames) {
            haveRowNames = true;
            ok = child.GetTextBody(data.fRowNames);
        } else if (tag == "ColumnNames" && !haveColumnNames) {
            haveColumnNames = true;
            ok = child.GetTextBody(data.fColumnNames);
        }
        if (!ok) {
            return false;
        }
    }
    return true;
}

bool ReadStructuredTable(const SDOMXMLWrapper* structTableElm, StructuredTableData& data) {
    CF_ASSERT(structTableElm);
    return ReadStructuredTableAt(*structTableElm, data, 0);
}

bool ParseDoubleList(std::string_view text, double missingValue, std::vector<double>& out) {
    bool first = true;
    ForEachToken(text, [&](std::string_view word) {
        if (first) {
            out.clear();
            first = false;
        }
        out.push_back(word == kMissingWord ? missingValue : String2Double(word));
    });
    return true;
}

bool ParseIntegerList(std::string_view text, std::vector<std::int32_t>& out) {
    bool first = true;
    ForEachToken(text, [&](std::string_view word) {
        if (first) {
            out.clear();
            first = false;
        }
        out.push_back(String2Integer(word));
    });
    return true;
}

bool ParseStringList(std::string_view text, std::vector<std::string>& out) {
    out.clear();
    SplitToToken(text, out);
    return true;
}

bool ToNumericTable(const SimpleTableData& in, NumericTableData& out, double missingValue) {
    out.fName = in.fName;
    ParseStringList(in.fRowNames, out.fRowNames);
    ParseStringList(in.fColumnNames, out.fColumnNames);
    out.fRows.resize(in.fRows.size());
    for (std::size_t i = 0; i < in.fRows.size(); ++i) {
        // A row without words stays empty, also when the table is read again.
        out.fRows[i].clear();
        if (!ParseDoubleList(in.fRows[i], missingValue, out.fRows[i])) {
            return false;
        }
    }
    return true;
}
