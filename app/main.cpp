// nptests: renders the result documents of the nonparametric-tests engine.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "app/CommandCheck.h"
#include "app/DataSourceBuilder.h"
#include "app/DumpJson.h"
#include "app/ModuleLoader.h"
#include "host/cf/CFDump.h"
#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFProcCustom.h"
#include "host/parser/CommandParser.h"
#include "host/parser/CommandSpec.h"
#include "host/parser/NPTestsGrammar.h"
#include "host/parser/ParserMessage.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
constexpr int kExitOk = 0;
constexpr int kExitRejected = 1;
constexpr int kExitUsage = 2;

bool ReadFile(const std::string& path, std::string& text, std::string& error) {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) {
        error = "is a directory";
        return false;
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        error = std::strerror(errno);
        return false;
    }
    std::ostringstream buffer;
    buffer << in.rdbuf();
    if (in.bad()) {
        error = "read error";
        return false;
    }
    text = std::move(buffer).str();
    return true;
}

// The data source: from the dictionary file when one is given, else from the
// first document's data dictionary. Null after a message on failure.
std::unique_ptr<VEXA_DataSource> BuildDataSource(const std::string& dictionaryPath,
                                                 const std::vector<CFSplitDocument>& splits,
                                                 int& exitCode) {
    std::string text, error;
    exitCode = kExitUsage;
    if (!dictionaryPath.empty()) {
        if (!ReadFile(dictionaryPath, text, error)) {
            std::cerr << "nptests: cannot read " << dictionaryPath << ": " << error << "\n";
            return nullptr;
        }
        std::unique_ptr<VEXA_DataSource> source = DataSourceFromDictionary(text, error);
        if (!source) {
            std::cerr << "nptests: " << dictionaryPath << " is not a dictionary: " << error << "\n";
        }
        return source;
    }
    if (splits.empty()) {
        std::cerr << "nptests: --check-command needs the variables of the data: give "
                     "--dictionary FILE or a result document\n";
        return nullptr;
    }
    std::unique_ptr<VEXA_DataSource> source =
        DataSourceFromDocument(splits.front().fResultDocument, error);
    if (!source) {
        exitCode = kExitRejected;
        std::cerr << "nptests: " << splits.front().fSource << " is not a result document: " << error
                  << "\n";
    }
    return source;
}
} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Renders the result documents of the nonparametric-tests engine (one per "
                 "split of the data, in split order).",
                 "nptests"};
    std::vector<std::string> documents;
    bool dumpModel = false;
    std::string modulePath;
    std::string commandOption = "NPTESTS.";
    std::string dictionaryPath;
    bool checkCommand = false;
    app.add_option("documents", documents, "result documents, one per split")
        ->type_name("RESULT.xml");
    app.add_option("-c,--command", commandOption,
                   "the NPTESTS command, or @FILE to read it from a file (default: NPTESTS.)")
        ->type_name("TEXT|@FILE");
    app.add_option("--dictionary", dictionaryPath,
                   "JSON: the variables of the data (default: the first document's dictionary)")
        ->type_name("FILE");
    app.add_flag("--check-command", checkCommand,
                 "print what the command yields as JSON (exit status 2 when the command "
                 "cannot be run); needs --dictionary or a document");
    app.add_flag("--dump-model", dumpModel,
                 "print what was read from each document as JSON (a debugging aid)");
    app.add_option("--module", modulePath, "the procedure module to load")->type_name("FILE");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? kExitOk : kExitUsage;
    }
    if (documents.empty() && !checkCommand) {
        std::cerr << "nptests: no result document given\nRun with --help for more information.\n";
        return kExitUsage;
    }

    std::vector<CFSplitDocument> splits(documents.size());
    for (size_t i = 0; i < documents.size(); ++i) {
        std::string error;
        if (!ReadFile(documents[i], splits[i].fResultDocument, error)) {
            std::cerr << "nptests: cannot read " << documents[i] << ": " << error << "\n";
            return kExitRejected;
        }
        splits[i].fSource = documents[i];
    }

    int exitCode = kExitOk;
    std::unique_ptr<VEXA_DataSource> dataSource = BuildDataSource(dictionaryPath, splits, exitCode);
    if (!dataSource) {
        return exitCode;
    }

    std::string error;
    std::string commandText = commandOption;
    if (!commandOption.empty() && commandOption.front() == '@' &&
        !ReadFile(commandOption.substr(1), commandText, error)) {
        std::cerr << "nptests: cannot read " << commandOption.substr(1) << ": " << error << "\n";
        return kExitUsage;
    }
    CommandDescriptor grammar = NPTestsCommandDescriptor();
    ParserMessage syntax;
    std::unique_ptr<CommandSpec> command =
        CommandParser(grammar, dataSource.get()).Parse(commandText, syntax);
    if (!command) {
        std::cerr << syntax.GetErrorText() << "\n";
        return kExitUsage;
    }

    ModuleLoader loader;
    if (!loader.Load(modulePath.empty() ? ModuleLoader::DefaultPath() : modulePath)) {
        std::cerr << "nptests: " << loader.Error() << "\n";
        return kExitUsage;
    }
    std::unique_ptr<CFProcCustom> procedure = loader.Create();
    if (!procedure) {
        std::cerr << "nptests: " << loader.Error() << "\n";
        return kExitUsage;
    }
    procedure->fDataSource = dataSource.get();

    CFErrorChannel::SetListener(
        [](const CFMessage& message) { std::cerr << "nptests: " << message.fText << "\n"; });

    CFErrorChannel::Clear();
    const bool commandOk = procedure->ReadCommand(command.get(), &grammar);
    if (checkCommand) {
        std::cout << CommandCheckJson(commandOk, *procedure, *dataSource,
                                      CFErrorChannel::Messages())
                         .dump(2)
                  << "\n";
        return commandOk ? kExitOk : kExitUsage;
    }
    if (!commandOk) {
        std::cerr << "nptests: the " << grammar.getCommandName() << " command cannot be run\n";
        return kExitUsage;
    }

    std::vector<CFDump> dumps;
    if (dumpModel) {
        procedure->fModelDumps = &dumps;
    }
    std::vector<std::string> models;
    const bool ok = procedure->ProduceOutput(models, splits);

    if (dumpModel) {
        nlohmann::ordered_json out = nlohmann::ordered_json::array();
        for (size_t i = 0; i < dumps.size(); ++i) {
            nlohmann::ordered_json entry = nlohmann::ordered_json::object();
            entry["document"] = documents[i];
            entry["model"] = DumpToJson(dumps[i]);
            out.push_back(std::move(entry));
        }
        std::cout << out.dump(2) << "\n";
    }
    if (!ok) {
        for (const CFSplitDocument& split : splits) {
            if (split.WasRead()) {
                error = split.fSource;
            }
        }
        std::cerr << "nptests: " << error
                  << ": not a readable nonparametric-tests result document\n";
        return kExitRejected;
    }
    return kExitOk;
}
