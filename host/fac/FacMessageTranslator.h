// The host's parser-message translator: fills the numbered places of a
// message text with given parameter texts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class FacSTDictionary;

class FacMessageTranslator final {
public:
    // `text` with each "^N" (N from 1) replaced by params[N - 1]; a place
    // without a parameter is dropped, "^^" writes one caret, any other caret
    // stays as it is.
    static std::string Format(std::string_view text, const std::vector<std::string>& params);
    // The text of `key` in `dictionary` (the key itself without one), filled.
    static std::string Format(const FacSTDictionary* dictionary, std::string_view key,
                              const std::vector<std::string>& params);
};
