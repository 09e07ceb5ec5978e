// The host's string dictionary: the English texts of the keys a procedure
// passes (displayed words, condition keys, footnote keys, message codes),
// read from the string tables of the procedure.
#pragma once

#include <functional>
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

    // The text of a key; a key without an entry gives the key itself. A key
    // of digits only (a message code) without an entry gives the text of the
    // entry "@message" with "^1" filled with the code, when there is one.
    std::string LookUp(std::string_view key) const;
    // Whether the key has an entry of its own.
    bool Has(std::string_view key) const;

    // Called, in every dictionary of the process, with each key looked up
    // that has no entry of its own (tests use it to find missing texts); an
    // empty function stops it.
    static void SetMissRecorder(std::function<void(std::string_view)> recorder);

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
