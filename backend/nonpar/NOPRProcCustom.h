// The procedure object of the nonparametric-tests module and the exported
// factory through which the host obtains it.
#pragma once

#include <cstdint>

#include "host/cf/CFProcCustom.h"

class NOPROutputStats;
class BpHeading;

class NOPRProcCustom final : public CFProcCustom {
public:
    NOPRProcCustom();
    NOPRProcCustom(BpProcedure* procedure, ProcedureDataSource* dataSource);
    NOPRProcCustom(const NOPRProcCustom& other);
    NOPRProcCustom& operator=(const NOPRProcCustom& other);
    ~NOPRProcCustom() override;

    bool ReadCommand(CommandSpec* command, CommandDescriptor* descriptor) override;
    bool ProduceOutput(std::vector<std::string>& vPMMLStr,
                       std::vector<CFSplitDocument>& splits) override;
    bool ProduceSplitOutput(std::string& pmml, CFSplitDocument& split) override;
    CFDump DumpSettings() const override;

    // The heading that names a split ("var = value, ..."), or null when the
    // split is not shown under a heading of its own. The caller owns it.
    static BpHeading* MakeSplitHeading(const NOPROutputStats& stats, BpProcedure* procedure);

    // The command gives these their values (ReadCommand); until then they hold
    // the defaults, so that a procedure driven without a command is defined.
    bool fNormalFromSample = false;
    bool fUniformFromSample = false;
    bool fExponentialFromSample = false;
    std::int32_t fMCSamples = 10000;
    double fMCCILevel = 99.0;
};

// The module's one export: a new procedure object, owned by the caller.
extern "C" __attribute__((visibility("default"))) CFProcCustom* GetCFProcCustom();
