// libFuzzer target: every input is a data file (CSV; the first byte chooses
// the command and the separator). It is read, and when it reads, the engine
// runs a one-sample command on every variable and each document it writes
// must be well-formed XML. Any crash, hang, leak or sanitizer report is a
// defect.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include <pugixml.hpp>

#include "engine/Engine.h"
#include "engine/data/CsvReader.h"
#include "engine/data/Dataset.h"
#include "engine/data/HostDataSource.h"
#include "host/parser/CommandParser.h"
#include "host/parser/NPTestsGrammar.h"
#include "host/parser/ParsedCommand.h"
#include "host/parser/ParserMessage.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
const char* const kCommands[] = {
    "NPTESTS /ONESAMPLE TEST(ALL) /CRITERIA SEED=1",
    ("NPTESTS /ONESAMPLE TEST(ALL) CHISQUARE BINOMIAL(CLOPPER_PEARSON JEFFREYS LIKELIHOOD) "
     "RUNS"),
    ("NPTESTS /ONESAMPLE TEST(ALL) BINOMIAL(SUCCESSCATEGORICAL=LIST(1 'a') TESTVALUE=0.3) "
     "RUNS(GROUPCATEGORICAL=LIST(1 2 'a' 'b') GROUPCONTINUOUS=CUTPOINT(SAMPLEMEAN)) "
     "/MISSING SCOPE=LISTWISE"),
    ("NPTESTS /ONESAMPLE TEST(ALL) CHISQUARE(EXPECTED=CUSTOM(FREQUENCIES=1 2 CATEGORIES=1 2)) "
     "/CRITERIA SEED=3"),
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::uint8_t choice = data[0];
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    Dataset dataset;
    std::string error;
    if (!ReadDataText(choice & 0x80 ? "fuzz.tsv" : "fuzz.csv", text, nullptr, dataset, error)) {
        return 0;
    }
    // Numeric variables only for KOLMOGOROV_SMIRNOV and WILCOXON would need a
    // plan per variable; the commands above take every variable.
    const std::unique_ptr<VEXA_DataSource> source = HostDataSource(dataset);
    const CommandDescriptor grammar = NPTestsCommandDescriptor();
    ParserMessage message;
    const std::unique_ptr<CommandSpec> command =
        CommandParser(grammar, source.get())
            .Parse(kCommands[choice % (sizeof kCommands / sizeof kCommands[0])], message);
    if (!command) {
        return 0;
    }
    EngineResult result;
    if (RunEngine(dataset, *command, EngineOptions{}, result, error)) {
        for (const SplitDocument& document : result.fDocuments) {
            pugi::xml_document parsed;
            if (!parsed.load_string(document.fDocument.c_str())) {
                std::abort(); // the writer must always write well-formed XML
            }
        }
    }
    return 0;
}
