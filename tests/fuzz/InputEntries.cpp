// The entries over the --splits file, the --dictionary file and the command
// text.
#include "tests/fuzz/InputEntries.h"

#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "app/DataSourceBuilder.h"
#include "app/SplitPlan.h"
#include "backend/nonpar/NOPRProcCustom.h"
#include "host/bp/BpOutput.h"
#include "host/cf/CFAssert.h"
#include "host/cf/CFErrorChannel.h"
#include "host/fac/FacSTDictionary.h"
#include "host/parser/CommandParser.h"
#include "host/parser/NPTestsGrammar.h"
#include "host/parser/ParsedCommand.h"
#include "host/parser/ParserMessage.h"
#include "host/vexa/VEXA_DataSource.h"
#include "render/Renderer.h"

namespace {
// The variables the command text is parsed against: those of the minimal
// example and a few of every kind.
constexpr const char* kDictionary = R"({"variables": [
  {"name": "group", "label": "Group", "measure": "nominal", "format": "F8.0",
   "valueLabels": [{"value": 1, "label": "A"}, {"value": 2, "label": "B"}]},
  {"name": "case_id", "label": "Case ID", "measure": "scale"},
  {"name": "score", "measure": "scale", "format": "F8.2"},
  {"name": "rank", "measure": "ordinal"},
  {"name": "site", "type": "string", "width": 8, "measure": "nominal",
   "valueLabels": [{"value": "north", "label": "North"}]}]})";

const std::string& MinimalDocument() {
    static const std::string text = [] {
        std::ifstream in(std::string(NPTESTS_EXAMPLES_DIR) + "/minimal.xml", std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }();
    return text;
}

const FacSTDictionary& Strings() {
    static const FacSTDictionary* const strings = [] {
        auto* dictionary = new FacSTDictionary(PathFactory::getPathInstance(PathFactory::kStrings));
        dictionary->SetProcedure("Nonparametric Tests");
        return dictionary;
    }();
    return *strings;
}

// Reads and writes the minimal document with `procedure` over `dataSource`
// and renders the output as text.
void WriteMinimal(NOPRProcCustom& procedure, VEXA_DataSource& dataSource) {
    std::vector<CFSplitDocument> splits(1);
    splits[0].fResultDocument = MinimalDocument();
    BpProcedure output("Nonparametric Tests", &Strings(), &dataSource);
    procedure.fProcedure = &output;
    procedure.fDataSource = &dataSource;
    std::vector<std::string> models;
    procedure.ProduceOutput(models, splits);
    if (Renderer::Make(Renderer::kText)
            ->Render(output.Root(), CFErrorChannel::Messages())
            .empty()) {
        __builtin_trap(); // a renderer always writes at least the procedure's title
    }
    procedure.fProcedure = nullptr;
}

// Runs `body` with the throwing assertion handler and a clear error channel;
// false when a named assertion fired.
template <typename Body> bool Guarded(Body&& body) {
    const CFAssertHandler previous = CFSetAssertHandler(CFThrowingAssertHandler);
    CFErrorChannel::Clear();
    bool result = false;
    try {
        result = body();
    } catch (const CFAssertionFailure&) {
        result = false;
    }
    CFErrorChannel::Clear();
    CFSetAssertHandler(previous);
    return result;
}
} // namespace

bool RunSplitsFile(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    SplitPlan plan;
    std::string error;
    const bool read = ReadSplitPlan("folder/splits.json", text, plan, error);
    if (!read && error.empty()) {
        __builtin_trap(); // a refused plan always says why
    }
    return read;
}

bool RunDictionaryFile(const std::uint8_t* data, std::size_t size) {
    return Guarded([&] {
        const std::string text(reinterpret_cast<const char*>(data), size);
        std::string error;
        const std::unique_ptr<VEXA_DataSource> dataSource = DataSourceFromDictionary(text, error);
        if (!dataSource) {
            return false;
        }
        NOPRProcCustom procedure;
        WriteMinimal(procedure, *dataSource);
        return true;
    });
}

bool RunCommandText(const std::uint8_t* data, std::size_t size) {
    static const std::unique_ptr<VEXA_DataSource> dataSource = [] {
        std::string error;
        return DataSourceFromDictionary(kDictionary, error);
    }();
    return Guarded([&] {
        const std::string text(reinterpret_cast<const char*>(data), size);
        CommandDescriptor grammar = NPTestsCommandDescriptor();
        ParserMessage syntax;
        const std::unique_ptr<CommandSpec> command =
            CommandParser(grammar, dataSource.get()).Parse(text, syntax);
        if (!command) {
            return false;
        }
        NOPRProcCustom procedure;
        procedure.fDataSource = dataSource.get();
        if (!procedure.ReadCommand(command.get(), &grammar)) {
            return false;
        }
        WriteMinimal(procedure, *dataSource);
        return true;
    });
}
