// One keyword of a parsed subcommand, or one qualifier of a keyword, with
// what followed its name: nothing, a number, a word or quoted string, a list
// of variables, a list of qualifiers, or (for keywords the grammar leaves
// opaque) the text as written.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class ParamDescriptor;

class ParamObj final {
public:
    enum ValueKind {
        kNone,       // the keyword alone: SAMPLE, MANN_WHITNEY
        kNumber,     // NSAMPLES=5000
        kText,       // SAMPLE=FALSE, SEED=RANDOM (a word, in upper case) or a quoted string
        kVarList,    // TEST(a b c), GROUP(g): names after TO and ALL were resolved
        kQualifiers, // NORMAL(SAMPLE), NORMAL=SAMPLE, KOLMOGOROV_SMIRNOV(NSAMPLES=10 ...)
        kRaw,        // an opaque keyword's text after its name, as written
        kValueList,  // FREQUENCIES=(1 2 3), LIST('a' 'b'): numbers and texts
    };

    // One value of a value list: a number, or a text (a quoted string without
    // its quotes, or a word as written).
    struct ListValue {
        bool fIsText = false;
        double fNumber = 0.0;
        std::string fText;
    };

    explicit ParamObj(std::string name) : fName(std::move(name)) {}

    // The keyword's name, in upper case.
    const std::string& getParamName() const { return fName; }
    ValueKind getValueKind() const { return fValueKind; }
    // True when the keyword stands alone, without a value or qualifiers.
    bool isLeadingToken() const { return fValueKind == kNone; }
    // True when the value is text (a word or a quoted string) rather than a number.
    bool isStringValueCase() const { return fValueKind == kText; }

    // The value as an integer (truncated toward zero); 0 when it is not a number.
    int getIntegerValue() const;
    // The value as a number; 0 when it is not a number.
    double getNumberValue() const { return fValueKind == kNumber ? fNumber : 0.0; }

    // The variable names; false (and no names) when the keyword has no variable list.
    bool getVarList(std::vector<std::string>& names) const;
    // The first variable name, or "" when the keyword has no variable list.
    std::string getVarName() const;

    // The qualifiers, in command order. False when the keyword holds another
    // kind of value, or, when `desc` is given, a qualifier that `desc` does not
    // describe, a qualifier given twice, or more than one qualifier of a
    // keyword whose qualifiers are alternatives. A keyword alone gives an
    // empty list and true.
    bool getStringQualList(const ParamDescriptor* desc, std::vector<const ParamObj*>& list) const;
    // The qualifier of that name (matched without regard to case) in `list`, or null.
    const ParamObj* getParamObj(std::string_view name,
                                const std::vector<const ParamObj*>& list) const;
    // The keyword's text and its qualifier. A keyword with qualifiers
    // (NORMAL(SAMPLE), NORMAL=SAMPLE) gives the first qualifier's name and that
    // qualifier; a keyword with a text value (SAMPLE=FALSE, SEED=RANDOM) gives
    // the value and null; an opaque keyword its text as written and null; a
    // keyword alone "" and null. False for a number or a variable list.
    bool getStringAndQual(std::string& text, const ParamObj*& qualifier) const;

    // The values of a value list; empty for any other kind of value.
    const std::vector<ListValue>& getValueList() const { return fValues; }
    // The text of a kText or kRaw value.
    const std::string& getText() const { return fText; }
    const std::vector<ParamObj>& getQualifiers() const { return fQualifiers; }

    // Setting the value (the parser's side); each replaces the kind of value.
    void SetNumber(double value);
    void SetText(std::string text);
    void SetRaw(std::string text);
    void SetVarList(std::vector<std::string> names);
    void SetValueList(std::vector<ListValue> values);
    // Appends a qualifier and makes the value a qualifier list.
    ParamObj& AddQualifier(ParamObj qualifier);

private:
    std::string fName;
    ValueKind fValueKind = kNone;
    double fNumber = 0.0;
    std::string fText;
    std::vector<std::string> fVars;
    std::vector<ListValue> fValues;
    std::vector<ParamObj> fQualifiers;
};
