// A data set of named columns.
#include "engine/data/Dataset.h"

#include "host/parser/ParserText.h"

int Dataset::FindVariable(std::string_view name) const {
    for (std::size_t i = 0; i < fColumns.size(); ++i) {
        if (fColumns[i].fVariable.fName == name) {
            return static_cast<int>(i);
        }
    }
    // The command language matches names without regard to case.
    for (std::size_t i = 0; i < fColumns.size(); ++i) {
        if (EqualNoCase(fColumns[i].fVariable.fName, name)) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

Column& Dataset::AddColumn(Variable variable) {
    fColumns.push_back(Column{std::move(variable), {}, {}});
    return fColumns.back();
}

bool Dataset::IsSysMissing(int index, std::size_t row) const {
    const Column& column = fColumns[index];
    return column.fVariable.IsString() ? column.fTexts[row].empty()
                                       : column.fNumbers[row] == kSysMis;
}

bool Dataset::IsUserMissing(int index, std::size_t row) const {
    const Column& column = fColumns[index];
    for (const DataValue& missing : column.fVariable.fMissingValues) {
        if (column.fVariable.IsString() ? column.fTexts[row] == missing.fText
                                        : column.fNumbers[row] == missing.fNumber) {
            return true;
        }
    }
    return false;
}
