// Building the data source from a result document's data dictionary or
// from a dictionary file.
#include "app/DataSourceBuilder.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstring>
#include <iterator>
#include <string_view>

#include <nlohmann/json.hpp>

#include "host/cf/CFMetaData.h"
#include "host/parser/ParserText.h"
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

namespace {
using Json = nlohmann::json;

struct FormatName {
    std::string_view fName;
    int fType;
};
constexpr FormatName kFormatNames[] = {
    {"F", VEXA_Format::kNumber},           {"COMMA", VEXA_Format::kComma},
    {"DOLLAR", VEXA_Format::kDollar},      {"PCT", VEXA_Format::kPercent},
    {"E", VEXA_Format::kScientific},       {"A", VEXA_Format::kString},
    {"DATE", VEXA_Format::kDate},          {"TIME", VEXA_Format::kTime},
    {"DATETIME", VEXA_Format::kDateTime},  {"ADATE", VEXA_Format::kAmericanDate},
    {"JDATE", VEXA_Format::kJulianDate},   {"DTIME", VEXA_Format::kDayTime},
    {"WKDAY", VEXA_Format::kWeekday},      {"MONTH", VEXA_Format::kMonth},
    {"MOYR", VEXA_Format::kMonthYear},     {"QYR", VEXA_Format::kQuarterYear},
    {"WKYR", VEXA_Format::kWeekYear},      {"EDATE", VEXA_Format::kEuropeanDate},
    {"SDATE", VEXA_Format::kSortableDate},
};

// Reads a number of up to five digits at the start of `text`.
bool ReadSmallNumber(std::string_view& text, int& value) {
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    const size_t used = static_cast<size_t>(end - text.data());
    if (ec != std::errc() || used == 0 || used > 5 || text[0] == '-') {
        return false;
    }
    text.remove_prefix(used);
    return true;
}

// "F8.2" and the like.
bool ParseFormatText(std::string_view text, VEXA_Format& format) {
    size_t letters = 0;
    while (letters < text.size() && std::isalpha(static_cast<unsigned char>(text[letters]))) {
        ++letters;
    }
    const std::string name = ToUpper(text.substr(0, letters));
    const auto* known = std::find_if(std::begin(kFormatNames), std::end(kFormatNames),
                                     [&](const FormatName& f) { return f.fName == name; });
    if (known == std::end(kFormatNames)) {
        return false;
    }
    text.remove_prefix(letters);
    format = {known->fType, 0, 0};
    if (!ReadSmallNumber(text, format.fWidth)) {
        return false;
    }
    if (!text.empty() && text.front() == '.') {
        text.remove_prefix(1);
        if (!ReadSmallNumber(text, format.fDecimals)) {
            return false;
        }
    }
    return text.empty();
}

bool ReadFormat(const Json& value, VEXA_Format& format) {
    if (value.is_string()) {
        return ParseFormatText(value.get<std::string>(), format);
    }
    if (!value.is_object()) {
        return false;
    }
    for (auto [key, member] : {std::pair{"type", &format.fType}, std::pair{"width", &format.fWidth},
                               std::pair{"decimals", &format.fDecimals}}) {
        if (!value.contains(key)) {
            continue;
        }
        const Json& number = value[key];
        if (!number.is_number_integer() || number.get<long long>() < 0 ||
            number.get<long long>() > 32767) {
            return false;
        }
        *member = number.get<int>();
    }
    return true;
}

bool ReadMeasure(const std::string& text, int& measure) {
    if (text == "continuous" || text == "scale") {
        measure = VEXA_Variable::kContinuous;
    } else if (text == "categorical" || text == "nominal") {
        measure = VEXA_Variable::kCategorical;
    } else if (text == "ordinal") {
        measure = VEXA_Variable::kOrdinal;
    } else if (text == "unknown") {
        measure = VEXA_Variable::kUnknownMeasure;
    } else {
        return false;
    }
    return true;
}

// One variable; an error text, or "" when it was added.
std::string AddDictionaryVariable(const Json& entry, VEXA_DataSource& source) {
    if (!entry.is_object() || !entry.contains("name") || !entry["name"].is_string() ||
        entry["name"].get<std::string>().empty()) {
        return "has no name";
    }
    const std::string name = entry["name"].get<std::string>();
    auto text = [&](const char* key, std::string& out) {
        if (!entry.contains(key)) {
            return true;
        }
        if (!entry[key].is_string()) {
            return false;
        }
        out = entry[key].get<std::string>();
        return true;
    };
    if (source.FindVarIndex(name) >= 0) {
        return name + " is named twice";
    }
    std::string label, type = "numeric", measureText;
    if (!text("label", label) || !text("type", type) || !text("measure", measureText)) {
        return name + ": label, type and measure must be texts";
    }
    if (name.size() > kCFMaxLabelBytes || label.size() > kCFMaxLabelBytes) {
        return "has a name or label longer than " + std::to_string(kCFMaxLabelBytes) + " bytes";
    }
    if (type != "numeric" && type != "string") {
        return name + ": type must be \"numeric\" or \"string\", not \"" + type + "\"";
    }
    int width = 8;
    if (entry.contains("width")) {
        const Json& w = entry["width"];
        if (!w.is_number_integer() || w.get<long long>() < 1 || w.get<long long>() > 32767) {
            return name + ": width must be an integer from 1 to 32767";
        }
        width = w.get<int>();
    }
    const bool isString = type == "string";
    VEXA_Variable& variable = source.AddVariable(name, isString ? width : 0);
    variable.SetLabel(label);
    int measure = VEXA_Variable::kUnknownMeasure;
    if (!measureText.empty() && !ReadMeasure(measureText, measure)) {
        return name + ": unknown measure \"" + measureText +
               "\" (expected continuous, scale, categorical, nominal or ordinal)";
    }
    variable.SetMeasure(measure);
    VEXA_Format format;
    if (isString) {
        format = {VEXA_Format::kString, width, 0};
    }
    if (entry.contains("format") && !ReadFormat(entry["format"], format)) {
        return name + ": bad format " + entry["format"].dump() +
               " (expected {\"type\": code, \"width\": w, \"decimals\": d} or a text like "
               "\"F8.2\")";
    }
    variable.SetFormat(format);
    if (!entry.contains("valueLabels")) {
        return std::string();
    }
    const Json& labels = entry["valueLabels"];
    if (!labels.is_array()) {
        return name + ": valueLabels must be a list of {\"value\": ..., \"label\": ...}";
    }
    for (const Json& pair : labels) {
        const bool valueFits = pair.is_object() && pair.contains("value") &&
                               (isString ? pair["value"].is_string() : pair["value"].is_number());
        if (!valueFits || !pair.contains("label") || !pair["label"].is_string()) {
            return name + ": each value label needs a " +
                   std::string(isString ? "text" : "numeric") + " \"value\" and a \"label\" text";
        }
        if (pair["label"].get_ref<const std::string&>().size() > kCFMaxLabelBytes ||
            (isString && pair["value"].get_ref<const std::string&>().size() > kCFMaxLabelBytes)) {
            return name + ": a value label is longer than " + std::to_string(kCFMaxLabelBytes) +
                   " bytes";
        }
        if (isString) {
            variable.ValueLabels().Add(pair["value"].get<std::string>(),
                                       pair["label"].get<std::string>());
        } else {
            variable.ValueLabels().Add(pair["value"].get<double>(),
                                       pair["label"].get<std::string>());
        }
    }
    return std::string();
}
} // namespace

std::unique_ptr<VEXA_DataSource> DataSourceFromDictionary(const std::string& json,
                                                          std::string& error) {
    Json root;
    try {
        root = Json::parse(json);
    } catch (const Json::exception& e) {
        // Syntax errors, and numbers beyond the range of a double ("1e400").
        error = std::string("not valid JSON: ") + e.what();
        return nullptr;
    }
    if (!root.is_object() || !root.contains("variables") || !root["variables"].is_array()) {
        error = "expected an object with a \"variables\" list";
        return nullptr;
    }
    auto source = std::make_unique<VEXA_DataSource>();
    const Json& variables = root["variables"];
    for (size_t i = 0; i < variables.size(); ++i) {
        const std::string problem = AddDictionaryVariable(variables[i], *source);
        if (!problem.empty()) {
            error = "variable " + std::to_string(i + 1) + " " + problem;
            return nullptr;
        }
    }
    return source;
}
