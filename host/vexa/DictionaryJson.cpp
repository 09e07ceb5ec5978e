// Reading a dictionary file (JSON) into the host's data source.
#include "host/vexa/DictionaryJson.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>
#include <string_view>

#include <nlohmann/json.hpp>

#include "host/parser/ParserText.h"
#include "host/vexa/VEXA_DataSource.h"

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
    if (entry.contains("missing")) {
        const Json& missing = entry["missing"];
        if (!missing.is_array()) {
            return name + ": missing must be a list of " +
                   std::string(isString ? "texts" : "numbers");
        }
        for (const Json& value : missing) {
            if (isString ? !value.is_string() : !value.is_number()) {
                return name + ": each missing value must be a " +
                       std::string(isString ? "text" : "number");
            }
            if (isString) {
                variable.AddMissing(value.get<std::string>());
            } else {
                variable.AddMissing(value.get<double>());
            }
        }
    }
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
    } catch (const Json::parse_error& e) {
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
