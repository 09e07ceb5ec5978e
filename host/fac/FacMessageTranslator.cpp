// Filling the numbered places of message texts.
#include "host/fac/FacMessageTranslator.h"

#include "host/fac/FacSTDictionary.h"

std::string FacMessageTranslator::Format(std::string_view text,
                                         const std::vector<std::string>& params) {
    std::string out;
    out.reserve(text.size() + 16 * params.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '^' || i + 1 >= text.size()) {
            out += text[i];
            continue;
        }
        const char next = text[i + 1];
        if (next == '^') {
            out += '^';
            ++i;
            continue;
        }
        if (next < '0' || next > '9') {
            out += '^';
            continue;
        }
        size_t n = 0;
        size_t j = i + 1;
        while (j < text.size() && text[j] >= '0' && text[j] <= '9' && j - i <= 6) {
            n = n * 10 + static_cast<size_t>(text[j] - '0');
            ++j;
        }
        if (n >= 1 && n <= params.size()) {
            out += params[n - 1];
        }
        i = j - 1;
    }
    return out;
}

std::string FacMessageTranslator::Format(const FacSTDictionary* dictionary, std::string_view key,
                                         const std::vector<std::string>& params) {
    return Format(dictionary ? dictionary->LookUp(key) : std::string(key), params);
}
