// Running the nptests program from a test: its exit status, standard output
// and standard error.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

struct CommandResult {
    int fStatus = -1;
    std::string fOut;
    std::string fErr;
};

inline std::string Quote(const std::string& text) {
    std::string out = "'";
    for (char c : text) {
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    out += '\'';
    return out;
}

inline std::string ReadWholeFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// Runs nptests with `arguments` in the folder `directory`, in an environment
// without the variables that would change its output.
inline CommandResult RunNptests(const std::string& directory,
                                const std::vector<std::string>& arguments) {
    const std::filesystem::path scratch =
        std::filesystem::path(testing::TempDir()) / ("nptests_" + std::to_string(getpid()));
    const std::string out = (scratch.string() + ".out");
    const std::string err = (scratch.string() + ".err");
    std::string command = "cd " + Quote(directory) +
                          " && env -u DEBUG_MODEL_VIEWER -u NPTESTS_RESOURCES -u NPTESTS_MODULE " +
                          Quote(NPTESTS_BINARY);
    for (const std::string& argument : arguments) {
        command += ' ';
        command += Quote(argument);
    }
    command += " >" + Quote(out) + " 2>" + Quote(err) + " </dev/null";
    CommandResult result;
    const int status = std::system(command.c_str());
    result.fStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.fOut = ReadWholeFile(out);
    result.fErr = ReadWholeFile(err);
    std::filesystem::remove(out);
    std::filesystem::remove(err);
    return result;
}

// The result documents of the examples folder (not those in malformed/), by
// file name.
inline std::vector<std::string> ExampleDocuments(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator(folder, ec)) {
        if (entry.is_regular_file() && entry.path().extension() == ".xml") {
            names.push_back(entry.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The arguments that render an example document: with the command of the
// same name ("NAME.command") when there is one.
inline std::vector<std::string> ExampleArguments(const std::string& folder,
                                                 const std::string& document) {
    const std::string command = std::filesystem::path(document).stem().string() + ".command";
    if (std::filesystem::exists(std::filesystem::path(folder) / command)) {
        return {"-c", "@" + command, document};
    }
    return {document};
}
