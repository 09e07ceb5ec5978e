// The procedure object: reads the NPTESTS command into its settings and the
// list of variables to read, then reads each split's result document into a
// result model and has it shown under the split's heading.
#include "backend/nonpar/NOPRProcCustom.h"

#include <algorithm>
#include <memory>
#include <new>

#include "backend/nonpar/NOPROutput.h"
#include "backend/nonpar/NOPROutputStats.h"
#include "backend/nonpar/NOPRParseOutXML.h"
#include "host/bp/BpOutput.h"
#include "host/cf/CFAssert.h"
#include "host/cf/CFDump.h"
#include "host/cf/CFSysmis.h"
#include "host/parser/CommandDescriptor.h"
#include "host/parser/NPTestsGrammar.h"
#include "host/parser/ParsedCommand.h"
#include "host/parser/ParserMessage.h"
#include "host/parser/ParserText.h"
#include "host/parser/VarSpecObj.h"

#define CF_ASSERT_SOURCE "backend/nonpar/NOPRProcCustom"

CFProcCustom* GetCFProcCustom() {
    return new (std::nothrow) NOPRProcCustom();
}

NOPRProcCustom::NOPRProcCustom() : CFProcCustom() {}

NOPRProcCustom::NOPRProcCustom(BpProcedure* procedure, ProcedureDataSource* dataSource)
    : CFProcCustom(procedure, dataSource), fNormalFromSample(false), fUniformFromSample(false),
      fExponentialFromSample(false), fMCSamples(10000), fMCCILevel(99.0) {}

NOPRProcCustom::NOPRProcCustom(const NOPRProcCustom& other)
    : CFProcCustom(other), fNormalFromSample(other.fNormalFromSample),
      fUniformFromSample(other.fUniformFromSample),
      fExponentialFromSample(other.fExponentialFromSample), fMCSamples(other.fMCSamples),
      fMCCILevel(other.fMCCILevel) {}

NOPRProcCustom& NOPRProcCustom::operator=(const NOPRProcCustom& other) {
    CFProcCustom::operator=(other);
    fNormalFromSample = other.fNormalFromSample;
    fUniformFromSample = other.fUniformFromSample;
    fExponentialFromSample = other.fExponentialFromSample;
    fMCSamples = other.fMCSamples;
    fMCCILevel = other.fMCCILevel;
    return *this;
}

NOPRProcCustom::~NOPRProcCustom() = default;

namespace {
// Validates the variables of a TEST keyword (with `checker`, whose error
// reporting is off) and appends the valid ones to `toRead`. True when there
// were valid variables.
bool AppendTestVariables(const ParamObj* test, VarSpecObj& checker, std::vector<int>& toRead) {
    std::vector<std::string> names;
    if (!test || !test->getVarList(names) || names.empty() ||
        !checker.ValidateVariables(names, VarSpecObj::kRepeatDrop)) {
        return false;
    }
    const std::vector<int>& valid = checker.GetValidVarList();
    toRead.insert(toRead.end(), valid.begin(), valid.end());
    return true;
}

// The text value of a keyword ("TRUE", "RANDOM"), or "" when it has none.
std::string TextValue(const ParamObj& keyword) {
    std::string text;
    const ParamObj* qualifier = nullptr;
    if (!keyword.isStringValueCase() || !keyword.getStringAndQual(text, qualifier)) {
        return std::string();
    }
    return ToUpper(text);
}

} // namespace

bool NOPRProcCustom::ReadCommand(CommandSpec* command, CommandDescriptor* descriptor) {
    if (command == nullptr || descriptor == nullptr) {
        return true;
    }
    ParserMessage message;
    message.SetCommandName(descriptor->getCommandName());
    message.SetProcedureTitle(descriptor->getProcedureTitle());

    std::vector<int> toRead = fHostVariables;
    if (fExtraVariable >= 0) {
        toRead.push_back(fExtraVariable);
    }

    fSeed = 2000000;
    fNormalFromSample = false;
    fUniformFromSample = false;
    fExponentialFromSample = false;
    fMCSamples = 10000;
    fMCCILevel = 99.0;
    bool sampleRequested = false;

    if (const SubComObj* pOneSamp = command->getSubComObj("ONESAMPLE")) {
        const SubComDescriptor* pOneSampDesc = descriptor->getSubComDesc("ONESAMPLE");
        CF_ASSERT(pOneSampDesc != 0);

        const ParamObj* pTest = pOneSamp->getParamObj("TEST");
        VarSpecObj testSpec(pTest, pOneSamp, descriptor, fDataSource, false);
        testSpec.SetErrorReport(false);
        AppendTestVariables(pTest, testSpec, toRead);

        if (const ParamObj* pKolmSmirn = pOneSamp->getParamObj("KOLMOGOROV_SMIRNOV")) {
            const ParamDescriptor* pKolmSmirnDesc =
                pOneSampDesc->getParamDesc("KOLMOGOROV_SMIRNOV");
            CF_ASSERT(pKolmSmirnDesc != 0);
            KolmogorovRequest request;
            if (!ReadKolmogorovRequest(*pKolmSmirn, pKolmSmirnDesc, request)) {
                return false;
            }
            if (request.fSamples) {
                fMCSamples = request.fSamples->getIntegerValue();
            }
            if (request.fLevel) {
                fMCCILevel = request.fLevel->getNumberValue();
            }
            // NORMAL looks at the value of SAMPLE; the other distributions
            // take SAMPLE as given, whatever its value.
            fNormalFromSample = request.fNormal.fMonteCarlo;
            fUniformFromSample = request.fUniform.fMonteCarlo;
            fExponentialFromSample = request.fExponential.fMonteCarlo;
            sampleRequested = sampleRequested || fNormalFromSample || fUniformFromSample ||
                              fExponentialFromSample;
            if (request.fPoissonSampleIgnored) {
                message.GenericWarning("K-S Poisson Sample ignored ...");
            }
        }
    }

    if (const SubComObj* pIndep = command->getSubComObj("INDEPENDENT")) {
        const ParamObj* pTest = pIndep->getParamObj("TEST");
        VarSpecObj testSpec(pTest, pIndep, descriptor, fDataSource, false);
        testSpec.SetErrorReport(false);
        const bool testValid = AppendTestVariables(pTest, testSpec, toRead);

        const ParamObj* pGroup = pIndep->getParamObj("GROUP");
        VarSpecObj groupSpec(pGroup, pIndep, descriptor, fDataSource, false);
        groupSpec.SetErrorReport(false);
        bool groupValid = false;
        const std::string groupName = pGroup ? pGroup->getVarName() : std::string();
        if (!groupName.empty()) {
            const int index = groupSpec.ValidateVariable(groupName);
            if (index >= 0) {
                toRead.push_back(index);
                groupValid = true;
            }
        }
        if (testValid && groupValid) {
            testSpec.SetErrorReport(true);
            groupSpec.SetErrorReport(true);
            if (!groupSpec.CheckCommonVars(testSpec)) {
                return false;
            }
        }
    }

    if (const SubComObj* pRelated = command->getSubComObj("RELATED")) {
        const ParamObj* pTest = pRelated->getParamObj("TEST");
        VarSpecObj testSpec(pTest, pRelated, descriptor, fDataSource, false);
        testSpec.SetErrorReport(false);
        AppendTestVariables(pTest, testSpec, toRead);
    }
    if (sampleRequested) {
        fSeedFromHost = true;
    }

    // The seed matters only to the sample-based tests; without one, SEED is ignored.
    const SubComObj* pCriteria = command->getSubComObj("CRITERIA");
    const ParamObj* pSeed = pCriteria ? pCriteria->getParamObj("SEED") : nullptr;
    if (pSeed && sampleRequested && TextValue(*pSeed) != "RANDOM") {
        fSeed = pSeed->getIntegerValue();
        fSeedFromHost = false;
    }
    if (fSeedFromHost) {
        fSeed = GetNextSeed();
    }

    std::sort(toRead.begin(), toRead.end());
    toRead.erase(std::unique(toRead.begin(), toRead.end()), toRead.end());
    if (!toRead.empty()) {
        fVariablesToRead = std::move(toRead);
    }
    return true;
}

CFDump NOPRProcCustom::DumpSettings() const {
    CFDump settings = CFDump::Object();
    settings.Set("normalFromSample", fNormalFromSample);
    settings.Set("uniformFromSample", fUniformFromSample);
    settings.Set("exponentialFromSample", fExponentialFromSample);
    settings.Set("mcSamples", fMCSamples);
    settings.Set("mcCILevel", fMCCILevel);
    const CFDump base = CFProcCustom::DumpSettings();
    for (const auto& [key, value] : base.Members()) {
        settings.Set(key, value);
    }
    return settings;
}

bool NOPRProcCustom::ProduceOutput(std::vector<std::string>& vPMMLStr,
                                   std::vector<CFSplitDocument>& splits) {
    CF_ASSERT(vPMMLStr.size() == 0);
    std::string shared;
    const std::size_t nSplits = splits.size();
    CF_ASSERT(nSplits > 0);
    bool result = true;
    for (std::size_t index = 0; index < nSplits; ++index) {
        result = ProduceSplitOutput(shared, splits[index]);
        if (!result) {
            break;
        }
    }
    return result;
}

bool NOPRProcCustom::ProduceSplitOutput(std::string&, CFSplitDocument& split) {
    auto stats = std::make_unique<NOPROutputStats>();
    stats->fSeed = fSeed;
    stats->fNormalFromSample = fNormalFromSample;
    stats->fUniformFromSample = fUniformFromSample;
    stats->fExponentialFromSample = fExponentialFromSample;
    stats->fMCSamples = fMCSamples;
    stats->fMCCILevel = fMCCILevel;
    stats->SetDataSource(fDataSource);
    stats->SetHostContext(fHostContext);
    stats->SetSplit(&split);

    auto parser =
        std::make_unique<OutputXMLParser>(fDataSource, stats.get(), split.ResultDocument());
    const bool result = parser->Parse();
    if (fModelDumps) {
        fModelDumps->push_back(stats->Dump());
    }
    if (result && fProcedure) {
        // Declared in this order, the output goes before the heading it
        // writes under, and both before the reader and the model.
        std::unique_ptr<BpHeading> heading(MakeSplitHeading(*stats, fProcedure));
        auto output =
            std::make_unique<NOPROutput>(fProcedure, heading.get(), fDataSource, stats.get());
        output->MakeOutput();
    }
    return result;
}

BpHeading* NOPRProcCustom::MakeSplitHeading(const NOPROutputStats& stats, BpProcedure* procedure) {
    const VEXA_DataSource* dataSource = stats.GetDataSource();
    const CFSplitDocument* split = stats.GetSplit();
    if (!dataSource || !procedure || !split || split->fSplitVariables.empty() || !split->fHeading) {
        return nullptr;
    }
    BpComposite text("[%1 = %2:, ^1 = ^2:]1", false);
    text.Sublist();
    for (std::size_t k = 0; k < split->fSplitVariables.size(); ++k) {
        const VEXA_Variable* variable = dataSource->GetVariable(split->fSplitVariables[k]);
        const double value = k < split->fSplitValues.size() ? split->fSplitValues[k] : kCFSysmis;
        text.Add(BpVariable(variable, 2));
        text.Add(BpDataValue(variable, value, 2));
    }
    text.EndSublist();
    text.Finish();
    return new (std::nothrow) BpHeading(procedure->Heading(text));
}
