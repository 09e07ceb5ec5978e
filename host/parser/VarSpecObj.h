// Checks the variables named by one keyword of a parsed command against the
// data source and keeps the valid ones as positions in the data. Problems
// are reported on the host's error channel while error reporting is on.
#pragma once

#include <string>
#include <string_view>
#include <vector>

class ParamObj;
class SubComObj;
class CommandDescriptor;
class VEXA_DataSource;

class VarSpecObj final {
public:
    // How ValidateVariables treats a variable named more than once.
    enum RepeatOption {
        kRepeatError = 0, // an error: reported, and the validation fails
        kRepeatKeep = 1,  // kept as often as named
        kRepeatWarn = 2,  // kept once, with a warning
        kRepeatDrop = 3,  // kept once, silently
    };

    // The variables of `keyword` in `subcommand`; the descriptor gives the
    // names of the command and of the variables for messages. With
    // `numericOnly`, string variables are not valid. Error reporting starts on.
    VarSpecObj(const ParamObj* keyword, const SubComObj* subcommand,
               const CommandDescriptor* descriptor, const VEXA_DataSource* dataSource,
               bool numericOnly);

    void SetErrorReport(bool report) { fReport = report; }

    // Replaces the valid list with the valid variables of `names`, in order,
    // repeats treated by `repeat` (a RepeatOption). Names that are not
    // variables of the data source are left out. True when at least one
    // variable is valid and, under kRepeatError, none is repeated.
    bool ValidateVariables(const std::vector<std::string>& names, int repeat);
    // The position of one variable, appended to the valid list; negative when
    // the name is not a valid variable.
    int ValidateVariable(std::string_view name);
    // Positions in the data source of the variables found valid.
    const std::vector<int>& GetValidVarList() const { return fValid; }

    // True when no valid variable of this keyword is also a valid variable of
    // `other`; otherwise each shared variable is reported as an error
    // ("The grouping variable score also appears in the test variable list.").
    bool CheckCommonVars(const VarSpecObj& other) const;

private:
    // How messages name this keyword's variables ("test variable list").
    std::string Role() const;
    // "ONESAMPLE TEST", for messages.
    std::string Where() const;
    void ReportError(const std::string& text) const;

    std::string fKeyword;
    std::string fSubCommand;
    std::string fRole;
    const VEXA_DataSource* fDataSource;
    bool fNumericOnly;
    bool fReport = true;
    std::vector<int> fValid;
};
