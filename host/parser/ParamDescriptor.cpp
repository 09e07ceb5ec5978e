// The grammar of one keyword or qualifier.
#include "host/parser/ParamDescriptor.h"

#include <charconv>
#include <cmath>

#include "host/parser/ParserText.h"

namespace {
std::string FormatNumber(double value) {
    char buffer[32];
    // Whole numbers in full ("2000000000", not "2e+09").
    const bool whole =
        std::isfinite(value) && value == std::trunc(value) && std::fabs(value) < 1e15;
    auto [end, ec] =
        whole ? std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed)
              : std::to_chars(buffer, buffer + sizeof buffer, value);
    return ec == std::errc() ? std::string(buffer, end) : std::string("?");
}

// "A", "A or B", "one of A, B or C".
std::string Alternatives(const std::vector<std::string>& words) {
    std::string text = words.size() > 2 ? "one of " : "";
    for (size_t i = 0; i < words.size(); ++i) {
        if (i > 0) {
            text += i + 1 == words.size() ? " or " : ", ";
        }
        text += words[i];
    }
    return text;
}

std::vector<std::string> UpperAll(std::vector<std::string> words) {
    for (std::string& word : words) {
        word = ToUpper(word);
    }
    return words;
}
} // namespace

ParamDescriptor ParamDescriptor::Flag(std::string name) {
    ParamDescriptor desc;
    desc.fName = ToUpper(name);
    desc.fKind = kFlag;
    return desc;
}

ParamDescriptor ParamDescriptor::Opaque(std::string name) {
    ParamDescriptor desc = Flag(std::move(name));
    desc.fKind = kOpaque;
    return desc;
}

ParamDescriptor ParamDescriptor::VarList(std::string name, std::string role) {
    ParamDescriptor desc = Flag(std::move(name));
    desc.fKind = kVarList;
    desc.fRole = std::move(role);
    return desc;
}

ParamDescriptor ParamDescriptor::Variable(std::string name, std::string role) {
    ParamDescriptor desc = VarList(std::move(name), std::move(role));
    desc.fKind = kVariable;
    return desc;
}

ParamDescriptor ParamDescriptor::ValueList(std::string name) {
    ParamDescriptor desc = Flag(std::move(name));
    desc.fKind = kValueList;
    return desc;
}

ParamDescriptor ParamDescriptor::Integer(std::string name, double min, double max,
                                         std::vector<std::string> words) {
    ParamDescriptor desc = Words(std::move(name), std::move(words));
    desc.fNumber = kInteger;
    desc.fMin = min;
    desc.fMax = max;
    return desc;
}

ParamDescriptor ParamDescriptor::Number(std::string name, double min, double max, bool open) {
    ParamDescriptor desc = Words(std::move(name), {});
    desc.fNumber = kReal;
    desc.fMin = min;
    desc.fMax = max;
    desc.fOpen = open;
    return desc;
}

ParamDescriptor ParamDescriptor::Words(std::string name, std::vector<std::string> words) {
    ParamDescriptor desc = Flag(std::move(name));
    desc.fKind = kValue;
    desc.fWords = UpperAll(std::move(words));
    return desc;
}

ParamDescriptor ParamDescriptor::Qualifiers(std::string name,
                                            std::vector<ParamDescriptor> qualifiers, bool single) {
    ParamDescriptor desc = Flag(std::move(name));
    desc.fKind = kQualifiers;
    desc.fQualifiers = std::move(qualifiers);
    desc.fSingle = single;
    return desc;
}

ParamDescriptor ParamDescriptor::OrBare() const {
    ParamDescriptor desc = *this;
    desc.fBare = true;
    return desc;
}

const ParamDescriptor* ParamDescriptor::getParamDesc(std::string_view name) const {
    for (const ParamDescriptor& qualifier : fQualifiers) {
        if (EqualNoCase(qualifier.fName, name)) {
            return &qualifier;
        }
    }
    return nullptr;
}

std::string ParamDescriptor::DescribeValue() const {
    std::string text;
    if (fNumber == kInteger) {
        text = "an integer from " + FormatNumber(fMin) + " to " + FormatNumber(fMax);
    } else if (fNumber == kReal) {
        const bool lower = std::isfinite(fMin);
        const bool upper = std::isfinite(fMax);
        text = "a number";
        if (lower) {
            text += (fOpen ? " greater than " : " of at least ") + FormatNumber(fMin);
        }
        if (upper) {
            text += (lower ? " and" : "") + std::string(fOpen ? " less than " : " of at most ") +
                    FormatNumber(fMax);
        }
        if (lower && upper && !fOpen) {
            text = "a number from " + FormatNumber(fMin) + " to " + FormatNumber(fMax);
        }
    }
    if (!fWords.empty()) {
        text += (text.empty() ? "" : " or ") + Alternatives(fWords);
    }
    return text;
}

std::string ParamDescriptor::ListQualifiers() const {
    std::string text;
    for (const ParamDescriptor& qualifier : fQualifiers) {
        text += (text.empty() ? "" : ", ") + qualifier.fName;
    }
    return text;
}
