// One run of nptests: builds the splits and the data source, loads the
// module, has it write its output tree, and renders that tree.
#include "app/Run.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <unistd.h>

#include <nlohmann/json.hpp>

#include "app/CommandCheck.h"
#include "app/DataSourceBuilder.h"
#include "app/DumpJson.h"
#include "app/ModuleLoader.h"
#include "app/Options.h"
#include "app/OutputFile.h"
#include "app/SplitPlan.h"
#include "engine/Engine.h"
#include "engine/data/CsvReader.h"
#include "engine/data/Dataset.h"
#include "engine/data/HostDataSource.h"
#include "host/bp/BpOutput.h"
#include "host/cf/CFAssert.h"
#include "host/cf/CFDump.h"
#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFProcCustom.h"
#include "host/chart/XDocument.h"
#include "host/fac/FacSTDictionary.h"
#include "host/parser/CommandParser.h"
#include "host/parser/NPTestsGrammar.h"
#include "host/parser/ParsedCommand.h"
#include "host/parser/ParserMessage.h"
#include "host/vexa/VEXA_DataSource.h"
#include "render/Renderer.h"
#include "render/TextRenderer.h"

namespace {
constexpr const char* kProcedureTitle = "Nonparametric Tests";

// The most a document may have, and the most a command, --splits or
// --dictionary file may have: a bound on what a pipe can make the program
// hold.
constexpr std::size_t kMaxDocumentBytes = std::size_t{1} << 30;
constexpr std::size_t kMaxSmallFileBytes = std::size_t{16} << 20;

std::string SizeText(std::size_t bytes) {
    return bytes >= (std::size_t{1} << 30) ? std::to_string(bytes >> 30) + " GiB"
                                           : std::to_string(bytes >> 20) + " MiB";
}

// Reads the file at `path` ("-": standard input) whole, up to `limit` bytes.
bool ReadFile(const std::string& path, std::string& text, std::string& error,
              std::size_t limit = kMaxSmallFileBytes) {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) {
        error = "is a directory";
        return false;
    }
    std::ifstream file;
    if (path != "-") {
        file.open(path, std::ios::binary);
        if (!file) {
            error = std::strerror(errno);
            return false;
        }
    }
    std::istream& in = path == "-" ? std::cin : file;
    const auto tooLarge = [&] {
        error = "larger than " + SizeText(limit) + ", the most that is read";
        return false;
    };
    // A file of known size is read in one piece; anything else (a pipe) a
    // block at a time, up to the limit.
    std::streamoff size = -1;
    if (path != "-") {
        in.seekg(0, std::ios::end);
        size = in.tellg();
        in.seekg(0, std::ios::beg);
    }
    if (size >= 0 && in) {
        if (static_cast<std::size_t>(size) > limit) {
            return tooLarge();
        }
        text.resize(static_cast<std::size_t>(size));
        in.read(text.data(), size);
        text.resize(static_cast<std::size_t>(in.gcount()));
    } else {
        in.clear();
        text.clear();
        char block[65536];
        while (in.read(block, sizeof block) || in.gcount() > 0) {
            if (text.size() + static_cast<std::size_t>(in.gcount()) > limit) {
                return tooLarge();
            }
            text.append(block, static_cast<std::size_t>(in.gcount()));
        }
    }
    if (in.bad()) {
        error = "read error";
        return false;
    }
    return true;
}

bool WriteText(const std::string& path, const std::string& text) {
    return WriteOutput(path, [&](std::FILE* out) {
        return std::fwrite(text.data(), 1, text.size(), out) == text.size();
    });
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
        if (!ReadFile(plan.fSplits[i].fDocument, splits[i].fResultDocument, error,
                      kMaxDocumentBytes)) {
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
            std::cerr << "nptests: the split variable " << EscapeControls(name)
                      << " is not a variable of " << EscapeControls(plan.fSplits.front().fDocument)
                      << "\n";
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
            std::cerr << "nptests: no text for the key \"" << EscapeControls(key) << "\"\n";
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
    // Labels need not be valid UTF-8; such bytes show as U+FFFD.
    if (!WriteText(options.fOutput,
                   out.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
                       "\n")) {
        return kExitIo;
    }
    return ok ? kExitOk : kExitRejected;
}

// The data source: from the dictionary file when one is given, else from the
// first readable document. Null after a usage message; a first document that
// is not a result document gives an empty data source and no readable split.
std::unique_ptr<VEXA_DataSource> BuildDataSource(const Options& options,
                                                 const std::vector<CFSplitDocument>& splits,
                                                 size_t& readable) {
    std::string text, error;
    if (!options.fDictionaryFile.empty()) {
        if (!ReadFile(options.fDictionaryFile, text, error)) {
            std::cerr << "nptests: cannot read " << options.fDictionaryFile << ": " << error
                      << "\n";
            return nullptr;
        }
        std::unique_ptr<VEXA_DataSource> source = DataSourceFromDictionary(text, error);
        if (!source) {
            std::cerr << "nptests: " << options.fDictionaryFile << " is not a dictionary: " << error
                      << "\n";
        }
        return source;
    }
    if (splits.empty()) {
        std::cerr << "nptests: --check-command needs the variables of the data: give "
                     "--dictionary FILE or a result document\n";
        return nullptr;
    }
    std::unique_ptr<VEXA_DataSource> source;
    if (readable > 0) {
        source = DataSourceFromDocument(splits.front().fResultDocument, error);
        if (!source) {
            CFErrorChannel::Error(splits.front().fSource + " is not a result document: " + error);
            readable = 0;
        }
    }
    return source ? std::move(source) : std::make_unique<VEXA_DataSource>();
}

// The parsed command; null after a usage message.
std::unique_ptr<CommandSpec> ParseCommand(const Options& options, const VEXA_DataSource& dataSource,
                                          const CommandDescriptor& grammar) {
    std::string text = options.fCommand;
    std::string error;
    if (!text.empty() && text.front() == '@' &&
        !ReadFile(options.fCommand.substr(1), text, error)) {
        const std::string file = options.fCommand.substr(1);
        std::cerr << "nptests: cannot read " << (file == "-" ? "standard input" : file) << ": "
                  << error << "\n";
        return nullptr;
    }
    ParserMessage syntax;
    std::unique_ptr<CommandSpec> command = CommandParser(grammar, &dataSource).Parse(text, syntax);
    if (!command) {
        std::cerr << syntax.GetErrorText() << "\n";
    }
    return command;
}

// False, after a usage message, when the output file is one of the inputs.
bool RefuseOutputOverInput(const Options& options, const SplitPlan& plan) {
    std::vector<std::string> inputs = {options.fSplitsFile, options.fDictionaryFile,
                                       options.fDataFile};
    if (!options.fCommand.empty() && options.fCommand.front() == '@') {
        inputs.push_back(options.fCommand.substr(1));
    }
    for (const SplitPlan::Split& split : plan.fSplits) {
        inputs.push_back(split.fDocument);
    }
    for (const std::string& input : inputs) {
        if (IsSameFile(options.fOutput, input)) {
            std::cerr << "nptests: the output " << options.fOutput << " is the input " << input
                      << "; give another output file\n";
            return false;
        }
    }
    return true;
}

// Installs the assertion handler that throws for the scope: a failed
// assertion of the module while it works on one split becomes that split's
// failure.
class ThrowingAssertions final {
public:
    ThrowingAssertions() : fPrevious(CFSetAssertHandler(CFThrowingAssertHandler)) {}
    ~ThrowingAssertions() { CFSetAssertHandler(fPrevious); }
    ThrowingAssertions(const ThrowingAssertions&) = delete;
    ThrowingAssertions& operator=(const ThrowingAssertions&) = delete;

private:
    CFAssertHandler fPrevious;
};

// Runs the readable splits one at a time and stops at the first the module
// rejects or fails on (reported, its partial output taken out); false then.
bool ProduceSplits(CFProcCustom& procedure, BpProcedure& output,
                   std::vector<CFSplitDocument>& splits, size_t readable) {
    if (readable == 0) {
        return false;
    }
    for (size_t i = 0; i < readable; ++i) {
        std::vector<CFSplitDocument> run;
        run.push_back(std::move(splits[i]));
        std::vector<std::string> models;
        const size_t items = output.Root().fChildren.size();
        bool ok = false;
        std::string failure;
        const size_t earlierMessages = CFErrorChannel::Messages().size();
        CFErrorChannel::SetSource(run.front().fSource);
        try {
            const ThrowingAssertions throwing;
            ok = procedure.ProduceOutput(models, run);
        } catch (const CFAssertionFailure& assertion) {
            failure = assertion.what();
        }
        CFErrorChannel::SetSource({});
        splits[i] = std::move(run.front());
        // Its text is not needed again; a large one is not held while the
        // next is read.
        std::string().swap(splits[i].fResultDocument);
        if (!ok) {
            output.DropItemsAfter(items);
            // A reader that said why it failed has named the document; else
            // the failure is told here.
            const std::vector<CFMessage> messages = CFErrorChannel::Messages();
            const bool told = std::any_of(
                messages.begin() + static_cast<std::ptrdiff_t>(earlierMessages), messages.end(),
                [](const CFMessage& message) { return message.fKind == CFMessage::kError; });
            if (!failure.empty() || !told) {
                CFErrorChannel::Error(splits[i].fSource + ": " +
                                      (failure.empty()
                                           ? "not a readable nonparametric-tests result document"
                                           : failure));
            }
            return false;
        }
    }
    return readable == splits.size();
}

// Progress on standard error, only when it is a terminal.
bool ShowProgress() {
    static const bool terminal = isatty(STDERR_FILENO) != 0;
    return terminal;
}

void ReadProgress(double share) {
    std::fprintf(stderr, "\rnptests: reading the data: %3d%%", static_cast<int>(share * 100));
}

// Writes the engine's documents into `folder` (created when missing): one
// split_N.xml per split and a splits.json that renders them again with
// --splits.
bool SaveDocuments(const std::string& folder, const std::vector<CFSplitDocument>& splits,
                   const std::vector<std::string>& splitNames, bool heading) {
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec) {
        std::cerr << "nptests: cannot make the folder " << folder << ": " << ec.message() << "\n";
        return false;
    }
    nlohmann::ordered_json plan;
    plan["variables"] = splitNames;
    plan["heading"] = heading;
    plan["splits"] = nlohmann::ordered_json::array();
    for (std::size_t i = 0; i < splits.size(); ++i) {
        const std::string name = "split_" + std::to_string(i + 1) + ".xml";
        const std::string path = (std::filesystem::path(folder) / name).string();
        if (!WriteText(path, splits[i].fResultDocument)) {
            return false;
        }
        plan["splits"].push_back({{"document", name}, {"values", splits[i].fSplitValues}});
    }
    return WriteText((std::filesystem::path(folder) / "splits.json").string(), plan.dump(2) + "\n");
}

// With --data: reads the data and the dictionary and parses the command.
// Returns an exit status, kExitOk when all is read.
int LoadData(const Options& options, const CommandDescriptor& grammar,
             std::unique_ptr<VEXA_DataSource>& dataSource, std::unique_ptr<CommandSpec>& command,
             Dataset& data) {
    std::unique_ptr<VEXA_DataSource> dictionary;
    if (!options.fDictionaryFile.empty()) {
        std::string text, error;
        if (!ReadFile(options.fDictionaryFile, text, error)) {
            std::cerr << "nptests: cannot read " << options.fDictionaryFile << ": " << error
                      << "\n";
            return kExitUsage;
        }
        dictionary = DataSourceFromDictionary(text, error);
        if (!dictionary) {
            std::cerr << "nptests: " << options.fDictionaryFile << " is not a dictionary: " << error
                      << "\n";
            return kExitUsage;
        }
    }
    std::string error;
    const bool progress = ShowProgress();
    const bool read = ReadDataFile(options.fDataFile, dictionary.get(), data, error,
                                   progress ? &ReadProgress : nullptr);
    if (progress) {
        std::fprintf(stderr, "\r%40s\r", "");
    }
    if (!read) {
        std::cerr << "nptests: " << error << "\n";
        return kExitRejected;
    }
    dataSource = HostDataSource(data);
    command = ParseCommand(options, *dataSource, grammar);
    return command ? kExitOk : kExitUsage;
}

// With --data: has the engine write one document per split, with the seed
// the procedure chose for its Monte Carlo notes, and widens the display
// formats of `dataSource` to what the parameters of the tests need. Returns
// an exit status, kExitOk when the splits are ready.
int ComputeSplits(const Options& options, const Dataset& data, const CommandSpec& command,
                  std::uint32_t seed, VEXA_DataSource& dataSource,
                  std::vector<CFSplitDocument>& splits) {
    std::string error;
    const bool progress = ShowProgress();
    EngineOptions engine;
    engine.fSeed = seed;
    engine.fDataName = std::filesystem::path(options.fDataFile).filename().string();
    engine.fSplitBy = options.fSplitBy;
    if (progress) {
        engine.fProgress = [](std::size_t split, std::size_t count) {
            if (count > 1) {
                std::fprintf(stderr, "\rnptests: computing split %zu of %zu    ", split + 1, count);
            }
        };
        engine.fMonteCarloProgress = [](std::size_t done, std::size_t total) {
            if (total > 0) {
                std::fprintf(stderr, "\rnptests: Monte Carlo samples: %3d%%      ",
                             static_cast<int>(100.0 * static_cast<double>(done) /
                                              static_cast<double>(total)));
            }
        };
    }
    EngineResult result;
    const bool ran = RunEngine(data, command, engine, result, error);
    if (progress) {
        std::fprintf(stderr, "\r%50s\r", "");
    }
    if (!ran) {
        std::cerr << "nptests: " << error << "\n";
        return kExitUsage;
    }
    // Parameters in a field's units show with the decimals they need.
    for (std::size_t i = 0; i < result.fDisplayDecimals.size(); ++i) {
        if (VEXA_Variable* variable = dataSource.GetVariable(static_cast<int>(i));
            variable && variable->IsNumeric()) {
            VEXA_Format format = variable->GetFormat();
            format.fDecimals = result.fDisplayDecimals[i];
            variable->SetFormat(format);
        }
    }
    std::vector<SplitDocument>& documents = result.fDocuments;
    std::vector<int> splitIndices;
    ResolveSplitBy(data, options.fSplitBy, splitIndices, error);
    splits.resize(documents.size());
    for (std::size_t i = 0; i < documents.size(); ++i) {
        splits[i].fSource = engine.fDataName;
        if (documents.size() > 1) {
            splits[i].fSource += " (split " + std::to_string(i + 1) + ")";
        }
        splits[i].fHeading = !options.fSplitTable;
        splits[i].fSplitVariables = splitIndices;
        splits[i].fSplitValues = documents[i].fSplitValues;
        splits[i].fResultDocument = std::move(documents[i].fDocument);
    }
    if (!options.fWriteDocuments.empty() &&
        !SaveDocuments(options.fWriteDocuments, splits, options.fSplitBy, !options.fSplitTable)) {
        return kExitIo;
    }
    return kExitOk;
}
} // namespace

int Run(const Options& options) {
    CFErrorChannel::Clear();
    CFErrorChannel::SetListener([](const CFMessage& message) {
        std::cerr << "nptests: " << EscapeControls(message.WithSource()) << "\n";
    });

    CommandDescriptor grammar = NPTestsCommandDescriptor();
    std::vector<CFSplitDocument> splits;
    std::unique_ptr<VEXA_DataSource> dataSource;
    std::unique_ptr<CommandSpec> command;
    size_t readable = 0;
    std::unique_ptr<Dataset> data;
    if (!options.fDataFile.empty()) {
        if (!RefuseOutputOverInput(options, SplitPlan())) {
            return kExitUsage;
        }
        data = std::make_unique<Dataset>();
        const int status = LoadData(options, grammar, dataSource, command, *data);
        if (status != kExitOk) {
            return status;
        }
    } else {
        SplitPlan plan;
        if (!PlanSplits(options, plan) || !RefuseOutputOverInput(options, plan)) {
            return kExitUsage;
        }
        readable = ReadDocuments(plan, splits);
        dataSource = BuildDataSource(options, splits, readable);
        if (!dataSource) {
            return kExitUsage;
        }
        if (readable > 0 && !ResolveSplitVariables(plan, *dataSource, splits)) {
            return kExitUsage;
        }
        if (options.fCheckCommand && !splits.empty() && readable == 0) {
            return kExitRejected;
        }
        command = ParseCommand(options, *dataSource, grammar);
        if (!command) {
            return kExitUsage;
        }
    }

    if (options.fNoCharts) {
        // The module's own switch: "2" turns every chart off.
        setenv("DEBUG_MODEL_VIEWER", "2", 1);
    }
    XDocument::setUseColorsOnly(options.fColorsOnly);
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
    procedure->fDataSource = dataSource.get();

    const size_t earlier = CFErrorChannel::Messages().size();
    const bool commandOk = procedure->ReadCommand(command.get(), &grammar);
    if (options.fCheckCommand) {
        std::vector<CFMessage> messages = CFErrorChannel::Messages();
        messages.erase(messages.begin(), messages.begin() + static_cast<std::ptrdiff_t>(earlier));
        const std::string json =
            CommandCheckJson(commandOk, *procedure, *dataSource, messages)
                .dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) +
            "\n";
        if (!WriteText({}, json)) {
            return kExitIo;
        }
        return commandOk ? kExitOk : kExitUsage;
    }
    if (!commandOk) {
        std::cerr << "nptests: the " << grammar.getCommandName() << " command cannot be run\n";
        return kExitUsage;
    }
    if (data) {
        const int status =
            ComputeSplits(options, *data, *command, static_cast<std::uint32_t>(procedure->fSeed),
                          *dataSource, splits);
        if (status != kExitOk) {
            return status;
        }
        readable = splits.size();
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
    std::vector<CFDump> dumps;
    if (options.fDumpModel) {
        procedure->fModelDumps = &dumps;
    }
    const bool ok = ProduceSplits(*procedure, output, splits, readable);
    procedure.reset();

    if (options.fDumpModel) {
        return DumpModels(dumps, splits, options, ok);
    }
    const std::unique_ptr<Renderer> renderer = Renderer::Make(options.fFormat);
    if (!renderer) {
        std::cerr << "nptests: this output format is not available yet\n";
        return kExitUsage;
    }
    // When nothing could be rendered, a file named by -o is left as it was.
    if (!ok && output.Root().fChildren.empty() && !options.fOutput.empty()) {
        std::cerr << "nptests: nothing to write; " << options.fOutput << " is left as it was\n";
        return kExitRejected;
    }
    // Rendered straight into the output, so that a large document is not
    // held whole.
    if (!WriteOutput(options.fOutput, [&](std::FILE* out) {
            return renderer->RenderTo(output.Root(), CFErrorChannel::Messages(), out);
        })) {
        return kExitIo;
    }
    return ok ? kExitOk : kExitRejected;
}
