// Turns text in a named encoding into a ChartString (UTF-8). Text that is
// already valid UTF-8 passes unchanged, so that strings the host keeps in
// UTF-8 survive a transcoder named after a legacy code page.
#pragma once

#include <string>
#include <string_view>

#include "host/chart/ChartString.h"

class ChartTranscoder final {
public:
    // "UTF-8", "CP1252" (also "windows-1252") or "ISO-8859-1" (also
    // "latin1"); names are matched without regard to case. Any other name
    // behaves as "UTF-8".
    explicit ChartTranscoder(std::string name);

    // The text as UTF-8. Bytes that are not valid in the encoding become
    // U+FFFD; control characters other than tab, line feed and carriage
    // return become blanks, so that the result can always go into XML.
    ChartString transcode(std::string_view text) const;

    static bool IsValidUTF8(std::string_view text);

private:
    enum Kind { kUTF8, kCP1252, kLatin1 };
    Kind fKind = kUTF8;
};
