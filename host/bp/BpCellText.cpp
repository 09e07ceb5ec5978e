// Cell texts and their resolution into final texts.
#include "host/bp/BpCellText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "host/bp/BpOutput.h"
#include "host/cf/CFSysmis.h"
#include "host/vexa/VEXA_DataSource.h"

BpCellText::~BpCellText() = default;

BpAnnotation BpCellText::Replicate() const {
    return BpAnnotation(std::shared_ptr<const BpCellText>(Clone()));
}

std::unique_ptr<BpCellText> BpString::Clone() const {
    return std::make_unique<BpString>(*this);
}

BpResolvedText BpString::Resolve(const BpProcedure& procedure) const {
    return {fTranslate ? procedure.Translate(fText) : fText, std::nullopt};
}

std::unique_ptr<BpCellText> BpNumber::Clone() const {
    return std::make_unique<BpNumber>(*this);
}

BpResolvedText BpNumber::Resolve(const BpProcedure&) const {
    BpResolvedText out{fFormat.Format(fValue), std::nullopt};
    if (!CFIsSysmis(fValue) && std::isfinite(fValue)) {
        out.fValue = fValue;
    }
    return out;
}

namespace {
const char* const kMonths[] = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                               "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
const char* const kWeekdays[] = {"THU", "FRI", "SAT", "SUN", "MON", "TUE", "WED"};

struct Civil {
    long long fYear;
    int fMonth; // 1-12
    int fDay;   // 1-31
};

// The date of a day number counted from 1970-01-01.
Civil CivilFromDays(long long z) {
    z += 719468;
    const long long era = (z >= 0 ? z : z - 146096) / 146097;
    const long long doe = z - era * 146097;
    const long long yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const long long doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const long long mp = (5 * doy + 2) / 153;
    const int day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    const int month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    return {yoe + era * 400 + (month <= 2), month, day};
}

long long DayOfYear(const Civil& date) {
    static const int kBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    const long long y = date.fYear;
    const bool leap = (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
    return kBefore[date.fMonth - 1] + date.fDay + (leap && date.fMonth > 2 ? 1 : 0);
}

std::string Printf(const char* format, auto... values) {
    char buffer[96];
    int n = std::snprintf(buffer, sizeof buffer, format, values...);
    return std::string(buffer,
                       n > 0 ? std::min<size_t>(static_cast<size_t>(n), sizeof buffer - 1) : 0);
}

// A value in seconds shown in a date or time format.
std::string FormatDateTime(double seconds, const VEXA_Format& format) {
    // Beyond about 100 million years a date means nothing; show the number.
    if (std::fabs(seconds) > 3.0e15) {
        return BpFormatSpec{BpFormatSpec::kSignificant, 0}.Format(seconds);
    }
    const double wholeSeconds = std::floor(seconds);
    const long long total = static_cast<long long>(wholeSeconds);
    long long days = total / 86400;
    long long rest = total % 86400;
    if (rest < 0) {
        rest += 86400;
        --days;
    }
    const int hh = static_cast<int>(rest / 3600);
    const int mm = static_cast<int>(rest / 60 % 60);
    const int ss = static_cast<int>(rest % 60);
    const Civil date = CivilFromDays(days);
    switch (format.fType) {
    case VEXA_Format::kDate:
        return Printf("%02d-%s-%04lld", date.fDay, kMonths[date.fMonth - 1], date.fYear);
    case VEXA_Format::kAmericanDate:
        return Printf("%02d/%02d/%04lld", date.fMonth, date.fDay, date.fYear);
    case VEXA_Format::kEuropeanDate:
        return Printf("%02d.%02d.%04lld", date.fDay, date.fMonth, date.fYear);
    case VEXA_Format::kSortableDate:
        return Printf("%04lld/%02d/%02d", date.fYear, date.fMonth, date.fDay);
    case VEXA_Format::kJulianDate:
        return Printf("%04lld%03lld", date.fYear, DayOfYear(date));
    case VEXA_Format::kMonthYear:
        return Printf("%s %04lld", kMonths[date.fMonth - 1], date.fYear);
    case VEXA_Format::kQuarterYear:
        return Printf("%d Q %04lld", (date.fMonth - 1) / 3 + 1, date.fYear);
    case VEXA_Format::kWeekYear:
        return Printf("%02lld WK %04lld", (DayOfYear(date) - 1) / 7 + 1, date.fYear);
    case VEXA_Format::kDateTime:
        return Printf("%02d-%s-%04lld %02d:%02d:%02d", date.fDay, kMonths[date.fMonth - 1],
                      date.fYear, hh, mm, ss);
    case VEXA_Format::kTime:
        return Printf("%02lld:%02d:%02d", days * 24 + hh, mm, ss);
    case VEXA_Format::kDayTime:
        return Printf("%lld %02d:%02d:%02d", days, hh, mm, ss);
    case VEXA_Format::kWeekday:
        return kWeekdays[((days % 7) + 7) % 7];
    case VEXA_Format::kMonth:
        return kMonths[date.fMonth - 1];
    default:
        return {};
    }
}

bool IsTimeFormat(int type) {
    return VEXA_Format::IsDateTime(type) || type == VEXA_Format::kDateTime ||
           type == VEXA_Format::kTime || type == VEXA_Format::kDayTime ||
           type == VEXA_Format::kWeekday || type == VEXA_Format::kMonth;
}

std::string TrimRight(std::string text) {
    while (!text.empty() && text.back() == ' ') {
        text.pop_back();
    }
    return text;
}
} // namespace

std::unique_ptr<BpCellText> BpDataValue::Clone() const {
    return std::make_unique<BpDataValue>(*this);
}

BpResolvedText BpDataValue::Resolve(const BpProcedure&) const {
    const bool wantLabel = fPreference != kValue;
    if (fIsString) {
        if (wantLabel && fVariable) {
            if (const std::string* label = fVariable->GetValueLabels().Find(fString)) {
                return {*label, std::nullopt};
            }
        }
        return {TrimRight(fString), std::nullopt};
    }
    if (CFIsSysmis(fNumber) || !std::isfinite(fNumber)) {
        return {kBpMissingText, std::nullopt};
    }
    BpResolvedText out{{}, fNumber};
    if (!fVariable) {
        out.fText = BpFormatSpec{BpFormatSpec::kSignificant, 0}.Format(fNumber);
        return out;
    }
    if (wantLabel) {
        if (const std::string* label = fVariable->GetValueLabels().Find(fNumber)) {
            out.fText = *label;
            return out;
        }
    }
    const VEXA_Format& format = fVariable->GetFormat();
    if (IsTimeFormat(format.fType)) {
        out.fText = FormatDateTime(fNumber, format);
    } else {
        out.fText = BpFormatSpec{BpFormatSpec::kFixed, format.fDecimals}.Format(fNumber);
    }
    return out;
}

std::unique_ptr<BpCellText> BpVariable::Clone() const {
    return std::make_unique<BpVariable>(*this);
}

BpResolvedText BpVariable::Resolve(const BpProcedure&) const {
    if (!fVariable) {
        return {};
    }
    return {fShow == kName ? fVariable->GetName() : fVariable->GetPreferredLabel(), std::nullopt};
}

BpComposite::BpComposite(const BpComposite& other)
    : fPattern(other.fPattern), fTranslate(other.fTranslate), fInSublist(other.fInSublist) {
    *this = other;
}

BpComposite& BpComposite::operator=(const BpComposite& other) {
    if (this == &other) {
        return *this;
    }
    fPattern = other.fPattern;
    fTranslate = other.fTranslate;
    fInSublist = other.fInSublist;
    auto copy = [](const Parts& parts) {
        Parts out;
        out.reserve(parts.size());
        for (const auto& part : parts) {
            out.push_back(part->Clone());
        }
        return out;
    };
    fParts = copy(other.fParts);
    fSublists.clear();
    for (const Parts& sublist : other.fSublists) {
        fSublists.push_back(copy(sublist));
    }
    return *this;
}

BpComposite& BpComposite::Add(const BpCellText& part) {
    (fInSublist ? fSublists.back() : fParts).push_back(part.Clone());
    return *this;
}

BpComposite& BpComposite::Sublist() {
    fSublists.emplace_back();
    fInSublist = true;
    return *this;
}

BpComposite& BpComposite::EndSublist() {
    fInSublist = false;
    return *this;
}

BpComposite& BpComposite::Finish() {
    fInSublist = false;
    return *this;
}

std::unique_ptr<BpCellText> BpComposite::Clone() const {
    return std::make_unique<BpComposite>(*this);
}

namespace {
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Reads the number at `i`; returns 0 when there is none.
size_t ReadNumber(std::string_view text, size_t& i) {
    size_t n = 0;
    size_t start = i;
    while (i < text.size() && IsDigit(text[i]) && i - start < 6) {
        n = n * 10 + static_cast<size_t>(text[i] - '0');
        ++i;
    }
    return n;
}

// The highest part number a form refers to.
size_t HighestPlace(std::string_view form) {
    size_t highest = 0;
    for (size_t i = 0; i < form.size(); ++i) {
        if ((form[i] == '^' || form[i] == '%') && i + 1 < form.size() && IsDigit(form[i + 1])) {
            ++i;
            highest = std::max(highest, ReadNumber(form, i));
            --i;
        }
    }
    return highest;
}

// Writes `form` with "^N" and "%N" replaced by parts[first + N - 1].
void Fill(std::string_view form, const std::vector<std::string>& parts, size_t first, size_t count,
          std::string& out) {
    for (size_t i = 0; i < form.size(); ++i) {
        const char c = form[i];
        if ((c == '^' || c == '%') && i + 1 < form.size()) {
            if (form[i + 1] == c) {
                out += c;
                ++i;
                continue;
            }
            if (IsDigit(form[i + 1])) {
                ++i;
                const size_t n = ReadNumber(form, i);
                --i;
                if (n >= 1 && n <= count && first + n - 1 < parts.size()) {
                    out += parts[first + n - 1];
                }
                continue;
            }
        }
        out += c;
    }
}
} // namespace

BpResolvedText BpComposite::Resolve(const BpProcedure& procedure) const {
    const std::string pattern = fTranslate ? procedure.Translate(fPattern) : fPattern;
    auto resolveAll = [&](const Parts& parts) {
        std::vector<std::string> texts;
        texts.reserve(parts.size());
        for (const auto& part : parts) {
            texts.push_back(part->Resolve(procedure).fText);
        }
        return texts;
    };
    const std::vector<std::string> top = resolveAll(fParts);
    std::string out;
    out.reserve(pattern.size() + 16 * top.size());
    std::string_view text(pattern);
    size_t i = 0;
    while (i < text.size()) {
        if (text[i] == '[') {
            const size_t close = text.find(']', i + 1);
            if (close != std::string_view::npos && close + 1 < text.size() &&
                IsDigit(text[close + 1])) {
                size_t j = close + 1;
                const size_t list = ReadNumber(text, j);
                std::string_view contents = text.substr(i + 1, close - i - 1);
                const size_t colon = contents.find(':');
                std::string_view firstForm = contents.substr(0, colon);
                std::string_view nextForm = firstForm;
                if (colon != std::string_view::npos) {
                    std::string_view rest = contents.substr(colon + 1);
                    nextForm = rest.substr(0, rest.find(':'));
                }
                if (list >= 1 && list <= fSublists.size()) {
                    const std::vector<std::string> items = resolveAll(fSublists[list - 1]);
                    const size_t width =
                        std::max({HighestPlace(firstForm), HighestPlace(nextForm), size_t{1}});
                    for (size_t first = 0; first < items.size(); first += width) {
                        Fill(first == 0 ? firstForm : nextForm, items, first, width, out);
                    }
                }
                i = j;
                continue;
            }
        }
        // Outside a list both "^N" and "%N" name a top-level part.
        const size_t next = text.find('[', i + 1);
        const size_t end = next == std::string_view::npos ? text.size() : next;
        Fill(text.substr(i, end - i), top, 0, top.size(), out);
        i = end;
    }
    return {std::move(out), std::nullopt};
}
