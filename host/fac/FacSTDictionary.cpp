// The string dictionary: reads a procedure's string table once per process
// and answers look-ups from the shared copy.
#include "host/fac/FacSTDictionary.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <utility>

#include "host/fac/FacMessageTranslator.h"

namespace {
// The entry whose text stands for every message code (a key of digits only)
// without an entry of its own; "^1" in it is the code.
constexpr std::string_view kMessageFallbackKey = "@message";

// "Nonparametric Tests" -> "nonparametric_tests".
std::string TableName(std::string_view procedure) {
    std::string name;
    name.reserve(procedure.size());
    for (char c : procedure) {
        if (c >= 'A' && c <= 'Z') {
            name += static_cast<char>(c - 'A' + 'a');
        } else if ((c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
            name += c;
        } else if (!name.empty() && name.back() != '_') {
            name += '_';
        }
    }
    while (!name.empty() && name.back() == '_') {
        name.pop_back();
    }
    return name;
}

// Undoes the "\n", "\t" and "\\" escapes; any other backslash stays as it is.
std::string Unescape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size()) {
            const char next = text[i + 1];
            if (next == 'n' || next == 't' || next == '\\') {
                out += next == 'n' ? '\n' : next == 't' ? '\t' : '\\';
                ++i;
                continue;
            }
        }
        out += text[i];
    }
    return out;
}

bool ReadTable(const std::string& path, FacSTDictionary::Table& table) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        return false;
    }
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const size_t tab = line.find('\t');
        if (tab == std::string::npos || tab == 0) {
            continue;
        }
        std::string_view view(line);
        table.insert_or_assign(Unescape(view.substr(0, tab)), Unescape(view.substr(tab + 1)));
    }
    return true;
}

// Tables by file path, each read at most once per process.
std::shared_ptr<const FacSTDictionary::Table> SharedTable(const std::string& path) {
    static std::mutex mutex;
    static std::map<std::string, std::shared_ptr<const FacSTDictionary::Table>> cache;
    std::lock_guard<std::mutex> lock(mutex);
    auto it = cache.find(path);
    if (it != cache.end()) {
        return it->second;
    }
    auto table = std::make_shared<FacSTDictionary::Table>();
    std::shared_ptr<const FacSTDictionary::Table> result;
    if (ReadTable(path, *table)) {
        result = std::move(table);
    }
    cache.emplace(path, result);
    return result;
}

std::mutex gRecorderMutex;
std::function<void(std::string_view)> gRecorder;

void RecordMiss(std::string_view key) {
    std::lock_guard<std::mutex> lock(gRecorderMutex);
    if (gRecorder) {
        gRecorder(key);
    }
}

bool IsMessageCode(std::string_view key) {
    if (key.empty()) {
        return false;
    }
    for (char c : key) {
        if (c < '0' || c > '9') {
            return false;
        }
    }
    return true;
}
} // namespace

FacSTDictionary::FacSTDictionary(const PathFactory& paths) : fFolder(paths.getPath()) {}
FacSTDictionary::FacSTDictionary(std::string folder) : fFolder(std::move(folder)) {}

bool FacSTDictionary::SetProcedure(std::string_view procedure) {
    fTable = SharedTable(fFolder + "/" + TableName(procedure) + ".txt");
    return fTable != nullptr;
}

std::string FacSTDictionary::LookUp(std::string_view key) const {
    const std::string name(key);
    if (fTable) {
        auto it = fTable->find(name);
        if (it != fTable->end()) {
            return it->second;
        }
    }
    RecordMiss(key);
    if (fTable && IsMessageCode(key)) {
        auto fallback = fTable->find(std::string(kMessageFallbackKey));
        if (fallback != fTable->end()) {
            return FacMessageTranslator::Format(fallback->second, {name});
        }
    }
    return name;
}

bool FacSTDictionary::Has(std::string_view key) const {
    return fTable && fTable->find(std::string(key)) != fTable->end();
}

void FacSTDictionary::SetMissRecorder(std::function<void(std::string_view)> recorder) {
    std::lock_guard<std::mutex> lock(gRecorderMutex);
    gRecorder = std::move(recorder);
}

const PathFactory& PathFactory::getPathInstance(int kind) {
    static const PathFactory* const paths = [] {
        const char* root = std::getenv("NPTESTS_RESOURCES");
        const std::string base = root && *root ? root : NPTESTS_RESOURCE_DIR;
        static const PathFactory all[] = {PathFactory(base), PathFactory(base + "/templates"),
                                          PathFactory(base + "/strings")};
        return all;
    }();
    switch (kind) {
    case kStrings:
        return paths[2];
    case kTemplates:
        return paths[1];
    default:
        return paths[0];
    }
}
