// The grammar of the NPTESTS command (the nonparametric tests).
#pragma once

#include "host/parser/CommandDescriptor.h"

// NPTESTS with its subcommands ONESAMPLE, INDEPENDENT, RELATED, CRITERIA,
// MISSING and PRINT. The keywords that the procedure reads are typed (TEST,
// GROUP, KOLMOGOROV_SMIRNOV of ONESAMPLE with its qualifiers, SEED, ...); the
// tests of each family that only the engine reads are opaque.
CommandDescriptor NPTestsCommandDescriptor();
