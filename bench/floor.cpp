// The floor of reading a result document: load the file, parse it in place
// with pugixml and convert every number it holds (attribute values and element
// texts, word by word) with std::from_chars. No reader can do less; the
// benchmark compares nptests against this.
#include <charconv>
#include <cstdio>
#include <string>
#include <string_view>

#include <pugixml.hpp>

namespace {
bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

struct Tally {
    std::size_t fNumbers = 0;
    double fSum = 0.0;
};

// Converts each word of `text` that is a number.
void ConvertWords(std::string_view text, Tally& tally) {
    const char* p = text.data();
    const char* end = p + text.size();
    while (p < end) {
        while (p < end && IsSpace(*p)) {
            ++p;
        }
        const char* start = p;
        while (p < end && !IsSpace(*p)) {
            ++p;
        }
        if (p > start) {
            double value = 0.0;
            auto [stop, ec] = std::from_chars(start, p, value);
            if (ec == std::errc() && stop == p) {
                ++tally.fNumbers;
                tally.fSum += value;
            }
        }
    }
}

bool ReadWholeFile(const char* path, std::string& text) {
    std::FILE* file = std::fopen(path, "rb");
    if (!file) {
        return false;
    }
    bool ok = std::fseek(file, 0, SEEK_END) == 0;
    const long size = ok ? std::ftell(file) : -1;
    ok = ok && size >= 0 && std::fseek(file, 0, SEEK_SET) == 0;
    if (ok) {
        text.resize(static_cast<std::size_t>(size));
        ok = std::fread(text.data(), 1, text.size(), file) == text.size();
    }
    std::fclose(file);
    return ok;
}
} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: floor RESULT.xml\n");
        return 2;
    }
    std::string text;
    if (!ReadWholeFile(argv[1], text)) {
        std::fprintf(stderr, "floor: cannot read %s\n", argv[1]);
        return 1;
    }
    pugi::xml_document doc;
    pugi::xml_parse_result result = doc.load_buffer_inplace(
        text.data(), text.size(), pugi::parse_default | pugi::parse_ws_pcdata_single);
    if (!result) {
        std::fprintf(stderr, "floor: %s: %s\n", argv[1], result.description());
        return 1;
    }
    // An iterative walk over every node: documents may nest deeply.
    Tally tally;
    pugi::xml_node node = doc.first_child();
    while (node) {
        if (node.type() == pugi::node_element) {
            for (pugi::xml_attribute a = node.first_attribute(); a; a = a.next_attribute()) {
                ConvertWords(a.value(), tally);
            }
        } else if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
            ConvertWords(node.value(), tally);
        }
        if (pugi::xml_node child = node.first_child()) {
            node = child;
            continue;
        }
        while (node && !node.next_sibling()) {
            node = node.parent();
        }
        if (node) {
            node = node.next_sibling();
        }
    }
    std::printf("%zu numbers, sum %.17g\n", tally.fNumbers, tally.fSum);
    return 0;
}
