// The grammar of the NPTESTS command (the nonparametric tests).
#pragma once

#include "host/parser/CommandDescriptor.h"

// NPTESTS with its subcommands ONESAMPLE, INDEPENDENT, RELATED, CRITERIA,
// MISSING and PRINT, every test keyword with its options (docs/command.md
// describes them).
CommandDescriptor NPTestsCommandDescriptor();

class ParamObj;
class ParamDescriptor;

// What KOLMOGOROV_SMIRNOV asks for, as the procedure and the engine both read
// it: each distribution named (with its CUSTOM(...) parameters when given),
// and whether SAMPLE asks for the Monte Carlo significance of parameters
// estimated in every sample: for NORMAL when SAMPLE stands alone or is TRUE,
// for UNIFORM and EXPONENTIAL whatever its value, never for POISSON (whose
// SAMPLE is ignored).
struct KolmogorovRequest {
    struct Distribution {
        bool fNamed = false;
        bool fMonteCarlo = false;
        const ParamObj* fCustom = nullptr; // CUSTOM(...), when given
    };
    Distribution fNormal;
    Distribution fUniform;
    Distribution fExponential;
    Distribution fPoisson;
    bool fPoissonSampleIgnored = false;
    const ParamObj* fSamples = nullptr; // NSAMPLES=n
    const ParamObj* fLevel = nullptr;   // MC_CILEVEL=x
};

// Reads the keyword KOLMOGOROV_SMIRNOV (its qualifiers checked against
// `descriptor` when given); false when its qualifiers cannot be read.
bool ReadKolmogorovRequest(const ParamObj& keyword, const ParamDescriptor* descriptor,
                           KolmogorovRequest& request);
