// The result model as a dump tree: everything the reader put into it, for the
// command line's --dump-model (a debugging aid).
#include "backend/nonpar/NOPROutputStats.h"

#include "host/cf/CFDump.h"
#include "host/vexa/VEXA_DataSource.h"

using Stats = NOPROutputStats;

namespace {
template <typename T> CFDump List(const std::vector<T>& values) {
    CFDump array = CFDump::Array();
    for (const T& value : values) {
        array.Push(CFDump(value));
    }
    return array;
}

CFDump Table(const NumericTableData& table) {
    CFDump out = CFDump::Object();
    out.Set("name", table.fName);
    out.Set("rowNames", List(table.fRowNames));
    out.Set("columnNames", List(table.fColumnNames));
    CFDump& rows = out.SetArray("rows");
    for (const std::vector<double>& row : table.fRows) {
        rows.Push(List(row));
    }
    return out;
}

CFDump Parameters(const std::vector<Stats::ConditionParameter>& parameters) {
    CFDump out = CFDump::Array();
    for (const Stats::ConditionParameter& parameter : parameters) {
        CFDump& item = out.PushObject();
        item.Set("number", parameter.fNumber);
        item.Set("values", List(parameter.fValues));
    }
    return out;
}

CFDump Estimate(const Stats::EstimateRecord& estimate) {
    CFDump out = CFDump::Object();
    out.Set("estimate", estimate.fEstimate);
    out.Set("lower", estimate.fLower);
    out.Set("upper", estimate.fUpper);
    return out;
}

CFDump Comparison(const Stats::MultipleComparison& comparison) {
    CFDump out = CFDump::Object();
    out.Set("kind", static_cast<int>(comparison.fKind));
    out.Set("fieldIndex", comparison.fFieldIndex);
    out.Set("info", Table(comparison.fInfo));
    out.Set("content", Table(comparison.fContent));
    return out;
}

CFDump CategoryComparison(const Stats::CategoryFieldsComparison& comparison) {
    CFDump out = CFDump::Object();
    out.Set("rowField", comparison.fRowField);
    out.Set("columnField", comparison.fColumnField);
    out.Set("rowSuccessList", List(comparison.fRowSuccessList));
    out.Set("rowFailList", List(comparison.fRowFailList));
    out.Set("columnSuccessList", List(comparison.fColumnSuccessList));
    out.Set("columnFailList", List(comparison.fColumnFailList));
    out.Set("rowValsNotInCategories", List(comparison.fRowValsNotInCategories));
    out.Set("colValsNotInCategories", List(comparison.fColValsNotInCategories));
    out.Set("table", Table(comparison.fTable));
    return out;
}

CFDump BoxPlot(const Stats::BoxPlotInfo& boxPlot) {
    CFDump out = CFDump::Object();
    out.Set("groupFieldIndex", boxPlot.fGroupFieldIndex);
    out.Set("groupCount", boxPlot.fGroupCount);
    out.Set("grandMedian", boxPlot.fGrandMedian);
    CFDump& groups = out.SetArray("groups");
    for (const Stats::BoxPlotGroup& group : boxPlot.fGroups) {
        CFDump& item = groups.PushObject();
        item.Set("groupIndex", group.fGroupIndex);
        item.Set("n", group.fN);
        item.Set("meanOfRank", group.fMeanOfRank);
        item.Set("gtMedian", group.fGTMedian);
        item.Set("stMedian", group.fSTMedian);
        item.Set("box", Table(group.fBox));
        item.Set("outliers", Table(group.fOutliers));
    }
    return out;
}

CFDump Groups(const std::vector<Stats::GroupRecord>& groups) {
    CFDump out = CFDump::Array();
    for (const Stats::GroupRecord& group : groups) {
        CFDump& item = out.PushObject();
        item.Set("groupIndex", group.fGroupIndex);
        item.Set("n", group.fN);
        item.Set("meanOfRank", group.fMeanOfRank);
        item.Set("table", Table(group.fTable));
    }
    return out;
}

CFDump Variables(const std::vector<Stats::VariableInformation>& variables) {
    CFDump out = CFDump::Array();
    for (const Stats::VariableInformation& variable : variables) {
        CFDump& item = out.PushObject();
        item.Set("groupIndex", variable.fGroupIndex);
        item.Set("meanOfRank", variable.fMeanOfRank);
        item.Set("table", Table(variable.fTable));
    }
    return out;
}

template <typename Record> const Record* As(const Stats::BaseHypothesisTest& test) {
    return dynamic_cast<const Record*>(&test);
}

// The record's type name and the members its type adds to the base.
void DumpSpecific(const Stats::BaseHypothesisTest& test, CFDump& out, CFDump& specific) {
    const char* record = "BaseHypothesisTest";
    if (auto* chiSquare = As<Stats::HTOChiSquare>(test)) {
        record = "HTOChiSquare";
        specific.Set("table", Table(chiSquare->fTable));
    } else if (auto* binomial = As<Stats::HTOBinomial>(test)) {
        record = "HTOBinomial";
        specific.Set("table", Table(binomial->fTable));
    } else if (auto* ks = As<Stats::HTOKolmogorovSmirnov>(test)) {
        record = "HTOKolmogorovSmirnov";
        specific.Set("isUseSample", ks->fIsUseSample);
        specific.Set("isLowerBound", ks->fIsLowerBound);
    } else if (auto* runs = As<Stats::HTORuns>(test)) {
        record = "HTORuns";
        specific.Set("mean", runs->fMean);
        specific.Set("stdDev", runs->fStdDev);
        specific.Set("observedRunNumber", runs->fObservedRunNumber);
    } else if (auto* wilcoxon = As<Stats::HTOWilcoxonSignedRanks>(test)) {
        record = "HTOWilcoxonSignedRanks";
        specific.Set("hypotheticalMedian", wilcoxon->fHypotheticalMedian);
        specific.Set("observedMedian", wilcoxon->fObservedMedian);
        specific.Set("distribution", Table(wilcoxon->fDistribution));
    } else if (auto* interval = As<Stats::HTOEstimateConfidenceInterval>(test)) {
        record = "HTOEstimateConfidenceInterval";
        CFDump& intervals = specific.SetArray("intervals");
        for (const Stats::IntervalEntry& entry : interval->fIntervals) {
            CFDump& item = intervals.Push(Estimate(entry.fEstimate));
            item.Set("method", entry.fMethod);
        }
    } else if (auto* differences = As<Stats::HTRDifferences>(test)) {
        record = As<Stats::HTRSign>(test) ? "HTRSign" : "HTRWilcoxonSignedRanks";
        specific.Set("negativeDifferences", differences->fNegativeDifferences);
        specific.Set("ties", differences->fTies);
        specific.Set("positiveDifferences", differences->fPositiveDifferences);
        specific.Set("distribution", Table(differences->fDistribution));
    } else if (auto* cochran = As<Stats::HTRCochransQ>(test)) {
        record = "HTRCochransQ";
        specific.Set("table", Table(cochran->fTable));
        specific.Set("comparison", Comparison(cochran->fComparison));
    } else if (auto* mcNemar = As<Stats::HTRMcNemar>(test)) {
        record = "HTRMcNemar";
        specific.Set("comparison", CategoryComparison(mcNemar->fComparison));
    } else if (auto* marginal = As<Stats::HTRMarginalHomogeneity>(test)) {
        record = "HTRMarginalHomogeneity";
        specific.Set("comparison", CategoryComparison(marginal->fComparison));
    } else if (auto* ranks = As<Stats::HTRRanks>(test)) {
        record = As<Stats::HTRFriedmansTwoWayByRanks>(test) ? "HTRFriedmansTwoWayByRanks"
                                                            : "HTRKendallsCoefficient";
        specific.Set("variables", Variables(ranks->fVariables));
        specific.Set("comparison", Comparison(ranks->fComparison));
    } else if (auto* hl = As<Stats::HTHodgesLehmann>(test)) {
        record = As<Stats::HTRHodgesLehmannEstimatePairs>(test) ? "HTRHodgesLehmannEstimatePairs"
                                                                : "HTIHodgesLehmannEstimateGroups";
        specific.Set("estimateName", hl->fEstimateName);
        specific.Set("estimate", Estimate(hl->fEstimate));
    } else if (auto* groups = As<Stats::HTIGroups>(test)) {
        record = As<Stats::HTIMannWhitneyU>(test)        ? "HTIMannWhitneyU"
                 : As<Stats::HTIKolmogorovSmirnov>(test) ? "HTIKolmogorovSmirnov"
                                                         : "HTIWaldWolfowitzRuns";
        specific.Set("groups", Groups(groups->fGroups));
    } else if (auto* moses = As<Stats::HTIMoses>(test)) {
        record = "HTIMoses";
        specific.Set("boxPlot", BoxPlot(moses->fBoxPlot));
    } else if (auto* boxPlot = As<Stats::HTIBoxPlotComparison>(test)) {
        record = As<Stats::HTIKruskalWallis>(test)        ? "HTIKruskalWallis"
                 : As<Stats::HTIJonckheereTerpstra>(test) ? "HTIJonckheereTerpstra"
                                                          : "HTIMedian";
        specific.Set("boxPlot", BoxPlot(boxPlot->fBoxPlot));
        specific.Set("comparison", Comparison(boxPlot->fComparison));
    }
    out.Set("record", record);
}

CFDump Test(const Stats::BaseHypothesisTest& test) {
    CFDump out = CFDump::Object();
    CFDump specific = CFDump::Object();
    DumpSpecific(test, out, specific);
    CFDump& algorithm = out.SetObject("algorithm");
    algorithm.Set("key", Stats::AlgorithmKey(test.fAlgorithm));
    algorithm.Set("value", static_cast<int>(test.fAlgorithm));
    out.Set("title", Stats::AlgorithmTitle(test.fAlgorithm));
    out.Set("classification", static_cast<int>(test.fClassification));
    out.Set("decision", static_cast<int>(test.fDecision));
    out.Set("conditionKey", test.fConditionKey);
    out.Set("conditionParameters", Parameters(test.fConditionParameters));
    out.Set("ordinalAsContinuous", List(test.fOrdinalAsContinuous));
    CFDump& messages = out.SetArray("messages");
    for (const Stats::ConditionMessage& message : test.fMessages) {
        CFDump& item = messages.PushObject();
        item.Set("code", message.fCode);
        item.Set("type", static_cast<int>(message.fType));
        item.Set("count", message.fCount);
        item.Set("parameters", Parameters(message.fParameters));
        item.Set("group", message.fGroup);
    }
    CFDump& statistics = out.SetArray("statistics");
    for (const Stats::StatisticsGroup& group : test.fStatistics) {
        CFDump& item = statistics.PushObject();
        item.Set("name", group.fName);
        CFDump& values = item.SetArray("values");
        for (const Stats::StatisticsValue& value : group.fValues) {
            CFDump& entry = values.PushObject();
            entry.Set("name", value.fName);
            entry.Set("value", value.fValue);
        }
    }
    out.Set("valsNotInCategories", List(test.fValsNotInCategories));
    for (const auto& [key, value] : specific.Members()) {
        out.Set(key, value);
    }
    return out;
}

CFDump Tests(const std::vector<std::unique_ptr<Stats::BaseHypothesisTest>>& tests) {
    CFDump out = CFDump::Array();
    for (const auto& test : tests) {
        out.Push(Test(*test));
    }
    return out;
}

CFDump Datum(const CFDatum& datum) {
    return datum.IsString() ? CFDump(datum.GetString()) : CFDump(datum.GetNumber());
}

CFDump Dictionary(const CFMetaData* metaData) {
    if (!metaData) {
        return CFDump(nullptr);
    }
    CFDump out = CFDump::Array();
    for (int i = 0; i < metaData->GetFieldCount(); ++i) {
        const CFField* field = metaData->GetField(i);
        CFDump& item = out.PushObject();
        item.Set("name", field->GetName());
        item.Set("label", field->GetLabel());
        item.Set("measure", field->GetMeasure());
        item.Set("storage", field->GetStorage());
        CFDump& values = item.SetArray("values");
        const std::vector<CFValue>& labels = field->GetValueLabels();
        for (std::size_t j = 0; j < field->GetValues().size(); ++j) {
            CFDump& value = values.PushObject();
            value.Set("value", Datum(field->GetValues()[j].fDatum));
            value.Set("label", j < labels.size() ? CFDump(labels[j].fLabel) : CFDump(nullptr));
        }
    }
    return out;
}

CFDump FieldInfo(const Stats::FieldInfoRecord& info) {
    CFDump out = CFDump::Object();
    out.Set("fieldIndex", info.fFieldIndex);
    out.Set("variable", info.fVariable ? CFDump(info.fVariable->GetName()) : CFDump(nullptr));
    out.Set("hasInfo", info.fHasInfo);
    out.Set("categorical", info.fIsCategorical);
    out.Set("total", info.fTotal);
    out.Set("min", info.fMin);
    out.Set("max", info.fMax);
    out.Set("mean", info.fMean);
    out.Set("stdDev", info.fStdDev);
    out.Set("ordinalAsContinuous", info.fOrdinalAsContinuous);
    CFDump& values = out.SetArray("values");
    for (const Stats::FieldValueEntry& entry : info.fValues) {
        CFDump& item = values.PushObject();
        item.Set("index", entry.fIndex);
        item.Set("value", entry.fValue.IsString() ? CFDump(entry.fValue.GetString())
                                                  : CFDump(entry.fValue.GetNumber()));
        item.Set("label", entry.fLabel);
    }
    out.Set("distribution", Table(info.fDistribution));
    return out;
}
} // namespace

CFDump NOPROutputStats::Dump() const {
    CFDump out = CFDump::Object();
    CFDump& counts = out.SetObject("counts");
    counts.Set("totalFreq", fTotalFreq);
    counts.Set("totalCount", fTotalCount);
    counts.Set("droppedCount", fDroppedCount);
    counts.Set("badWeightCount", fBadWeightCount);
    counts.Set("droppedFreq", fDroppedFreq);
    counts.Set("numberOfTests", fNumberOfTests);
    CFDump& settings = out.SetObject("settings");
    settings.Set("sigLevel", fSigLevel);
    settings.Set("confidenceLevel", fConfidenceLevel);
    settings.Set("listwise", fIsListwise);
    settings.Set("mcSamples", fMCSamples);
    settings.Set("mcCILevel", fMCCILevel);
    settings.Set("seed", fSeed);
    settings.Set("normalFromSample", fNormalFromSample);
    settings.Set("uniformFromSample", fUniformFromSample);
    settings.Set("exponentialFromSample", fExponentialFromSample);
    out.Set("dictionary", Dictionary(fMetaData.get()));
    out.Set("tests", Tests(fHypothesisTests));
    out.Set("estimates", Tests(fEstimates));
    out.Set("lilliefors", Tests(fLillieforsTests));
    CFDump& fieldInfos = out.SetArray("fieldInfos");
    for (const auto& info : fFieldInfos) {
        fieldInfos.Push(FieldInfo(*info));
    }
    return out;
}
