// The grammar of one keyword of a subcommand, or of one qualifier of a
// keyword: what may follow its name. Grammars are data tables built from the
// factories below; the command parser interprets them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class ParamDescriptor final {
public:
    enum Kind {
        kFlag,       // the keyword alone: MANN_WHITNEY
        kValue,      // KEY=value or KEY(value): a number in a range or one of a set of words
        kVarList,    // KEY(varlist): names, "a TO b" ranges of the data, ALL
        kVariable,   // KEY(var): exactly one variable name
        kQualifiers, // KEY, KEY(q1 q2 ...) or KEY=q, each q described by fQualifiers
        kOpaque, // KEY, KEY=token, KEY(...) or KEY=token(...): any balanced text, kept as written
        kValueList, // KEY(v1 v2 ...), KEY=(v1 v2 ...) or KEY=v1 v2 ...: numbers and quoted strings
    };
    enum NumberType { kNoNumber, kInteger, kReal };

    // A keyword that stands alone.
    static ParamDescriptor Flag(std::string name);
    // A keyword whose contents the parser checks only for balance.
    static ParamDescriptor Opaque(std::string name);
    // A keyword with a list of variables; `role` names the list in messages
    // ("test variable list").
    static ParamDescriptor VarList(std::string name, std::string role);
    // A keyword with one variable; `role` names it in messages ("grouping variable").
    static ParamDescriptor Variable(std::string name, std::string role);
    // KEY=integer from `min` to `max`, or one of `words`.
    static ParamDescriptor Integer(std::string name, double min, double max,
                                   std::vector<std::string> words = {});
    // KEY=number; the bounds are excluded when `open` is set.
    static ParamDescriptor Number(std::string name, double min, double max, bool open);
    // A list of values: numbers and quoted strings (and unquoted words inside
    // parentheses), for categories and frequencies.
    static ParamDescriptor ValueList(std::string name);
    // KEY=one of `words`.
    static ParamDescriptor Words(std::string name, std::vector<std::string> words);
    // A keyword with qualifiers; with `single`, at most one of them (alternatives).
    static ParamDescriptor Qualifiers(std::string name, std::vector<ParamDescriptor> qualifiers,
                                      bool single = false);

    // The same descriptor, also accepted without a value (SAMPLE beside SAMPLE=TRUE).
    ParamDescriptor OrBare() const;

    // The descriptor of a qualifier (matched without regard to case), or null.
    const ParamDescriptor* getParamDesc(std::string_view name) const;

    // What the value may be, for messages: "an integer from 1 to 2147483647 or RANDOM".
    std::string DescribeValue() const;
    // The qualifiers' names separated by ", ", for messages.
    std::string ListQualifiers() const;

    std::string fName; // in upper case
    Kind fKind = kFlag;
    NumberType fNumber = kNoNumber;           // kValue: the number accepted, if any
    double fMin = 0;                          // kValue: lowest number accepted
    double fMax = 0;                          // kValue: highest number accepted
    bool fOpen = false;                       // kValue: fMin and fMax themselves excluded
    std::vector<std::string> fWords;          // kValue: words accepted, in upper case
    bool fBare = false;                       // kValue: the keyword may also stand alone
    bool fSingle = false;                     // kQualifiers: at most one qualifier
    std::string fRole;                        // kVarList, kVariable: name of the variables
    std::vector<ParamDescriptor> fQualifiers; // kQualifiers
};
