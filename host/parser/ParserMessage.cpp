// Messages of the command layer.
#include "host/parser/ParserMessage.h"

#include <algorithm>

#include "host/cf/CFErrorChannel.h"

namespace {
// A UTF-8 continuation byte takes no column of its own.
bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}
} // namespace

void ParserMessage::GenericWarning(std::string_view text,
                                   std::initializer_list<std::string_view> args) const {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const char next = i + 1 < text.size() ? text[i + 1] : '\0';
        if (text[i] == '%' && next >= '1' && next <= '9' &&
            static_cast<size_t>(next - '1') < args.size()) {
            out += args.begin()[next - '1'];
            ++i;
        } else {
            out += text[i];
        }
    }
    CFErrorChannel::Warning(out);
}

void ParserMessage::SyntaxError(std::string_view what, std::string_view command, std::size_t offset,
                                std::size_t length) {
    offset = std::min(offset, command.size());
    length = std::min(length, command.size() - offset);
    const size_t lineBreak = offset == 0 ? std::string_view::npos : command.rfind('\n', offset - 1);
    const size_t begin = lineBreak == std::string_view::npos ? 0 : lineBreak + 1;
    size_t end = command.find('\n', offset);
    if (end == std::string_view::npos) {
        end = command.size();
    }
    std::string_view line = command.substr(begin, end - begin);
    if (!line.empty() && line.back() == '\r') {
        line.remove_suffix(1);
    }

    fErrorText = fCommandName.empty() ? std::string("command") : fCommandName;
    if (command.find('\n') != std::string_view::npos) {
        const auto lineNumber = std::count(command.begin(), command.begin() + begin, '\n') + 1;
        fErrorText += ", line " + std::to_string(lineNumber);
    }
    fErrorText += ": ";
    fErrorText += what;
    fErrorText += "\n  ";
    fErrorText += line;
    fErrorText += "\n  ";
    for (size_t i = begin; i < offset && i - begin < line.size(); ++i) {
        const char c = command[i];
        if (c == '\t') {
            fErrorText += '\t';
        } else if (!IsContinuation(c)) {
            fErrorText += ' ';
        }
    }
    size_t carets = 0;
    for (size_t i = offset; i < offset + length && i < begin + line.size(); ++i) {
        carets += IsContinuation(command[i]) ? 0 : 1;
    }
    fErrorText.append(std::max<size_t>(carets, 1), '^');
}
