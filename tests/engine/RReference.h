// Running R as the reference for the engine's statistics: a script prints
// numbers with cat(), the test reads them back.
#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// Whether Rscript can be run here (scripts/setup installs it).
inline bool HaveR() {
    static const bool have = std::system("Rscript --version >/dev/null 2>&1") == 0;
    return have;
}

// Runs `script` with Rscript and returns what it printed.
inline std::string RunRText(const std::string& script) {
    static int counter = 0;
    const std::filesystem::path file =
        std::filesystem::path(testing::TempDir()) /
        ("engine_r_" + std::to_string(getpid()) + "_" + std::to_string(counter++) + ".R");
    {
        std::ofstream out(file);
        out << "options(digits = 17)\n" << script << "\n";
    }
    const std::string command = "Rscript --vanilla " + file.string() + " 2>&1";
    std::string text;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[4096];
        std::size_t got = 0;
        while ((got = fread(buffer, 1, sizeof buffer, pipe)) > 0) {
            text.append(buffer, got);
        }
        const int status = pclose(pipe);
        EXPECT_EQ(status, 0) << "Rscript failed:\n" << text << "\nscript:\n" << script;
    }
    std::filesystem::remove(file);
    return text;
}

// A number as R prints it; "NA", "NaN" and "Inf" read as the corresponding
// doubles.
inline double ParseRNumber(const std::string& word) {
    if (word == "NA" || word == "NaN") {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (word == "Inf" || word == "-Inf") {
        return word[0] == '-' ? -std::numeric_limits<double>::infinity()
                              : std::numeric_limits<double>::infinity();
    }
    char* end = nullptr;
    const double value = std::strtod(word.c_str(), &end);
    EXPECT_EQ(*end, '\0') << "R printed a word that is not a number: " << word;
    return value;
}

// Runs `script` with Rscript and returns every number it printed, in order.
inline std::vector<double> RunR(const std::string& script) {
    std::vector<double> numbers;
    std::istringstream in(RunRText(script));
    for (std::string word; in >> word;) {
        numbers.push_back(ParseRNumber(word));
    }
    return numbers;
}

// An R vector literal of `values`, written so that R reads them back exactly.
inline std::string RVector(const std::vector<double>& values) {
    std::ostringstream out;
    out.precision(17);
    out << "c(";
    for (std::size_t i = 0; i < values.size(); ++i) {
        out << (i ? ", " : "") << values[i];
    }
    out << ")";
    return out.str();
}
