// The recursive-descent reader of command texts.
#include "host/parser/CommandParser.h"

#include <charconv>
#include <cmath>
#include <string>
#include <vector>

#include "host/parser/CommandDescriptor.h"
#include "host/parser/ParsedCommand.h"
#include "host/parser/ParserMessage.h"
#include "host/parser/ParserText.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
struct Token {
    enum Kind { kWord, kNumber, kString, kSlash, kEquals, kOpen, kClose, kComma, kEnd };
    Kind fKind = kEnd;
    size_t fOffset = 0;
    size_t fLength = 0;
    double fNumber = 0.0;
};

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool IsWordStart(char c) {
    return IsLetter(c) || c == '@' || c == '#' || c == '$' || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}
bool IsWordChar(char c) {
    return IsWordStart(c) || IsDigit(c) || c == '.';
}

// The text in double quotes, for messages.
std::string InQuotes(std::string_view text) {
    std::string quoted;
    quoted.reserve(text.size() + 2);
    quoted += '"';
    quoted += text;
    quoted += '"';
    return quoted;
}

class Reader final {
public:
    Reader(const CommandDescriptor& grammar, const VEXA_DataSource* dataSource,
           std::string_view text)
        : fGrammar(grammar), fDataSource(dataSource), fText(text) {}

    bool Lex();
    bool ReadCommand(CommandSpec& command);

    std::string fWhat;
    size_t fErrorOffset = 0;
    size_t fErrorLength = 0;

private:
    const Token& Peek() const { return fTokens[fPos]; }
    const Token& Next();
    bool PeekIs(Token::Kind kind) const { return Peek().fKind == kind; }
    bool PeekIsEndOfList() const { return PeekIs(Token::kEnd) || PeekIs(Token::kSlash); }
    std::string_view Written(const Token& token) const {
        return fText.substr(token.fOffset, token.fLength);
    }
    std::string Quoted(const Token& token) const {
        return token.fKind == Token::kEnd ? std::string("the end of the command")
                                          : InQuotes(Written(token));
    }

    bool Fail(std::string what, size_t offset, size_t length);
    bool Fail(std::string what, const Token& at) {
        return Fail(std::move(what), at.fOffset, at.fLength);
    }
    bool FailUnclosed(const Token& open) {
        return Fail("unbalanced parentheses: this ( is not closed", open);
    }
    bool FailUnopened(const Token& close) {
        return Fail("unbalanced parentheses: this ) has no matching (", close);
    }

    bool ReadKeyword(const ParamDescriptor& desc, ParamObj& obj, const Token& name);
    bool ReadValue(const ParamDescriptor& desc, ParamObj& obj);
    bool ReadVariables(const ParamDescriptor& desc, ParamObj& obj, const Token& open);
    bool ReadRange(const Token& first, std::vector<std::string>& names);
    bool ReadQualifiers(const ParamDescriptor& desc, ParamObj& obj, const Token& open);
    bool ReadQualifier(const ParamDescriptor& desc, ParamObj& obj);
    bool SkipBalanced(const Token& open);
    bool ReadValueList(const ParamDescriptor& desc, ParamObj& obj, const Token& name);
    ParamObj::ListValue ListValueOf(const Token& token) const;

    const CommandDescriptor& fGrammar;
    const VEXA_DataSource* fDataSource;
    std::string_view fText;
    std::vector<Token> fTokens;
    size_t fPos = 0;
    size_t fLastEnd = 0; // end of the last token read
};

const Token& Reader::Next() {
    const Token& token = fTokens[fPos];
    if (token.fKind != Token::kEnd) {
        ++fPos;
        fLastEnd = token.fOffset + token.fLength;
    }
    return token;
}

bool Reader::Fail(std::string what, size_t offset, size_t length) {
    fWhat = std::move(what);
    fErrorOffset = offset;
    fErrorLength = length;
    return false;
}

bool Reader::Lex() {
    size_t end = fText.size();
    while (end > 0 && IsSpace(fText[end - 1])) {
        --end;
    }
    if (end > 0 && fText[end - 1] == '.') {
        --end; // the terminating period
    }
    size_t i = 0;
    while (i < end) {
        const char c = fText[i];
        const char next = i + 1 < end ? fText[i + 1] : '\0';
        const char afterNext = i + 2 < end ? fText[i + 2] : '\0';
        Token token;
        token.fOffset = i;
        if (IsSpace(c)) {
            ++i;
            continue;
        }
        if (c == '/' || c == '=' || c == '(' || c == ')' || c == ',') {
            token.fKind = c == '/'   ? Token::kSlash
                          : c == '=' ? Token::kEquals
                          : c == '(' ? Token::kOpen
                          : c == ')' ? Token::kClose
                                     : Token::kComma;
            token.fLength = 1;
            ++i;
        } else if (c == '\'' || c == '"') {
            size_t j = i + 1; // a doubled quote stands for itself
            while (j < end && (fText[j] != c || (j + 1 < end && fText[j + 1] == c))) {
                j += fText[j] == c ? 2 : 1;
            }
            if (j >= end) {
                return Fail("the quoted string is not closed", i, end - i);
            }
            token.fKind = Token::kString;
            token.fLength = j + 1 - i;
            i = j + 1;
        } else if (IsDigit(c) || (c == '.' && IsDigit(next)) ||
                   ((c == '+' || c == '-') &&
                    (IsDigit(next) || (next == '.' && IsDigit(afterNext))))) {
            size_t j = (c == '+' || c == '-') ? i + 1 : i;
            while (j < end && IsDigit(fText[j])) {
                ++j;
            }
            if (j < end && fText[j] == '.') {
                ++j;
                while (j < end && IsDigit(fText[j])) {
                    ++j;
                }
            }
            if (j < end && (fText[j] == 'e' || fText[j] == 'E')) {
                size_t k = j + 1;
                if (k < end && (fText[k] == '+' || fText[k] == '-')) {
                    ++k;
                }
                if (k < end && IsDigit(fText[k])) {
                    j = k;
                    while (j < end && IsDigit(fText[j])) {
                        ++j;
                    }
                }
            }
            if (j < end && IsWordChar(fText[j])) {
                while (j < end && IsWordChar(fText[j])) {
                    ++j;
                }
                return Fail(InQuotes(fText.substr(i, j - i)) + " is not a number", i, j - i);
            }
            const size_t start = c == '+' ? i + 1 : i;
            auto [ptr, ec] = std::from_chars(fText.data() + start, fText.data() + j, token.fNumber);
            if (ec != std::errc() || ptr != fText.data() + j || !std::isfinite(token.fNumber)) {
                return Fail("the number " + std::string(fText.substr(i, j - i)) +
                                " is out of range",
                            i, j - i);
            }
            token.fKind = Token::kNumber;
            token.fLength = j - i;
            i = j;
        } else if (IsWordStart(c)) {
            size_t j = i;
            while (j < end && IsWordChar(fText[j])) {
                ++j;
            }
            token.fKind = Token::kWord;
            token.fLength = j - i;
            i = j;
        } else if (c == '.') {
            return Fail("a period ends the command and may stand only at its end", i, 1);
        } else {
            return Fail("unexpected character '" + std::string(1, c) + "'", i, 1);
        }
        fTokens.push_back(std::move(token));
    }
    Token last;
    last.fKind = Token::kEnd;
    last.fOffset = end;
    fTokens.push_back(last);
    return true;
}

bool Reader::ReadCommand(CommandSpec& command) {
    const std::string& commandName = fGrammar.getCommandName();
    const std::string subcommands = fGrammar.ListSubComs();
    if (PeekIs(Token::kWord) && EqualNoCase(Written(Peek()), commandName)) {
        Next();
    } else if (PeekIs(Token::kWord) && !fGrammar.getSubComDesc(Written(Peek()))) {
        return Fail("expected the command name " + commandName + ", not " + Quoted(Peek()), Peek());
    }
    bool first = true;
    while (!PeekIs(Token::kEnd)) {
        if (PeekIs(Token::kSlash)) {
            Next();
            if (!PeekIs(Token::kWord)) {
                return Fail("expected a subcommand name after /; the subcommands are " +
                                subcommands,
                            Peek());
            }
        } else if (PeekIs(Token::kClose)) {
            return FailUnopened(Peek());
        } else if (!first || !PeekIs(Token::kWord)) {
            return Fail("expected / and a subcommand name; the subcommands are " + subcommands,
                        Peek());
        }
        first = false;
        const Token& name = Next();
        const SubComDescriptor* subDesc = fGrammar.getSubComDesc(Written(name));
        if (!subDesc) {
            return Fail("unknown subcommand " + Quoted(name) + "; the subcommands are " +
                            subcommands,
                        name);
        }
        if (command.getSubComObj(subDesc->getName())) {
            return Fail("the subcommand " + subDesc->getName() + " is given twice", name);
        }
        SubComObj subcommand(subDesc->getName());
        while (!PeekIsEndOfList()) {
            if (PeekIs(Token::kComma)) {
                Next();
                continue;
            }
            if (PeekIs(Token::kClose)) {
                return FailUnopened(Peek());
            }
            const std::string keywords = subDesc->ListParams();
            if (!PeekIs(Token::kWord)) {
                return Fail("expected a keyword of " + subDesc->getName() + ", not " +
                                Quoted(Peek()) + "; its keywords are " + keywords,
                            Peek());
            }
            const Token& keyword = Next();
            const ParamDescriptor* desc = subDesc->getParamDesc(Written(keyword));
            if (!desc) {
                return Fail("unknown keyword " + Quoted(keyword) + " on " + subDesc->getName() +
                                "; its keywords are " + keywords,
                            keyword);
            }
            if (subcommand.getParamObj(desc->fName)) {
                return Fail("the keyword " + desc->fName + " is given twice on " +
                                subDesc->getName(),
                            keyword);
            }
            ParamObj obj(desc->fName);
            if (!ReadKeyword(*desc, obj, keyword)) {
                return false;
            }
            subcommand.AddParam(std::move(obj));
        }
        command.AddSubCom(std::move(subcommand));
    }
    return true;
}

bool Reader::ReadKeyword(const ParamDescriptor& desc, ParamObj& obj, const Token& name) {
    switch (desc.fKind) {
    case ParamDescriptor::kFlag:
        if (PeekIs(Token::kEquals) || PeekIs(Token::kOpen)) {
            return Fail(desc.fName + " takes no value", Peek());
        }
        return true;
    case ParamDescriptor::kValue:
        if (PeekIs(Token::kEquals)) {
            Next();
            return ReadValue(desc, obj);
        }
        if (PeekIs(Token::kOpen)) {
            const Token& open = Next();
            if (!ReadValue(desc, obj)) {
                return false;
            }
            if (PeekIs(Token::kClose)) {
                Next();
                return true;
            }
            return PeekIsEndOfList() ? FailUnclosed(open)
                                     : Fail("expected ) after the value of " + desc.fName, Peek());
        }
        if (desc.fBare) {
            return true;
        }
        return Fail(desc.fName + " needs a value: =" + desc.DescribeValue(), name);
    case ParamDescriptor::kVarList:
    case ParamDescriptor::kVariable:
        if (!PeekIs(Token::kOpen)) {
            return Fail(desc.fName + (desc.fKind == ParamDescriptor::kVariable
                                          ? " needs one variable name in parentheses"
                                          : " needs a list of variable names in parentheses"),
                        name);
        }
        return ReadVariables(desc, obj, Next());
    case ParamDescriptor::kQualifiers:
        if (PeekIs(Token::kOpen)) {
            return ReadQualifiers(desc, obj, Next());
        }
        if (PeekIs(Token::kEquals)) {
            Next();
            return ReadQualifier(desc, obj);
        }
        return true;
    case ParamDescriptor::kValueList:
        return ReadValueList(desc, obj, name);
    case ParamDescriptor::kOpaque: {
        const size_t start = Peek().fOffset;
        if (PeekIs(Token::kEquals)) {
            Next();
            if (!PeekIs(Token::kWord) && !PeekIs(Token::kNumber) && !PeekIs(Token::kString)) {
                return Fail("expected a value after " + desc.fName + "=", Peek());
            }
            Next();
            if (PeekIs(Token::kOpen) && !SkipBalanced(Next())) {
                return false;
            }
        } else if (PeekIs(Token::kOpen)) {
            if (!SkipBalanced(Next())) {
                return false;
            }
        } else {
            return true;
        }
        obj.SetRaw(std::string(fText.substr(start, fLastEnd - start)));
        return true;
    }
    }
    return true;
}

bool Reader::ReadValue(const ParamDescriptor& desc, ParamObj& obj) {
    const Token& value = Peek();
    const std::string expected = desc.DescribeValue();
    switch (value.fKind) {
    case Token::kNumber: {
        const double v = value.fNumber;
        const bool inRange =
            desc.fOpen ? (v > desc.fMin && v < desc.fMax) : (v >= desc.fMin && v <= desc.fMax);
        if (desc.fNumber == ParamDescriptor::kNoNumber || !inRange ||
            (desc.fNumber == ParamDescriptor::kInteger && v != std::trunc(v))) {
            return Fail("bad value " + Quoted(value) + " for " + desc.fName + ": expected " +
                            expected,
                        value);
        }
        obj.SetNumber(v);
        Next();
        return true;
    }
    case Token::kWord: {
        std::string word = ToUpper(Written(value));
        for (const std::string& allowed : desc.fWords) {
            if (word == allowed) {
                obj.SetText(std::move(word));
                Next();
                return true;
            }
        }
        return Fail("bad value " + Quoted(value) + " for " + desc.fName + ": expected " + expected,
                    value);
    }
    case Token::kString:
        return Fail("bad value " + Quoted(value) + " for " + desc.fName + ": expected " + expected +
                        ", not a quoted string",
                    value);
    default:
        return Fail("expected a value for " + desc.fName + ": " + expected, value);
    }
}

bool Reader::ReadVariables(const ParamDescriptor& desc, ParamObj& obj, const Token& open) {
    const bool single = desc.fKind == ParamDescriptor::kVariable;
    std::vector<std::string> names;
    for (;;) {
        const Token& token = Peek();
        if (token.fKind == Token::kClose) {
            if (names.empty()) {
                return Fail("expected a variable name before )", token);
            }
            Next();
            break;
        }
        if (token.fKind == Token::kComma && !single) {
            Next();
            continue;
        }
        if (PeekIsEndOfList()) {
            return FailUnclosed(open);
        }
        if (token.fKind != Token::kWord) {
            return Fail("expected a variable name, not " + Quoted(token), token);
        }
        if (single && !names.empty()) {
            return Fail(desc.fName + " takes one variable", token);
        }
        const std::string_view word = Written(token);
        if (EqualNoCase(word, "TO")) {
            return Fail("TO needs a variable name before it", token);
        }
        if (EqualNoCase(word, "ALL")) {
            if (single) {
                return Fail(desc.fName + " takes one variable, not ALL", token);
            }
            if (!fDataSource) {
                return Fail("ALL needs a data dictionary to name the variables", token);
            }
            for (int i = 0; i < fDataSource->GetVariableCount(); ++i) {
                names.push_back(fDataSource->GetVariable(i)->GetName());
            }
            Next();
            continue;
        }
        Next();
        if (PeekIs(Token::kWord) && EqualNoCase(Written(Peek()), "TO")) {
            if (single) {
                return Fail(desc.fName + " takes one variable, not a range", Peek());
            }
            if (!ReadRange(token, names)) {
                return false;
            }
            continue;
        }
        names.emplace_back(word);
    }
    obj.SetVarList(std::move(names));
    return true;
}

bool Reader::ReadRange(const Token& first, std::vector<std::string>& names) {
    Next(); // TO
    if (!PeekIs(Token::kWord) || EqualNoCase(Written(Peek()), "ALL") ||
        EqualNoCase(Written(Peek()), "TO")) {
        return Fail("expected a variable name after TO", Peek());
    }
    const Token& last = Next();
    const std::string range = std::string(Written(first)) + " TO " + std::string(Written(last));
    const size_t spanLength = last.fOffset + last.fLength - first.fOffset;
    if (!fDataSource) {
        return Fail("the range " + range + " needs a data dictionary", first.fOffset, spanLength);
    }
    const int from = fDataSource->FindVarIndex(Written(first));
    if (from < 0) {
        return Fail("the variable " + Quoted(first) + " of the range " + range +
                        " is not in the data",
                    first);
    }
    const int to = fDataSource->FindVarIndex(Written(last));
    if (to < 0) {
        return Fail("the variable " + Quoted(last) + " of the range " + range +
                        " is not in the data",
                    last);
    }
    if (to < from) {
        return Fail("the range " + range + " runs backwards: " + std::string(Written(last)) +
                        " comes before " + std::string(Written(first)) + " in the data",
                    first.fOffset, spanLength);
    }
    for (int i = from; i <= to; ++i) {
        names.push_back(fDataSource->GetVariable(i)->GetName());
    }
    return true;
}

bool Reader::ReadQualifiers(const ParamDescriptor& desc, ParamObj& obj, const Token& open) {
    if (PeekIs(Token::kClose)) {
        return Fail("expected a qualifier of " + desc.fName + " before ); its qualifiers are " +
                        desc.ListQualifiers(),
                    Peek());
    }
    for (;;) {
        if (PeekIs(Token::kClose)) {
            Next();
            return true;
        }
        if (PeekIs(Token::kComma)) {
            Next();
            continue;
        }
        if (PeekIsEndOfList()) {
            return FailUnclosed(open);
        }
        if (!ReadQualifier(desc, obj)) {
            return false;
        }
    }
}

bool Reader::ReadQualifier(const ParamDescriptor& desc, ParamObj& obj) {
    const Token& name = Peek();
    const std::string qualifiers = desc.ListQualifiers();
    if (name.fKind != Token::kWord) {
        return Fail("expected a qualifier of " + desc.fName + ", not " + Quoted(name) +
                        "; its qualifiers are " + qualifiers,
                    name);
    }
    const ParamDescriptor* qualDesc = desc.getParamDesc(Written(name));
    if (!qualDesc) {
        return Fail("unknown qualifier " + Quoted(name) + " of " + desc.fName +
                        "; its qualifiers are " + qualifiers,
                    name);
    }
    if (desc.fSingle && !obj.getQualifiers().empty()) {
        return Fail(desc.fName + " takes only one of " + qualifiers, name);
    }
    for (const ParamObj& given : obj.getQualifiers()) {
        if (given.getParamName() == qualDesc->fName) {
            return Fail("the qualifier " + qualDesc->fName + " is given twice on " + desc.fName,
                        name);
        }
    }
    Next();
    ParamObj qualifier(qualDesc->fName);
    if (!ReadKeyword(*qualDesc, qualifier, name)) {
        return false;
    }
    obj.AddQualifier(std::move(qualifier));
    return true;
}

ParamObj::ListValue Reader::ListValueOf(const Token& token) const {
    ParamObj::ListValue value;
    if (token.fKind == Token::kNumber) {
        value.fNumber = token.fNumber;
        return value;
    }
    value.fIsText = true;
    const std::string_view written = Written(token);
    if (token.fKind != Token::kString) {
        value.fText = std::string(written);
        return value;
    }
    const char quote = written.front(); // a doubled quote stands for itself
    for (size_t i = 1; i + 1 < written.size(); ++i) {
        value.fText += written[i];
        if (written[i] == quote) {
            ++i;
        }
    }
    return value;
}

bool Reader::ReadValueList(const ParamDescriptor& desc, ParamObj& obj, const Token& name) {
    std::vector<ParamObj::ListValue> values;
    const bool equals = PeekIs(Token::kEquals);
    if (equals) {
        Next();
    }
    if (PeekIs(Token::kOpen)) {
        const Token& open = Next();
        for (;;) {
            const Token& token = Peek();
            if (token.fKind == Token::kClose) {
                Next();
                break;
            }
            if (token.fKind == Token::kComma) {
                Next();
                continue;
            }
            if (PeekIsEndOfList()) {
                return FailUnclosed(open);
            }
            if (token.fKind != Token::kNumber && token.fKind != Token::kString &&
                token.fKind != Token::kWord) {
                return Fail("expected a value in the list of " + desc.fName + ", not " +
                                Quoted(token),
                            token);
            }
            values.push_back(ListValueOf(Next()));
        }
    } else if (equals) {
        // KEY=v1 v2 ...: numbers and quoted strings up to the next word.
        while (PeekIs(Token::kNumber) || PeekIs(Token::kString) || PeekIs(Token::kComma)) {
            if (PeekIs(Token::kComma)) {
                Next();
                continue;
            }
            values.push_back(ListValueOf(Next()));
        }
    }
    if (values.empty()) {
        return Fail(desc.fName + " needs a list of values: " + desc.fName + "(1 2 3) or " +
                        desc.fName + "('a' 'b')",
                    name);
    }
    obj.SetValueList(std::move(values));
    return true;
}

bool Reader::SkipBalanced(const Token& open) {
    int depth = 1;
    while (depth > 0) {
        if (PeekIsEndOfList()) {
            return FailUnclosed(open);
        }
        if (PeekIs(Token::kOpen)) {
            ++depth;
        } else if (PeekIs(Token::kClose)) {
            --depth;
        }
        Next();
    }
    return true;
}
} // namespace

std::unique_ptr<CommandSpec> CommandParser::Parse(std::string_view text,
                                                  ParserMessage& message) const {
    message.SetCommandName(fGrammar.getCommandName());
    message.SetProcedureTitle(fGrammar.getProcedureTitle());
    Reader reader(fGrammar, fDataSource, text);
    auto command = std::make_unique<CommandSpec>(fGrammar.getCommandName(), std::string(text));
    if (!reader.Lex() || !reader.ReadCommand(*command)) {
        message.SyntaxError(reader.fWhat, text, reader.fErrorOffset, reader.fErrorLength);
        return nullptr;
    }
    return command;
}
