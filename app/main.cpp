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

#include "app/DataSourceBuilder.h"
#include "app/DumpJson.h"
#include "app/ModuleLoader.h"
#include "host/cf/CFDump.h"
#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFProcCustom.h"
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
} // namespace

int main(int argc, char** argv) {
    CLI::App app{"Renders the result documents of the nonparametric-tests engine (one per "
                 "split of the data, in split order).",
                 "nptests"};
    std::vector<std::string> documents;
    bool dumpModel = false;
    std::string modulePath;
    app.add_option("documents", documents, "result documents, one per split")
        ->required()
        ->type_name("RESULT.xml");
    app.add_flag("--dump-model", dumpModel,
                 "print what was read from each document as JSON (a debugging aid)");
    app.add_option("--module", modulePath, "the procedure module to load")->type_name("FILE");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e) == 0 ? kExitOk : kExitUsage;
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

    std::string error;
    std::unique_ptr<VEXA_DataSource> dataSource =
        DataSourceFromDocument(splits.front().fResultDocument, error);
    if (!dataSource) {
        std::cerr << "nptests: " << documents.front() << " is not a result document: " << error
                  << "\n";
        return kExitRejected;
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
