// The host's error channel: messages raised while a procedure runs ("Not parse
// element: ..." and the like). They are collected for the output and, when a
// listener is set, passed on as they arrive (the command line prints them).
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

struct CFMessage {
    enum Kind { kError = 0, kWarning = 1 };
    Kind fKind = kError;
    std::string fText;     // as the module wrote it
    std::string fDocument; // the source (document, split) it came from; empty for none

    // The text with its source before it ("a.xml: Not parse element: X").
    std::string WithSource() const { return fDocument.empty() ? fText : fDocument + ": " + fText; }
};

class CFErrorChannel final {
public:
    using Listener = std::function<void(const CFMessage&)>;

    static void Report(CFMessage::Kind kind, std::string_view text);
    // Reports the message unless the same text was reported since the
    // source was last set (a fault that may repeat many times in one
    // document is told once).
    static void ReportOnce(CFMessage::Kind kind, std::string_view text);
    static void Error(std::string_view text) { Report(CFMessage::kError, text); }
    static void Warning(std::string_view text) { Report(CFMessage::kWarning, text); }

    // Every message reported since the last Clear, in order.
    static std::vector<CFMessage> Messages();
    static void Clear();

    // Messages reported from now on are about `source` (a document) and begin
    // with its name; an empty name ends that.
    static void SetSource(std::string_view source);

    // Called for each message as it is reported; an empty function removes it.
    static void SetListener(Listener listener);
};
