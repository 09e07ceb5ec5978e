// One run of nptests: builds the splits and the data source, loads the
// module, has it write its output tree, and renders that tree.
#include "app/Run.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/DataSourceBuilder.h"
#include "app/DumpJson.h"
#include "app/ModuleLoader.h"
#include "app/Options.h"
#include "app/SplitPlan.h"
#include "host/bp/BpOutput.h"
#include "host/cf/CFDump.h"
#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFProcCustom.h"
#include "host/fac/FacSTDictionary.h"
#include "host/vexa/VEXA_DataSource.h"
#include "render/Renderer.h"

namespace {
constexpr const char* kProcedureTitle = "Nonparametric Tests";

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
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (in.bad()) {
        error = "read error";
        return false;
    }
    return true;
}

bool WriteOutput(const std::string& path, const std::string& text) {
    if (path.empty()) {
        return std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
               std::fflush(stdout) == 0;
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) {
        std::cerr << "nptests: cannot write " << path << ": " << std::strerror(errno) << "\n";
        return false;
    }
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    if (!out) {
        std::cerr << "nptests: cannot write " << path << "\n";
        return false;
    }
    return true;
}

// The splits to run, from the documents on the command line or the --splits
// file; false after a usage message.
bool PlanSplits(const Options& options, SplitPlan& plan) {
    if (options.fSplitsFile.empty()) {
        plan.fHeading = true;
        for (const std::string& document : options.fDocuments) {
            plan.fSplits.push_back({document, {}});
        }
        return true;
    }
    std::string text, error;
    if (!ReadFile(options.fSplitsFile, text, error)) {
        std::cerr << "nptests: cannot read " << options.fSplitsFile << ": " << error << "\n";
        return false;
    }
    if (!ReadSplitPlan(options.fSplitsFile, text, plan, error)) {
        std::cerr << "nptests: " << options.fSplitsFile << ": " << error << "\n";
        return false;
    }
    return true;
}

// Reads the documents in order; stops at the first that cannot be read and
// returns how many were read (each message reported).
size_t ReadDocuments(const SplitPlan& plan, std::vector<CFSplitDocument>& splits) {
    splits.resize(plan.fSplits.size());
    for (size_t i = 0; i < plan.fSplits.size(); ++i) {
        std::string error;
        splits[i].fSource = plan.fSplits[i].fDocument;
        splits[i].fHeading = plan.fHeading;
        splits[i].fSplitValues = plan.fSplits[i].fValues;
        if (!ReadFile(plan.fSplits[i].fDocument, splits[i].fResultDocument, error)) {
            CFErrorChannel::Error("cannot read " + plan.fSplits[i].fDocument + ": " + error);
            return i;
        }
    }
    return splits.size();
}

// The split variables by index in the data source; false after a usage message.
bool ResolveSplitVariables(const SplitPlan& plan, const VEXA_DataSource& dataSource,
                           std::vector<CFSplitDocument>& splits) {
    std::vector<int> indices;
    for (const std::string& name : plan.fVariables) {
        const int index = dataSource.FindVarIndex(name);
        if (index < 0) {
            std::cerr << "nptests: the split variable " << name << " is not a variable of "
                      << plan.fSplits.front().fDocument << "\n";
            return false;
        }
        indices.push_back(index);
    }
    for (CFSplitDocument& split : splits) {
        split.fSplitVariables = indices;
    }
    return true;
}

// Keys looked up without an entry, listed after the run.
class MissingStrings final {
public:
    explicit MissingStrings(bool on) : fOn(on) {
        if (fOn) {
            FacSTDictionary::SetMissRecorder([this](std::string_view key) {
                if (key.find_first_not_of(" ") != std::string_view::npos) {
                    fKeys.emplace(key);
                }
            });
        }
    }
    ~MissingStrings() {
        if (!fOn) {
            return;
        }
        FacSTDictionary::SetMissRecorder({});
        for (const std::string& key : fKeys) {
            std::string shown;
            for (char c : key) {
                shown += c == '\n' ? std::string("\\n") : std::string(1, c);
            }
            std::cerr << "nptests: no text for the key \"" << shown << "\"\n";
        }
    }
    MissingStrings(const MissingStrings&) = delete;
    MissingStrings& operator=(const MissingStrings&) = delete;

private:
    bool fOn;
    std::set<std::string> fKeys;
};

int DumpModels(const std::vector<CFDump>& dumps, const std::vector<CFSplitDocument>& splits,
               const Options& options, bool ok) {
    nlohmann::ordered_json out = nlohmann::ordered_json::array();
    for (size_t i = 0; i < dumps.size() && i < splits.size(); ++i) {
        nlohmann::ordered_json entry = nlohmann::ordered_json::object();
        entry["document"] = splits[i].fSource;
        entry["model"] = DumpToJson(dumps[i]);
        out.push_back(std::move(entry));
    }
    if (!WriteOutput(options.fOutput, out.dump(2) + "\n")) {
        return kExitUsage;
    }
    return ok ? kExitOk : kExitRejected;
}
} // namespace

int Run(const Options& options) {
    SplitPlan plan;
    if (!PlanSplits(options, plan)) {
        return kExitUsage;
    }
    CFErrorChannel::Clear();
    CFErrorChannel::SetListener(
        [](const CFMessage& message) { std::cerr << "nptests: " << message.fText << "\n"; });

    std::vector<CFSplitDocument> splits;
    size_t readable = ReadDocuments(plan, splits);
    std::unique_ptr<VEXA_DataSource> dataSource;
    if (readable > 0) {
        std::string error;
        dataSource = DataSourceFromDocument(splits.front().fResultDocument, error);
        if (!dataSource) {
            CFErrorChannel::Error(splits.front().fSource + " is not a result document: " + error);
            readable = 0;
        } else if (!ResolveSplitVariables(plan, *dataSource, splits)) {
            return kExitUsage;
        }
    }
    if (!dataSource) {
        dataSource = std::make_unique<VEXA_DataSource>();
    }

    if (options.fNoCharts) {
        // The module's own switch: "2" turns every chart off.
        setenv("DEBUG_MODEL_VIEWER", "2", 1);
    }
    ModuleLoader loader;
    if (!loader.Load(options.fModule.empty() ? ModuleLoader::DefaultPath() : options.fModule)) {
        std::cerr << "nptests: " << loader.Error() << "\n";
        return kExitUsage;
    }
    std::unique_ptr<CFProcCustom> procedure = loader.Create();
    if (!procedure) {
        std::cerr << "nptests: " << loader.Error() << "\n";
        return kExitUsage;
    }

    const MissingStrings missing(options.fMissingStrings);
    FacSTDictionary dictionary(PathFactory::getPathInstance(PathFactory::kStrings));
    if (!dictionary.SetProcedure(kProcedureTitle)) {
        std::cerr << "nptests: warning: no string table in "
                  << PathFactory::getPathInstance(PathFactory::kStrings).getPath()
                  << "; texts show as their keys\n";
    }
    BpProcedure output(kProcedureTitle, &dictionary, dataSource.get());
    procedure->fProcedure = &output;
    procedure->fDataSource = dataSource.get();
    std::vector<CFDump> dumps;
    if (options.fDumpModel) {
        procedure->fModelDumps = &dumps;
    }

    bool ok = readable == splits.size();
    if (readable > 0) {
        std::vector<CFSplitDocument> run(
            std::make_move_iterator(splits.begin()),
            std::make_move_iterator(splits.begin() + static_cast<long>(readable)));
        std::vector<std::string> models;
        if (!procedure->ProduceOutput(models, run)) {
            ok = false;
            std::string rejected = run.front().fSource;
            for (const CFSplitDocument& split : run) {
                if (split.WasRead()) {
                    rejected = split.fSource;
                }
            }
            CFErrorChannel::Error(rejected +
                                  ": not a readable nonparametric-tests result document");
        }
        splits = std::move(run);
    }
    procedure.reset();

    if (options.fDumpModel) {
        return DumpModels(dumps, splits, options, ok);
    }
    const std::unique_ptr<Renderer> renderer = Renderer::Make(options.fFormat);
    if (!renderer) {
        std::cerr << "nptests: this output format is not available yet\n";
        return kExitUsage;
    }
    if (!WriteOutput(options.fOutput,
                     renderer->Render(output.Root(), CFErrorChannel::Messages()))) {
        return kExitUsage;
    }
    return ok ? kExitOk : kExitRejected;
}
