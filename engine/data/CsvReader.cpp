// Reading CSV and TSV files with libcsv.
#include "engine/data/CsvReader.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

#include <csv.h>

#include "engine/data/Dataset.h"
#include "host/vexa/VEXA_DataSource.h"

namespace {
constexpr std::size_t kMaxRecordBytes = std::size_t{64} << 20;

bool EndsWithNoCase(const std::string& text, std::string_view suffix) {
    if (text.size() < suffix.size()) {
        return false;
    }
    for (std::size_t i = 0; i < suffix.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(text[text.size() - suffix.size() + i])) !=
            suffix[i]) {
            return false;
        }
    }
    return true;
}

// Length of the valid UTF-8 prefix of `text`.
std::size_t ValidUtf8(std::string_view text) {
    std::size_t i = 0;
    while (i < text.size()) {
        const auto c = static_cast<unsigned char>(text[i]);
        std::size_t extra = 0;
        unsigned int min = 0;
        unsigned int code = 0;
        if (c < 0x80) {
            ++i;
            continue;
        } else if ((c & 0xE0) == 0xC0) {
            extra = 1, min = 0x80, code = c & 0x1F;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2, min = 0x800, code = c & 0x0F;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3, min = 0x10000, code = c & 0x07;
        } else {
            return i;
        }
        if (i + extra >= text.size()) {
            return i;
        }
        for (std::size_t k = 1; k <= extra; ++k) {
            const auto d = static_cast<unsigned char>(text[i + k]);
            if ((d & 0xC0) != 0x80) {
                return i;
            }
            code = (code << 6) | (d & 0x3F);
        }
        if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            return i;
        }
        i += extra + 1;
    }
    return i;
}

std::string_view Trim(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

enum class NumberStatus { kOk, kEmpty, kNotNumber, kOutOfRange };

NumberStatus ParseNumber(std::string_view text, double& value) {
    text = Trim(text);
    if (text.empty()) {
        value = kSysMis;
        return NumberStatus::kEmpty;
    }
    if (text.front() == '+') {
        text.remove_prefix(1);
    }
    if (text.empty() || !(std::isdigit(static_cast<unsigned char>(text.front())) ||
                          text.front() == '.' || text.front() == '-')) {
        return NumberStatus::kNotNumber; // also rules out "nan" and "inf"
    }
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec == std::errc::result_out_of_range) {
        return NumberStatus::kOutOfRange;
    }
    if (ec != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) {
        return NumberStatus::kNotNumber;
    }
    if (value == kSysMis) {
        return NumberStatus::kOutOfRange; // the one finite double that stands for missing
    }
    return NumberStatus::kOk;
}

// Days from 1970-01-01 to a civil date (proleptic Gregorian).
long long DaysFromCivil(long long y, unsigned m, unsigned d) {
    y -= m <= 2;
    const long long era = (y >= 0 ? y : y - 399) / 400;
    const unsigned yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<long long>(doe) - 719468;
}

bool ValidDate(int y, int m, int d) {
    static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (m < 1 || m > 12 || d < 1 || y < 1 || y > 9999) {
        return false;
    }
    const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    return d <= kDays[m - 1] + (m == 2 && leap ? 1 : 0);
}

// Reads "N<sep>N<sep>N" with the given separators; each part an integer.
bool ReadThree(std::string_view text, char sep, int parts[3]) {
    for (int i = 0; i < 3; ++i) {
        auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), parts[i]);
        if (ec != std::errc() || end == text.data()) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (i < 2) {
            if (text.empty() || text.front() != sep) {
                return false;
            }
            text.remove_prefix(1);
        }
    }
    return text.empty();
}

int MonthOfName(std::string_view name) {
    static const char* kMonths[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                    "jul", "aug", "sep", "oct", "nov", "dec"};
    if (name.size() != 3) {
        return 0;
    }
    for (int m = 0; m < 12; ++m) {
        bool same = true;
        for (int i = 0; i < 3; ++i) {
            same = same && std::tolower(static_cast<unsigned char>(name[i])) == kMonths[m][i];
        }
        if (same) {
            return m + 1;
        }
    }
    return 0;
}

// One column as read: the texts of its cells in one buffer.
struct RawColumn {
    std::string fName;
    std::string fText;
    std::vector<std::size_t> fEnds; // end of each cell in fText

    std::string_view Cell(std::size_t row) const {
        const std::size_t begin = row == 0 ? 0 : fEnds[row - 1];
        return std::string_view(fText).substr(begin, fEnds[row] - begin);
    }
};

struct ParseState {
    std::string fName;
    std::vector<RawColumn> fColumns;
    std::vector<long long> fRecordLines; // line of each data record
    std::vector<std::string> fHeader;
    bool fHaveHeader = false;
    std::size_t fField = 0;          // fields of the current record so far
    std::vector<std::string> fFirst; // header record being read
    long long fLine = 1;             // the line being read
    long long fRecordLine = 1;       // first line of the current record
    bool fInRecord = false;
    std::string fError;
    std::size_t fRecordBytes = 0;

    std::string Where(long long line, std::size_t column) const {
        std::string text = fName + ": line " + std::to_string(line);
        if (column > 0) {
            text += ", column " + std::to_string(column);
            if (column <= fHeader.size()) {
                text += " (" + fHeader[column - 1] + ")";
            }
        }
        return text;
    }
};

void OnField(void* field, std::size_t length, void* data) {
    auto& state = *static_cast<ParseState*>(data);
    if (!state.fError.empty()) {
        return;
    }
    const std::string_view text(static_cast<const char*>(field), field ? length : 0);
    if (!state.fInRecord) {
        state.fInRecord = true;
        state.fRecordLine = state.fLine;
        state.fField = 0;
    }
    ++state.fField;
    const std::size_t valid = ValidUtf8(text);
    if (valid != text.size()) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "0x%02X", static_cast<unsigned char>(text[valid]));
        state.fError = state.Where(state.fLine, state.fHaveHeader ? state.fField : 0) +
                       ": the byte " + hex + " is not UTF-8 text";
        return;
    }
    state.fLine += std::count(text.begin(), text.end(), '\n');
    if (!state.fHaveHeader) {
        state.fFirst.emplace_back(Trim(text));
        return;
    }
    if (state.fField > state.fColumns.size()) {
        return; // reported at the end of the record
    }
    RawColumn& column = state.fColumns[state.fField - 1];
    column.fText.append(text);
    column.fEnds.push_back(column.fText.size());
}

void OnRecord(int terminator, void* data) {
    auto& state = *static_cast<ParseState*>(data);
    if (terminator == '\n') {
        ++state.fLine;
    }
    if (!state.fError.empty() || !state.fInRecord) {
        return; // a blank line, or the LF of a CRLF
    }
    state.fInRecord = false;
    state.fRecordBytes = 0;
    if (!state.fHaveHeader) {
        state.fHaveHeader = true;
        state.fHeader = std::move(state.fFirst);
        for (std::size_t i = 0; i < state.fHeader.size(); ++i) {
            const std::string& name = state.fHeader[i];
            if (name.empty()) {
                state.fError = state.Where(state.fRecordLine, 0) + ": column " +
                               std::to_string(i + 1) + " of the header has no name";
                return;
            }
            for (std::size_t j = 0; j < i; ++j) {
                if (state.fHeader[j] == name) {
                    state.fError = state.Where(state.fRecordLine, 0) + ": the column name " + name +
                                   " is given twice (columns " + std::to_string(j + 1) + " and " +
                                   std::to_string(i + 1) + ")";
                    return;
                }
            }
            state.fColumns.push_back(RawColumn{name, {}, {}});
        }
        return;
    }
    if (state.fField != state.fColumns.size()) {
        state.fError = state.Where(state.fRecordLine, 0) + ": the row has " +
                       std::to_string(state.fField) + " cells, the header " +
                       std::to_string(state.fColumns.size());
        return;
    }
    state.fRecordLines.push_back(state.fRecordLine);
}

Variable DefaultVariable(const std::string& name) {
    Variable variable;
    variable.fName = name;
    variable.fLabel = name;
    return variable;
}

Variable FromDictionary(const VEXA_Variable& source) {
    Variable variable;
    variable.fName = source.GetName();
    variable.fLabel = source.GetPreferredLabel();
    const VEXA_Format& format = source.GetFormat();
    const bool isDate = VEXA_Format::IsDateTime(format.fType);
    variable.fType = !source.IsNumeric() ? StorageType::kString
                     : isDate            ? StorageType::kDate
                     : format.fDecimals == 0 && format.fType == VEXA_Format::kNumber
                         ? StorageType::kInteger
                         : StorageType::kDouble;
    variable.fFormatType = format.fType;
    variable.fFormatWidth = format.fWidth;
    variable.fFormatDecimals = format.fDecimals;
    switch (source.GetMeasure()) {
    case VEXA_Variable::kCategorical:
        variable.fLevel = MeasureLevel::kNominal;
        break;
    case VEXA_Variable::kOrdinal:
        variable.fLevel = MeasureLevel::kOrdinal;
        break;
    case VEXA_Variable::kContinuous:
        variable.fLevel = MeasureLevel::kContinuous;
        break;
    default:
        variable.fLevel = source.IsNumeric() ? MeasureLevel::kContinuous : MeasureLevel::kNominal;
        break;
    }
    for (const auto& [value, label] : source.GetValueLabels().Numeric()) {
        ValueLabel& entry = variable.fValueLabels.emplace_back();
        entry.fValue.fNumber = value;
        entry.fLabel = label;
    }
    for (const auto& [value, label] : source.GetValueLabels().Strings()) {
        ValueLabel& entry = variable.fValueLabels.emplace_back();
        entry.fValue.fText = value;
        entry.fLabel = label;
    }
    for (double value : source.GetMissingNumbers()) {
        variable.fMissingValues.emplace_back().fNumber = value;
    }
    for (const std::string& value : source.GetMissingTexts()) {
        variable.fMissingValues.emplace_back().fText = value;
    }
    return variable;
}

// Converts one raw column into `data`; false with `error` set.
bool AddColumn(const ParseState& state, std::size_t index, const VEXA_Variable* entry,
               Dataset& data, std::string& error) {
    const RawColumn& raw = state.fColumns[index];
    const std::size_t rows = raw.fEnds.size();
    Variable variable = entry ? FromDictionary(*entry) : DefaultVariable(raw.fName);
    if (!entry) {
        // A column of numbers (and empty cells) is numeric, any other text makes it a string.
        bool numeric = true;
        for (std::size_t row = 0; row < rows && numeric; ++row) {
            double value;
            const NumberStatus status = ParseNumber(raw.Cell(row), value);
            numeric = status == NumberStatus::kOk || status == NumberStatus::kEmpty ||
                      status == NumberStatus::kOutOfRange;
        }
        if (!numeric) {
            variable.fType = StorageType::kString;
            variable.fLevel = MeasureLevel::kNominal;
            variable.fFormatType = 1;
        }
    }
    Column& column = data.AddColumn(std::move(variable));
    const Variable& var = column.fVariable;
    if (var.IsString()) {
        column.fTexts.reserve(rows);
        for (std::size_t row = 0; row < rows; ++row) {
            column.fTexts.emplace_back(Trim(raw.Cell(row)));
        }
        return true;
    }
    column.fNumbers.reserve(rows);
    for (std::size_t row = 0; row < rows; ++row) {
        const std::string_view cell = raw.Cell(row);
        double value = kSysMis;
        if (var.fType == StorageType::kDate && !Trim(cell).empty()) {
            if (!ParseDate(Trim(cell), var.fFormatType, value)) {
                error = state.Where(state.fRecordLines[row], index + 1) + ": \"" +
                        std::string(cell) + "\" is not a date in the format of " + var.fName;
                return false;
            }
        } else if (var.fType != StorageType::kDate) {
            const NumberStatus status = ParseNumber(cell, value);
            if (status == NumberStatus::kNotNumber) {
                error = state.Where(state.fRecordLines[row], index + 1) + ": \"" +
                        std::string(cell) + "\" is not a number, and " + var.fName + " is numeric";
                return false;
            }
            if (status == NumberStatus::kOutOfRange) {
                error = state.Where(state.fRecordLines[row], index + 1) + ": the number " +
                        std::string(Trim(cell)) + " is out of range";
                return false;
            }
        }
        column.fNumbers.push_back(value);
    }
    if (!entry) {
        // Whole numbers show without decimals.
        const bool whole = std::all_of(column.fNumbers.begin(), column.fNumbers.end(),
                                       [](double v) { return v == kSysMis || v == std::trunc(v); });
        column.fVariable.fFormatDecimals = whole ? 0 : 2;
        column.fVariable.fType = whole ? StorageType::kInteger : StorageType::kDouble;
    }
    return true;
}

bool Finish(ParseState& state, const VEXA_DataSource* dictionary, Dataset& data,
            std::string& error) {
    if (!state.fHaveHeader) {
        error = state.fName + ": the file is empty; expected a header row of variable names";
        return false;
    }
    if (dictionary) {
        for (int i = 0; i < dictionary->GetVariableCount(); ++i) {
            const std::string& name = dictionary->GetVariable(i)->GetName();
            if (std::find(state.fHeader.begin(), state.fHeader.end(), name) ==
                state.fHeader.end()) {
                error = state.fName + ": the dictionary's variable " + name +
                        " is not a column of the file";
                return false;
            }
        }
    }
    data = Dataset();
    data.SetCaseCount(state.fRecordLines.size());
    for (std::size_t i = 0; i < state.fColumns.size(); ++i) {
        const VEXA_Variable* entry = nullptr;
        if (dictionary) {
            const int at = dictionary->FindVarIndex(state.fColumns[i].fName);
            entry = at >= 0 ? dictionary->GetVariable(at) : nullptr;
        }
        if (!AddColumn(state, i, entry, data, error)) {
            return false;
        }
        state.fColumns[i] = RawColumn(); // free the text as soon as it is converted
    }
    return true;
}

struct Parser {
    csv_parser fParser;
    explicit Parser(bool tab) {
        csv_init(&fParser, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL);
        // A long field grows its buffer a megabyte at a time, not by libcsv's 128 bytes.
        csv_set_blk_size(&fParser, std::size_t{1} << 20);
        if (tab) {
            csv_set_delim(&fParser, CSV_TAB);
            csv_set_space_func(&fParser, [](unsigned char c) { return c == CSV_SPACE ? 1 : 0; });
        }
    }
    ~Parser() { csv_free(&fParser); }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;
};

// Feeds one piece of text; false with the state's error set.
bool Feed(Parser& parser, ParseState& state, std::string_view piece) {
    const std::size_t used =
        csv_parse(&parser.fParser, piece.data(), piece.size(), OnField, OnRecord, &state);
    if (!state.fError.empty()) {
        return false;
    }
    if (used != piece.size()) {
        state.fError = state.Where(state.fLine, 0) + ": " +
                       (csv_error(&parser.fParser) == CSV_EPARSE
                            ? std::string("malformed quoting (a quote inside an unquoted "
                                          "field, or text after a closing quote)")
                            : std::string(csv_strerror(csv_error(&parser.fParser))));
        return false;
    }
    // A record still open after this many bytes: a runaway quote or a huge line.
    state.fRecordBytes += piece.size();
    if (state.fRecordBytes > kMaxRecordBytes) {
        state.fError = state.Where(state.fInRecord ? state.fRecordLine : state.fLine, 0) +
                       ": the line is longer than 64 MiB (an unclosed quote?)";
        return false;
    }
    return true;
}

bool FinishParse(Parser& parser, ParseState& state) {
    if (csv_fini(&parser.fParser, OnField, OnRecord, &state) != 0 && state.fError.empty()) {
        state.fError = state.Where(state.fRecordLine, 0) +
                       ": a quoted field is not closed before the end of the file";
    }
    return state.fError.empty();
}

// Once the first piece of a file of `size` bytes is read (`read` of them),
// reserves room for as many records as the rest is likely to hold, so that
// the columns are not copied again and again as they grow.
void ReserveForFile(ParseState& state, std::size_t read, std::size_t size) {
    const std::size_t records = state.fRecordLines.size();
    if (records == 0 || read == 0 || size <= read) {
        return;
    }
    const double scale = 1.05 * static_cast<double>(size) / static_cast<double>(read);
    const auto expected = static_cast<std::size_t>(scale * static_cast<double>(records)) + 16;
    state.fRecordLines.reserve(expected);
    for (RawColumn& column : state.fColumns) {
        column.fEnds.reserve(expected);
        column.fText.reserve(
            static_cast<std::size_t>(scale * static_cast<double>(column.fText.size())) + 16);
    }
}

bool IsTabFile(const std::string& name) {
    return EndsWithNoCase(name, ".tsv") || EndsWithNoCase(name, ".tab");
}
} // namespace

bool ParseDate(std::string_view text, int formatType, double& days) {
    int p[3];
    int y = 0, m = 0, d = 0;
    if (ReadThree(text, '-', p) && text.size() >= 8 && text[4] == '-') {
        y = p[0], m = p[1], d = p[2]; // ISO
    } else {
        switch (formatType) {
        case VEXA_Format::kAmericanDate:
            if (!ReadThree(text, '/', p)) {
                return false;
            }
            m = p[0], d = p[1], y = p[2];
            break;
        case VEXA_Format::kEuropeanDate:
            if (!ReadThree(text, '.', p)) {
                return false;
            }
            d = p[0], m = p[1], y = p[2];
            break;
        case VEXA_Format::kSortableDate:
            if (!ReadThree(text, '/', p)) {
                return false;
            }
            y = p[0], m = p[1], d = p[2];
            break;
        default: {
            // dd-mmm-yyyy
            const std::size_t first = text.find('-');
            const std::size_t second = text.find('-', first + 1);
            if (first == std::string_view::npos || second == std::string_view::npos) {
                return false;
            }
            auto [e1, c1] = std::from_chars(text.data(), text.data() + first, d);
            auto [e2, c2] = std::from_chars(text.data() + second + 1, text.data() + text.size(), y);
            m = MonthOfName(text.substr(first + 1, second - first - 1));
            if (c1 != std::errc() || e1 != text.data() + first || c2 != std::errc() ||
                e2 != text.data() + text.size() || second - first - 1 != 3) {
                return false;
            }
            break;
        }
        }
    }
    if (!ValidDate(y, m, d)) {
        return false;
    }
    days =
        static_cast<double>(DaysFromCivil(y, static_cast<unsigned>(m), static_cast<unsigned>(d)));
    return true;
}

bool ReadDataText(const std::string& name, const std::string& text,
                  const VEXA_DataSource* dictionary, Dataset& data, std::string& error) {
    ParseState state;
    state.fName = name;
    Parser parser(IsTabFile(name));
    std::string_view rest(text);
    if (rest.substr(0, 3) == "\xEF\xBB\xBF") {
        rest.remove_prefix(3);
    }
    constexpr std::size_t kPiece = 1 << 20;
    while (!rest.empty()) {
        const std::string_view piece = rest.substr(0, kPiece);
        rest.remove_prefix(piece.size());
        if (!Feed(parser, state, piece)) {
            error = state.fError;
            return false;
        }
    }
    if (!FinishParse(parser, state)) {
        error = state.fError;
        return false;
    }
    return Finish(state, dictionary, data, error);
}

bool ReadDataFile(const std::string& path, const VEXA_DataSource* dictionary, Dataset& data,
                  std::string& error, void (*progress)(double share)) {
    std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) {
        error = path + ": cannot open the data file";
        return false;
    }
    std::fseek(file.get(), 0, SEEK_END);
    const long size = std::ftell(file.get());
    std::fseek(file.get(), 0, SEEK_SET);
    ParseState state;
    state.fName = path;
    Parser parser(IsTabFile(path));
    std::vector<char> buffer(std::size_t{1} << 20);
    bool first = true;
    long done = 0;
    for (;;) {
        const std::size_t got = std::fread(buffer.data(), 1, buffer.size(), file.get());
        if (got == 0) {
            break;
        }
        std::string_view piece(buffer.data(), got);
        if (first && piece.substr(0, 3) == "\xEF\xBB\xBF") {
            piece.remove_prefix(3);
        }
        first = false;
        if (!Feed(parser, state, piece)) {
            error = state.fError;
            return false;
        }
        if (done == 0 && size > 0) {
            ReserveForFile(state, got, static_cast<std::size_t>(size));
        }
        done += static_cast<long>(got);
        if (progress && size > 0) {
            progress(static_cast<double>(done) / static_cast<double>(size));
        }
    }
    if (std::ferror(file.get())) {
        error = path + ": cannot read the data file";
        return false;
    }
    if (!FinishParse(parser, state)) {
        error = state.fError;
        return false;
    }
    return Finish(state, dictionary, data, error);
}
