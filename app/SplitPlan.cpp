// Reading the --splits file.
#include "app/SplitPlan.h"

#include <filesystem>

#include <nlohmann/json.hpp>

bool ReadSplitPlan(const std::string& path, const std::string& text, SplitPlan& plan,
                   std::string& error) {
    using Json = nlohmann::json;
    Json root;
    try {
        root = Json::parse(text);
    } catch (const Json::exception& e) {
        // Syntax errors, and numbers beyond the range of a double ("1e400").
        error = std::string("not valid JSON: ") + e.what();
        return false;
    }
    if (!root.is_object()) {
        error = "expected an object with \"variables\", \"heading\" and \"splits\"";
        return false;
    }
    plan = SplitPlan();
    if (root.contains("variables")) {
        const Json& variables = root["variables"];
        if (!variables.is_array()) {
            error = "\"variables\" must be a list of variable names";
            return false;
        }
        for (const Json& name : variables) {
            if (!name.is_string() || name.get<std::string>().empty()) {
                error = "\"variables\" must be a list of variable names";
                return false;
            }
            plan.fVariables.push_back(name.get<std::string>());
        }
    }
    if (root.contains("heading")) {
        if (!root["heading"].is_boolean()) {
            error = "\"heading\" must be true or false";
            return false;
        }
        plan.fHeading = root["heading"].get<bool>();
    }
    if (!root.contains("splits") || !root["splits"].is_array() || root["splits"].empty()) {
        error = "\"splits\" must be a list of at least one {\"document\": ..., \"values\": [...]}";
        return false;
    }
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    const Json& splits = root["splits"];
    for (size_t i = 0; i < splits.size(); ++i) {
        const Json& entry = splits[i];
        const std::string where = "split " + std::to_string(i + 1);
        if (!entry.is_object() || !entry.contains("document") || !entry["document"].is_string() ||
            entry["document"].get<std::string>().empty()) {
            error = where + " has no \"document\"";
            return false;
        }
        SplitPlan::Split split;
        const std::filesystem::path document(entry["document"].get<std::string>());
        split.fDocument = (document.is_absolute() || folder.empty() ? document : folder / document)
                              .lexically_normal()
                              .string();
        const Json empty = Json::array();
        const Json& values = entry.contains("values") ? entry["values"] : empty;
        if (!values.is_array() || values.size() != plan.fVariables.size()) {
            error = where + " must have \"values\": a list of " +
                    std::to_string(plan.fVariables.size()) + " number(s), one per split variable";
            return false;
        }
        for (const Json& value : values) {
            if (!value.is_number()) {
                error = where + ": split values must be numbers";
                return false;
            }
            split.fValues.push_back(value.get<double>());
        }
        plan.fSplits.push_back(std::move(split));
    }
    return true;
}
