// ChartTranscoder: UTF-8 validation and single-byte code pages to UTF-8.
#include "host/chart/ChartTranscoder.h"

#include <cstdint>

namespace {

// Code points of the bytes 0x80-0x9F in Windows-1252 (0 where undefined).
constexpr std::uint16_t kCP1252High[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

constexpr char32_t kReplacement = 0xFFFD;

void AppendCodePoint(std::string& out, char32_t cp) {
    if (cp < 0x20 && cp != '\t' && cp != '\n' && cp != '\r') {
        out += ' ';
    } else if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

// Decodes one UTF-8 sequence at `i`; returns its length, 0 when invalid.
size_t DecodeUTF8(std::string_view text, size_t i, char32_t& cp) {
    const auto byte = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
    const unsigned char lead = byte(i);
    if (lead < 0x80) {
        cp = lead;
        return 1;
    }
    size_t length = 0;
    char32_t min = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        cp = lead & 0x1F;
        min = 0x80;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        cp = lead & 0x0F;
        min = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        cp = lead & 0x07;
        min = 0x10000;
    } else {
        return 0;
    }
    if (i + length > text.size()) {
        return 0;
    }
    for (size_t k = 1; k < length; ++k) {
        if ((byte(i + k) & 0xC0) != 0x80) {
            return 0;
        }
        cp = (cp << 6) | (byte(i + k) & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
        return 0;
    }
    return length;
}

bool SameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) {
        return false;
    }
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i];
        char y = b[i];
        if (x >= 'A' && x <= 'Z') {
            x = static_cast<char>(x - 'A' + 'a');
        }
        if (y >= 'A' && y <= 'Z') {
            y = static_cast<char>(y - 'A' + 'a');
        }
        if (x != y) {
            return false;
        }
    }
    return true;
}

} // namespace

ChartTranscoder::ChartTranscoder(std::string name) {
    if (SameName(name, "cp1252") || SameName(name, "windows-1252")) {
        fKind = kCP1252;
    } else if (SameName(name, "iso-8859-1") || SameName(name, "latin1")) {
        fKind = kLatin1;
    }
}

bool ChartTranscoder::IsValidUTF8(std::string_view text) {
    char32_t cp = 0;
    for (size_t i = 0; i < text.size();) {
        const size_t length = DecodeUTF8(text, i, cp);
        if (length == 0) {
            return false;
        }
        i += length;
    }
    return true;
}

ChartString ChartTranscoder::transcode(std::string_view text) const {
    std::string out;
    out.reserve(text.size());
    const bool utf8 = fKind == kUTF8 || IsValidUTF8(text);
    char32_t cp = 0;
    for (size_t i = 0; i < text.size();) {
        if (utf8) {
            const size_t length = DecodeUTF8(text, i, cp);
            AppendCodePoint(out, length == 0 ? kReplacement : cp);
            i += length == 0 ? 1 : length;
            continue;
        }
        const auto byte = static_cast<unsigned char>(text[i++]);
        cp = byte;
        if (fKind == kCP1252 && byte >= 0x80 && byte <= 0x9F) {
            cp = kCP1252High[byte - 0x80] ? kCP1252High[byte - 0x80] : kReplacement;
        }
        AppendCodePoint(out, cp);
    }
    return ChartString(std::move(out));
}
