// The grammar of the NPTESTS command (the nonparametric tests).
#pragma once

#include "host/parser/CommandDescriptor.h"

// NPTESTS with its subcommands ONESAMPLE, INDEPENDENT, RELATED, CRITERIA,
// MISSING and PRINT, every test keyword with its options (docs/command.md
// describes them).
CommandDescriptor NPTestsCommandDescriptor();
