// The host's custom-procedure base class and its record of one split of the
// data. A procedure module derives from CFProcCustom; the host drives it
// through the virtual operations, in this slot order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/vexa/VEXA_DataSource.h"

class BpProcedure;
class CommandSpec;
class CommandDescriptor;
class CFDump;

// One split of the data, as the host hands it to the procedure.
class CFSplitDocument final {
public:
    std::vector<int> fSplitVariables; // variables that define the split
    std::vector<double> fSplitValues; // the split's value of each split variable
    bool fHeading = true;             // each split under a heading of its own
    std::string fResultDocument;      // the engine's result document
    std::string fSource;              // where the document came from (for messages)

    // The result document; marks the split as handed out, so that the host
    // can tell which split a failed run stopped at.
    const std::string& ResultDocument() const {
        fWasRead = true;
        return fResultDocument;
    }
    bool WasRead() const { return fWasRead; }

private:
    mutable bool fWasRead = false;
};

class CFProcCustom {
public:
    CFProcCustom() = default;
    CFProcCustom(BpProcedure* procedure, ProcedureDataSource* dataSource)
        : fProcedure(procedure), fDataSource(dataSource) {}
    CFProcCustom(const CFProcCustom&) = default;
    CFProcCustom& operator=(const CFProcCustom&) = default;

    // Slot 0.
    virtual ~CFProcCustom();
    // Slot 1: reads the parsed command; false when it cannot be run.
    virtual bool ReadCommand(CommandSpec* command, CommandDescriptor* descriptor);
    // Slot 2: shows the engine's results, one document per split.
    virtual bool ProduceOutput(std::vector<std::string>& vPMMLStr,
                               std::vector<CFSplitDocument>& splits);
    // Slot 3: shows one split.
    virtual bool ProduceSplitOutput(std::string& pmml, CFSplitDocument& split);
    // Slot 4: keeps the statistics documents given as JSON texts.
    virtual void SetStatJSON(const std::vector<std::string>& json);
    // Slot 5: shows what SetStatJSON kept; the base has nothing to show.
    virtual bool ProcessOutputJSON();

    // The settings the command gave (seed and whether the host supplies it;
    // a procedure adds its own), for showing what a command yields.
    virtual CFDump DumpSettings() const;

    // A fresh seed from the host's random-number generator.
    int GetNextSeed();

    // Members the host sets up and the procedure reads or writes.
    BpProcedure* fProcedure = nullptr;          // output goes under its heading
    ProcedureDataSource* fDataSource = nullptr; // the active data source
    void* fHostContext = nullptr;               // handed unchanged into the model
    std::vector<int> fVariablesToRead;          // what the engine must read
    std::int32_t fSeed = 2000000;               // random-number seed
    bool fSeedFromHost = false;                 // take the seed from the host's generator
    std::vector<int> fHostVariables;            // always read
    int fExtraVariable = -1;                    // always read when 0 or more
    std::vector<std::string> fStatJSON;         // kept by SetStatJSON

    // When set, the procedure appends a dump of each split's result model
    // here after reading it (a debugging aid of the command line).
    std::vector<CFDump>* fModelDumps = nullptr;
};
