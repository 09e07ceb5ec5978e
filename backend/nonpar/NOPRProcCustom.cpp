// The procedure object: reads each split's result document into a result
// model and has it shown under the split's heading.
#include "backend/nonpar/NOPRProcCustom.h"

#include <memory>
#include <new>

#include "backend/nonpar/NOPROutputStats.h"
#include "backend/nonpar/NOPRParseOutXML.h"
#include "host/cf/CFAssert.h"
#include "host/cf/CFDump.h"

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

bool NOPRProcCustom::ReadCommand(CommandSpec*, CommandDescriptor*) {
    return true;
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
    return result;
}

BpHeading* NOPRProcCustom::MakeSplitHeading(const NOPROutputStats&, BpProcedure*) {
    return nullptr;
}
