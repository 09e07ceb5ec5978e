// Cell texts of the output: what a pivot-table cell, label, title or footnote
// says. A cell text is a description (a string key, a number with a format, a
// data value of a variable, a variable, or a composite of those filled into a
// template); the output resolves it into its final text when it is placed.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/bp/BpFormat.h"

class VEXA_Variable;
class BpProcedure;
class BpAnnotation;

// A resolved cell text: the text shown and, for a number, the number itself.
struct BpResolvedText {
    std::string fText;
    std::optional<double> fValue; // empty for texts and for missing numbers
};

class BpCellText {
public:
    virtual ~BpCellText();
    virtual std::unique_ptr<BpCellText> Clone() const = 0;
    // The final text, translated through the procedure's string dictionary
    // where the text asks for it.
    virtual BpResolvedText Resolve(const BpProcedure& procedure) const = 0;
    // A shared copy of this text, to be attached as a footnote.
    BpAnnotation Replicate() const;
};

// A plain text; `translate` makes it a key of the string dictionary (a key
// without an entry shows as itself).
class BpString final : public BpCellText {
public:
    BpString(std::string text, bool translate) : fText(std::move(text)), fTranslate(translate) {}
    std::unique_ptr<BpCellText> Clone() const override;
    BpResolvedText Resolve(const BpProcedure& procedure) const override;

private:
    std::string fText;
    bool fTranslate;
};

class BpNumber final : public BpCellText {
public:
    BpNumber(double value, BpFormatSpec format) : fValue(value), fFormat(format) {}
    std::unique_ptr<BpCellText> Clone() const override;
    BpResolvedText Resolve(const BpProcedure& procedure) const override;

private:
    double fValue;
    BpFormatSpec fFormat;
};

// A value of a variable, shown by the variable's display format or value label.
class BpDataValue final : public BpCellText {
public:
    enum Preference {
        kValue = 0,   // the value in the variable's format
        kLabel = 1,   // its value label, or the value when it has none
        kDefault = 2, // the output's setting (label when there is one)
    };
    BpDataValue(const VEXA_Variable* variable, double value, int preference)
        : fVariable(variable), fNumber(value), fPreference(preference) {}
    BpDataValue(const VEXA_Variable* variable, std::string value, int preference)
        : fVariable(variable), fIsString(true), fString(std::move(value)), fPreference(preference) {
    }
    std::unique_ptr<BpCellText> Clone() const override;
    BpResolvedText Resolve(const BpProcedure& procedure) const override;

private:
    const VEXA_Variable* fVariable;
    bool fIsString = false;
    double fNumber = 0.0;
    std::string fString;
    int fPreference;
};

// A variable, shown by name or label.
class BpVariable final : public BpCellText {
public:
    enum Show {
        kName = 0,
        kLabel = 1,   // the label, or the name when it has none
        kDefault = 2, // the output's setting (label when there is one)
    };
    BpVariable(const VEXA_Variable* variable, int show) : fVariable(variable), fShow(show) {}
    std::unique_ptr<BpCellText> Clone() const override;
    BpResolvedText Resolve(const BpProcedure& procedure) const override;

private:
    const VEXA_Variable* fVariable;
    int fShow;
};

// Parts filled into a template. In the template, "^N" stands for the N-th
// added part (1-based). "[...]N" repeats its contents over the items of
// sublist N: the contents are split at ":" into the form of the first item
// and the form of each further item, and inside them "%N" or "^N" stands for
// the N-th part of the item (an item has as many parts as the highest number
// its forms use). So "[%1:, ^1]1" lists sublist 1 separated by ", ", and
// "[%1 = %2:, ^1 = ^2:]1" lists pairs. "^^" writes a caret, "%%" a percent.
class BpComposite final : public BpCellText {
public:
    BpComposite(std::string pattern, bool translate)
        : fPattern(std::move(pattern)), fTranslate(translate) {}
    BpComposite(const BpComposite& other);
    BpComposite& operator=(const BpComposite& other);
    BpComposite(BpComposite&&) = default;
    BpComposite& operator=(BpComposite&&) = default;

    // Adds a part to the open sublist, or to the top level when none is open.
    BpComposite& Add(const BpCellText& part);
    // Opens the next sublist; parts go into it until EndSublist.
    BpComposite& Sublist();
    BpComposite& EndSublist();
    // Closes the composite; it is complete and may be placed.
    BpComposite& Finish();

    std::unique_ptr<BpCellText> Clone() const override;
    BpResolvedText Resolve(const BpProcedure& procedure) const override;

private:
    using Parts = std::vector<std::unique_ptr<BpCellText>>;
    std::string fPattern;
    bool fTranslate;
    Parts fParts;
    std::vector<Parts> fSublists;
    bool fInSublist = false;
};

// A footnote: a shared copy of a cell text.
class BpAnnotation final {
public:
    BpAnnotation() = default;
    explicit BpAnnotation(std::shared_ptr<const BpCellText> text) : fText(std::move(text)) {}
    const BpCellText* Text() const { return fText.get(); }
    explicit operator bool() const { return fText != nullptr; }

private:
    std::shared_ptr<const BpCellText> fText;
};
