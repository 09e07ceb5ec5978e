// Reads the text of a command into a CommandSpec, against the command's
// grammar (a CommandDescriptor).
//
// The language: the command name (optional), then subcommands, each
// introduced by "/" (the first may omit it), each with its keywords. What
// follows a keyword is given by its descriptor: nothing; "=value" or
// "(value)"; a parenthesised variable list with "a TO b" ranges (resolved
// against the data source, in its order) and ALL; a parenthesised list of
// qualifiers, each itself a keyword of the grammar ("KEY(SAMPLE)", or
// "KEY=SAMPLE" for one qualifier); or, for opaque keywords, any balanced
// text. Values are numbers, words, or strings quoted with ' or " (a doubled
// quote stands for itself). Commas may separate list items. Keywords, words
// and variable names match without regard to case; keywords and words are
// kept in upper case, variable names as written. A period may end the
// command. Each subcommand, keyword and qualifier may be given once.
#pragma once

#include <memory>
#include <string_view>

class CommandDescriptor;
class CommandSpec;
class ParserMessage;
class VEXA_DataSource;

class CommandParser final {
public:
    // Without a data source, TO ranges and ALL are errors.
    CommandParser(const CommandDescriptor& grammar, const VEXA_DataSource* dataSource)
        : fGrammar(grammar), fDataSource(dataSource) {}

    // The parsed command, or null with the syntax error recorded in `message`
    // (whose command name is set from the grammar).
    std::unique_ptr<CommandSpec> Parse(std::string_view text, ParserMessage& message) const;

private:
    const CommandDescriptor& fGrammar;
    const VEXA_DataSource* fDataSource;
};
