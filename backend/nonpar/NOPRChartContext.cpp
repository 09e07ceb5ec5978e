// Shared chart context and template-text edits.
#include "backend/nonpar/NOPRChartContext.h"

#include "host/cf/CFErrorChannel.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "host/bp/BpCellText.h"
#include "host/bp/BpOutput.h"
#include "host/cf/CFTableLayout.h"
#include "host/chart/VarDataProcessor.h"
#include "host/chart/XDocument.h"
#include "host/chart/XUtility.h"
#include "host/fac/FacSTDictionary.h"
#include "host/vexa/VEXA_DataSource.h"
#include "host/xml/XMLText.h"

using Stats = NOPROutputStats;

NOPRChartContext::NOPRChartContext(FacSTDictionary* dictionary, NOPROutputStats* stats)
    : fDictionary(dictionary), fStats(stats) {}

NOPRChartContext::~NOPRChartContext() = default;

bool NOPRChartContext::ReplaceFirst(std::string& text, std::string_view word, std::string_view by) {
    const size_t at = word.empty() ? std::string::npos : text.find(word);
    if (at == std::string::npos) {
        return false;
    }
    text.replace(at, word.size(), by);
    return true;
}

bool NOPRChartContext::InsertBefore(std::string& text, std::string_view tag,
                                    std::string_view snippet) {
    const size_t at = tag.empty() ? std::string::npos : text.find(tag);
    if (at == std::string::npos) {
        return false;
    }
    text.insert(at, snippet);
    return true;
}

bool NOPRChartContext::InsertAfter(std::string& text, std::string_view tag,
                                   std::string_view snippet) {
    const size_t at = tag.empty() ? std::string::npos : text.find(tag);
    if (at == std::string::npos) {
        return false;
    }
    text.insert(at + tag.size(), snippet);
    return true;
}

bool NOPRChartContext::RemoveFirst(std::string& text, std::string_view from,
                                   std::string_view through) {
    const size_t start = from.empty() ? std::string::npos : text.find(from);
    if (start == std::string::npos || through.empty()) {
        return false;
    }
    const size_t end = text.find(through, start + from.size());
    if (end == std::string::npos) {
        return false;
    }
    text.erase(start, end + through.size() - start);
    return true;
}

std::string NOPRChartContext::TemplateText(const ChartString& text) {
    std::string out;
    out.reserve(text.length());
    AppendXmlEscaped(out, text.str(), true);
    return out;
}

ChartString NOPRChartContext::Description(const ChartString& title, const std::string& suffix,
                                          bool appendSuffix) {
    ChartString description = title;
    if (appendSuffix) {
        description.append("; ");
        description.append(XUtility::ChartStringFromLocalCodePage(suffix));
    }
    return description;
}

std::vector<int> NOPRChartContext::TestFields(const Stats::BaseHypothesisTest* test) {
    std::vector<int> fields;
    if (!test) {
        return fields;
    }
    const auto& parameters = test->fConditionParameters;
    const auto first = [&](size_t i) {
        if (i < parameters.size() && !parameters[i].fValues.empty()) {
            fields.push_back(TruncateToInt(parameters[i].fValues.front()));
        }
    };
    switch (test->fClassification) {
    case Stats::kCOneSample:
        first(0);
        break;
    case Stats::kCIndependentSamples:
        first(0);
        if (fields.size() == 1) {
            first(1);
        }
        break;
    case Stats::kCRelatedSamples:
        if (!parameters.empty()) {
            for (double value : parameters[0].fValues) {
                fields.push_back(TruncateToInt(value));
            }
        }
        if (fields.size() == 1) {
            first(1);
        }
        break;
    default:
        break;
    }
    return fields;
}

void NOPRChartContext::ReportNotDrawn(const std::string& suffix) const {
    CFErrorChannel::Warning("the chart \"" + fTitle.str() + "\"" +
                            (suffix.empty() ? std::string() : " (" + suffix + ")") +
                            " cannot be drawn from its document; it is left out");
}

bool NOPRChartContext::HasErrorMessage(const Stats::BaseHypothesisTest* test) {
    if (!test) {
        return false;
    }
    for (const Stats::ConditionMessage& message : test->fMessages) {
        if (message.fType == Stats::kMError) {
            return true;
        }
    }
    return false;
}

std::string NOPRChartContext::FixedText(double value, int decimals) {
    if (!std::isfinite(value) || CFIsSysmis(value)) {
        return ".";
    }
    return BpFormatSpec{BpFormatSpec::kFixed, std::clamp(decimals, 0, 15)}.Format(value);
}

std::string NOPRChartContext::LookUp(std::string_view key) const {
    return fDictionary ? fDictionary->LookUp(key) : std::string(key);
}

ChartString NOPRChartContext::Text(std::string_view key) const {
    return XUtility::ChartStringFromOLANG(LookUp(key));
}

const Stats::FieldInfoRecord* NOPRChartContext::FieldRecord(int fieldIndex) const {
    return fStats ? fStats->GetFieldInfo(fieldIndex) : nullptr;
}

const VEXA_Variable* NOPRChartContext::FieldVariable(int fieldIndex) const {
    if (const Stats::FieldInfoRecord* record = FieldRecord(fieldIndex);
        record && record->fVariable) {
        return record->fVariable;
    }
    if (!fStats || !fStats->GetMetaData() || !fStats->GetDataSource()) {
        return nullptr;
    }
    const CFField* field = fStats->GetMetaData()->GetField(fieldIndex);
    if (!field) {
        return nullptr;
    }
    VEXA_DataSource* source = fStats->GetDataSource();
    return source->GetVariable(source->FindVarIndex(field->GetName()));
}

ChartString NOPRChartContext::FieldLabel(int fieldIndex) const {
    const VEXA_Variable* variable = FieldVariable(fieldIndex);
    return variable ? XUtility::ChartStringFromLocalCodePage(variable->GetPreferredLabel())
                    : ChartString();
}

double NOPRChartContext::CategoryValue(int fieldIndex, int category) const {
    const Stats::FieldValueEntry* entry =
        fStats ? fStats->GetFieldValue(fieldIndex, category) : nullptr;
    if (!entry || entry->fValue.IsString()) {
        return category;
    }
    return entry->fValue.GetNumber();
}

ChartString NOPRChartContext::ValueText(const VEXA_Variable* variable, double value,
                                        int preference) {
    const BpProcedure* procedure = BpProcedure::Active();
    if (variable && procedure) {
        return XUtility::ChartStringFromLocalCodePage(
            BpDataValue(variable, value, preference).Resolve(*procedure).fText);
    }
    ChartString text;
    return text.assignDouble(value, 15);
}

ChartString NOPRChartContext::CategoryLabel(int fieldIndex, int category) const {
    const Stats::FieldValueEntry* entry =
        fStats ? fStats->GetFieldValue(fieldIndex, category) : nullptr;
    if (!entry) {
        ChartString text;
        return text.assignInteger(category);
    }
    if (!entry->fLabel.empty()) {
        return XUtility::ChartStringFromLocalCodePage(entry->fLabel);
    }
    if (entry->fValue.IsString()) {
        return XUtility::ChartStringFromLocalCodePage(entry->fValue.GetString());
    }
    return ValueText(FieldVariable(fieldIndex), entry->fValue.GetNumber());
}

NOPRChartContext::TableCategories
NOPRChartContext::CategoriesOfNames(int fieldIndex, const std::vector<std::string>& names,
                                    size_t count) const {
    TableCategories categories;
    for (size_t k = 0; k < count; ++k) {
        const int position =
            k < names.size() ? CFTableLayout::PositionOfName(names[k]) : static_cast<int>(k);
        categories.fValues.push_back(CategoryValue(fieldIndex, position));
        categories.fLabels.push_back(CategoryLabel(fieldIndex, position));
    }
    return categories;
}

std::string NOPRChartContext::FieldValueText(int fieldIndex, double value, int decimals) const {
    const VEXA_Variable* variable = FieldVariable(fieldIndex);
    if (variable && VEXA_Format::IsDateTime(variable->GetFormat().fType) && !CFIsSysmis(value) &&
        std::isfinite(value)) {
        return TemplateText(ValueText(variable,
                                      NumericFormatCFToStat(value, variable->GetFormat().fType),
                                      BpDataValue::kValue));
    }
    return FixedText(value, decimals);
}

void NOPRChartContext::SetTitles(const XGraph& graph, const std::string& suffix) const {
    graph.setTitle(fTitle);
    if (!suffix.empty()) {
        graph.setSubtitle(XUtility::ChartStringFromLocalCodePage(suffix));
    }
}

bool NOPRChartContext::Send(XDocument& document, const VarDataProcessor* data,
                            const std::string& suffix, bool appendSuffix, bool apply) const {
    SetTitles(document.getExternalGraph(), suffix);
    document.SetDescription(Description(fTitle, suffix, appendSuffix));
    if (data) {
        document.SetChartData(data);
    }
    if (apply) {
        document.applyCTemplate(false);
    }
    return document.SendChart(true, false, false);
}
