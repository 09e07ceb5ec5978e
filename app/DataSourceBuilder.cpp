// Building the data source from a result document's data dictionary.
#include "app/DataSourceBuilder.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

#include "host/cf/CFMetaData.h"
#include "host/vexa/VEXA_DataSource.h"
#include "host/xml/SDOMXMLWrapper.h"
#include "host/xml/XMLText.h"

namespace {
constexpr std::string_view kDictionaryPath = "Extension/NPAROutput/DataDictionary";

// False, with `error`, when an attribute of `element` (a name, label or
// value text of data field `field`) is longer than a label may be. Checked
// before any is copied.
bool TextsFit(const SDOMXMLWrapper& element, int field, std::string& error) {
    for (const pugi::xml_attribute attribute : element.Node().attributes()) {
        const std::size_t size = std::strlen(attribute.value());
        if (size > kCFMaxLabelBytes) {
            error = "a text of data field " + std::to_string(field) + " has " +
                    std::to_string(size) + " bytes; a name, label or value may have at most " +
                    std::to_string(kCFMaxLabelBytes);
            return false;
        }
    }
    return true;
}

// The variables of a DataDictionary element (an empty handle gives none);
// null, with `error`, when a text is longer than a label may be.
std::unique_ptr<VEXA_DataSource> FromDictionaryElement(const SDOMXMLWrapper& dictionary,
                                                       std::string& error) {
    auto source = std::make_unique<VEXA_DataSource>();
    SDOMXMLIterator fields;
    if (!dictionary || !dictionary.GetElementIterator("DataField", fields, true)) {
        return source;
    }
    SDOMXMLWrapper field;
    while (fields.Next(field)) {
        const int position = source->GetVariableCount();
        if (!TextsFit(field, position, error)) {
            return nullptr;
        }
        std::string name, label, optype, dataType;
        field.GetAttribute("name", name);
        field.GetAttribute("displayName", label);
        field.GetAttribute("optype", optype);
        field.GetAttribute("dataType", dataType);
        const bool isString = dataType == "string";
        VEXA_Variable& variable = source->AddVariable(name, isString ? 8 : 0);
        if (label != name) {
            variable.SetLabel(label);
        }
        variable.SetMeasure(optype == "continuous"    ? VEXA_Variable::kContinuous
                            : optype == "categorical" ? VEXA_Variable::kCategorical
                            : optype == "ordinal"     ? VEXA_Variable::kOrdinal
                                                      : VEXA_Variable::kUnknownMeasure);
        VEXA_Format format;
        if (isString) {
            format = {VEXA_Format::kString, 8, 0};
        } else if (dataType == "date") {
            format = {VEXA_Format::kDate, 11, 0};
        } else if (dataType == "integer") {
            format = {VEXA_Format::kNumber, 8, 0};
        }
        // The engine's documents say how many decimals a number shows.
        if (const int decimals = field.Node().attribute("decimals").as_int(-1);
            !isString && dataType != "date" && decimals >= 0 && decimals <= 15) {
            format.fDecimals = decimals;
        }
        variable.SetFormat(format);
        SDOMXMLIterator values;
        if (!field.GetElementIterator("Value", values, true)) {
            continue;
        }
        SDOMXMLWrapper value;
        while (values.Next(value)) {
            std::string text, display;
            if (!TextsFit(value, position, error)) {
                return nullptr;
            }
            value.GetAttribute("value", text);
            if (!value.GetAttribute("displayValue", display) || display == text) {
                continue;
            }
            if (isString) {
                variable.ValueLabels().Add(text, display);
            } else {
                variable.ValueLabels().Add(String2Double(text), display);
            }
        }
    }
    return source;
}

bool HasDescendantNamed(pugi::xml_node node, const char* name) {
    return static_cast<bool>(node.find_node([name](pugi::xml_node n) {
        return n.type() == pugi::node_element && std::string_view(n.name()) == name;
    }));
}

// The dictionary comes before the tests, which make up nearly all of a large
// document; reading the text only up to the first "</DataDictionary>" spares
// a parse of the whole. The prefix is used only when it gives what the whole
// text would: markup without error up to its end, and at the dictionary's path
// an element that the cut closed (one without a nested DataDictionary, whose
// close tag the cut would have been). Otherwise false, and the whole document
// is read. A document broken after its dictionary is left to the module to
// reject.
bool DataSourceFromPrefix(const std::string& xml, std::unique_ptr<VEXA_DataSource>& source,
                          std::string& error) {
    constexpr std::string_view kClose = "</DataDictionary>";
    const std::size_t at = xml.find(kClose);
    if (at == std::string::npos) {
        return false;
    }
    std::string prefix = xml.substr(0, at + kClose.size());
    pugi::xml_document doc;
    const pugi::xml_parse_result result =
        doc.load_buffer_inplace(prefix.data(), prefix.size(), pugi::parse_default);
    // Elements still open where the text stops are reported at its last byte.
    const bool cutCleanly = result.status == pugi::status_ok ||
                            (result.status == pugi::status_end_element_mismatch &&
                             static_cast<std::size_t>(result.offset) + 1 == prefix.size());
    if (!cutCleanly) {
        return false;
    }
    SDOMXMLWrapper root(doc.document_element());
    SDOMXMLWrapper dictionary;
    if (!root.GetFirstElement(kDictionaryPath, dictionary, true) || !dictionary ||
        HasDescendantNamed(dictionary.Node(), "DataDictionary")) {
        return false;
    }
    source = FromDictionaryElement(dictionary, error);
    return true;
}
} // namespace

std::unique_ptr<VEXA_DataSource> DataSourceFromDocument(const std::string& xml,
                                                        std::string& error) {
    std::unique_ptr<VEXA_DataSource> source;
    if (DataSourceFromPrefix(xml, source, error)) {
        return source;
    }
    SDOMXMLWrapper root;
    if (!root.LoadFromString(xml)) {
        error = root.Error();
        return nullptr;
    }
    SDOMXMLWrapper dictionary;
    root.GetFirstElement(kDictionaryPath, dictionary, true);
    return FromDictionaryElement(dictionary, error);
}
