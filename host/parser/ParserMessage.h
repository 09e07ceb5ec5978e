// Messages of the command layer: warnings that a procedure raises while it
// reads its command (sent to the host's error channel), and the syntax error
// of a command that could not be parsed.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

class ParserMessage final {
public:
    void SetCommandName(std::string name) { fCommandName = std::move(name); }
    void SetProcedureTitle(std::string title) { fProcedureTitle = std::move(title); }
    const std::string& GetCommandName() const { return fCommandName; }
    const std::string& GetProcedureTitle() const { return fProcedureTitle; }

    // Reports a warning on the host's error channel; "%1", "%2", ... in `text`
    // stand for the arguments in order.
    void GenericWarning(std::string_view text,
                        std::initializer_list<std::string_view> args = {}) const;

    // Records a syntax error: the text names the command (and the line of a
    // command of several lines), says what is wrong, quotes the command's line
    // that holds the offending word and underlines the word with carets.
    // `offset` and `length` locate the word in `command`.
    void SyntaxError(std::string_view what, std::string_view command, std::size_t offset,
                     std::size_t length);
    bool HasError() const { return !fErrorText.empty(); }
    const std::string& GetErrorText() const { return fErrorText; }

private:
    std::string fCommandName;
    std::string fProcedureTitle;
    std::string fErrorText;
};
