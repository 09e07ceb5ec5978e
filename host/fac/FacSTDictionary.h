// The host's string dictionary: the English texts of the keys a procedure
// passes (displayed words, condition keys, footnote keys, message codes),
// read from the string tables of the procedure.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

class PathFactory;

class FacSTDictionary final {
public:
    // A dictionary over the string tables in the folder of `paths`.
    explicit FacSTDictionary(const PathFactory& paths);
    // A dictionary over the string tables in `folder`.
    explicit FacSTDictionary(std::string folder);

    // Loads the tables of a procedure ("Nonparametric Tests"); false when the
    // procedure has none. Tables are read once per process and shared.
    bool SetProcedure(std::string_view procedure);

    // The text of a key; a key without an entry gives the key itself.
    std::string LookUp(std::string_view key) const;
    // Whether the key has an entry.
    bool Has(std::string_view key) const;

    using Table = std::unordered_map<std::string, std::string>;

private:
    std::string fFolder;
    std::shared_ptr<const Table> fTable;
};

// Where the host keeps its resources.
class PathFactory final {
public:
    enum Kind { kResources = 0, kTemplates = 2, kStrings = 3 };
    // The folder of one kind of resource: NPTESTS_RESOURCES when set, else the
    // resources of the build; "strings" (3) and "templates" (2) below it.
    static const PathFactory& getPathInstance(int kind);
    const std::string& getPath() const { return fPath; }

    explicit PathFactory(std::string path) : fPath(std::move(path)) {}

private:
    std::string fPath;
};
