// Writing the output tree as aligned plain text.
#include "render/TextRenderer.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string_view>

#include "host/bp/BpFormat.h"
#include "host/bp/BpTree.h"
#include "render/OutputWalk.h"
#include "render/TableGrid.h"

namespace {
constexpr std::string_view kGap = "  "; // between two columns

// Columns a text takes on a terminal: one per code point.
size_t Width(std::string_view text) {
    size_t width = 0;
    for (char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
            ++width;
        }
    }
    return width;
}

void Pad(std::string& out, size_t count, char c = ' ') {
    out.append(count, c);
}

// Line breaks inside a cell or a label read as blanks; other control
// characters are shown escaped.
std::string OneLine(std::string_view text) {
    std::string out(text);
    std::replace(out.begin(), out.end(), '\n', ' ');
    std::replace(out.begin(), out.end(), '\t', ' ');
    return EscapeControls(out);
}

// "[a]" or "[a,b]"; empty without notes.
std::string MarkText(const std::vector<int>& notes) {
    const std::vector<std::string> marks = FootnoteMarks(notes);
    if (marks.empty()) {
        return {};
    }
    std::string out = "[";
    for (size_t i = 0; i < marks.size(); ++i) {
        if (i > 0) {
            out += ',';
        }
        out += marks[i];
    }
    out += ']';
    return out;
}

std::string LabelText(const BpTableCategory& category) {
    return OneLine(category.fLabel) + MarkText(category.fNotes);
}

// Ends the line: drops trailing blanks and adds the line break.
void EndLine(std::string& out) {
    while (!out.empty() && out.back() == ' ') {
        out.pop_back();
    }
    out += '\n';
}

// Writes a multi-line text, each further line indented by `indent` blanks.
void AppendLines(std::string& out, std::string_view text, size_t indent) {
    size_t start = 0;
    while (true) {
        const size_t end = text.find('\n', start);
        out +=
            EscapeControls(text.substr(start, end == std::string_view::npos ? end : end - start));
        EndLine(out);
        if (end == std::string_view::npos) {
            return;
        }
        start = end + 1;
        Pad(out, indent);
    }
}

struct TextCell {
    std::string fText;
    std::string fMarks;
    bool fRight = false; // numbers sit right-aligned
};

class TableWriter {
    // A header label over the data columns fFirst to fLast.
    struct Span {
        size_t fFirst;
        size_t fLast;
        size_t fIndex; // the label's place in the column paths
        std::string fText;
    };

public:
    TableWriter(const BpTableNode& table, std::string& out)
        : fTable(table), fGrid(TableGrid::Of(table)), fOut(out) {}

    void Write() {
        fOut += OneLine(fTable.fTitle);
        fOut += MarkText(fTable.fTitleNotes);
        EndLine(fOut);
        if (fTable.fCaption) {
            AppendLines(fOut, *fTable.fCaption, 0);
        }
        if (fGrid.fRows.empty()) {
            fOut += "(no rows)";
            EndLine(fOut);
        } else {
            Measure();
            WriteBody();
        }
        for (size_t i = 0; i < fTable.fFootnotes.size(); ++i) {
            const std::string mark = BpTableNode::Mark(static_cast<int>(i)) + ". ";
            fOut += mark;
            AppendLines(fOut, fTable.fFootnotes[i], mark.size());
        }
    }

private:
    // The stub column of a label of a row path.
    size_t StubColumn(const GridPath& path, size_t i) const {
        const GridLabel& label = path[i];
        size_t level = 0;
        for (size_t j = i; j > 0 && path[j - 1].fDimension == label.fDimension; --j) {
            ++level;
        }
        return fStubStart[static_cast<size_t>(label.fDimension)] + level;
    }

    // The header line of label i of a column path: groups from the top, the
    // last label on the bottom line.
    size_t HeaderLine(const GridPath& path, size_t i) const {
        return i + 1 == path.size() ? fHeaderLines - 1 : i;
    }

    // Whether label i of `path` continues the span, whose first column has
    // the same label at the same index.
    bool Continues(const Span& span, const GridPath& path, size_t i) const {
        const GridPath& first = fGrid.fColumns[span.fFirst];
        if (span.fIndex != i || first.size() <= i) {
            return false;
        }
        for (size_t j = 0; j <= i; ++j) {
            if (first[j].fNode != path[j].fNode || first[j].fDimension != path[j].fDimension) {
                return false;
            }
        }
        return true;
    }

    void Measure() {
        // Stub: one column per group level of each row dimension.
        std::vector<size_t> depth(fGrid.fRowDimensions.size(), 0);
        for (const TableGrid::Row& row : fGrid.fRows) {
            std::vector<size_t> count(depth.size(), 0);
            for (const GridLabel& label : row.fLabels) {
                ++count[static_cast<size_t>(label.fDimension)];
            }
            for (size_t k = 0; k < depth.size(); ++k) {
                depth[k] = std::max(depth[k], count[k]);
            }
        }
        size_t stubColumns = 0;
        for (size_t k = 0; k < depth.size(); ++k) {
            fStubStart.push_back(stubColumns);
            stubColumns += std::max<size_t>(depth[k], 1);
        }
        fStubWidth.assign(stubColumns, 0);
        fStubHeader.assign(stubColumns, std::string());
        for (size_t k = 0; k < fGrid.fRowDimensions.size(); ++k) {
            if (fGrid.fRowDimensions[k]->fShowName) {
                fStubHeader[fStubStart[k]] = OneLine(fGrid.fRowDimensions[k]->fName);
            }
        }
        for (size_t s = 0; s < stubColumns; ++s) {
            fStubWidth[s] = Width(fStubHeader[s]);
        }
        fStub.resize(fGrid.fRows.size());
        for (size_t r = 0; r < fGrid.fRows.size(); ++r) {
            const GridPath& path = fGrid.fRows[r].fLabels;
            const GridPath* previous = r > 0 ? &fGrid.fRows[r - 1].fLabels : nullptr;
            fStub[r].assign(stubColumns, std::string());
            bool same = previous != nullptr;
            for (size_t i = 0; i < path.size(); ++i) {
                same = same && i < previous->size() && (*previous)[i].fNode == path[i].fNode &&
                       (*previous)[i].fDimension == path[i].fDimension;
                const bool leaf = i + 1 == path.size();
                if (same && !leaf) {
                    continue; // an outer label shows on the first row it covers
                }
                const size_t s = StubColumn(path, i);
                fStub[r][s] = LabelText(*path[i].fCategory);
                fStubWidth[s] = std::max(fStubWidth[s], Width(fStub[r][s]));
            }
        }

        // Data columns: cells, then header labels.
        const size_t columns = fGrid.fColumns.size();
        fCells.resize(fGrid.fRows.size());
        std::vector<size_t> textWidth(columns, 0);
        fMarkWidth.assign(columns, 0);
        for (size_t r = 0; r < fGrid.fRows.size(); ++r) {
            fCells[r].resize(columns);
            for (size_t c = 0; c < columns; ++c) {
                const BpTableCell* cell = fGrid.fRows[r].fCells[c];
                if (!cell) {
                    continue;
                }
                TextCell& text = fCells[r][c];
                text.fText = OneLine(cell->fText.fText);
                text.fMarks = MarkText(cell->fNotes);
                text.fRight = cell->fText.fValue.has_value() || text.fText == kBpMissingText;
                textWidth[c] = std::max(textWidth[c], Width(text.fText));
                fMarkWidth[c] = std::max(fMarkWidth[c], Width(text.fMarks));
            }
        }
        fWidth.resize(columns);
        for (size_t c = 0; c < columns; ++c) {
            fWidth[c] = textWidth[c] + fMarkWidth[c];
        }
        fHeaderLines = 0;
        for (const GridPath& path : fGrid.fColumns) {
            fHeaderLines = std::max(fHeaderLines, path.size());
        }
        fHeader.assign(fHeaderLines, std::vector<Span>());
        for (size_t line = 0; line < fHeaderLines; ++line) {
            for (size_t c = 0; c < columns; ++c) {
                const GridPath& path = fGrid.fColumns[c];
                size_t i = 0;
                while (i < path.size() && HeaderLine(path, i) != line) {
                    ++i;
                }
                if (i == path.size()) {
                    continue;
                }
                std::vector<Span>& spans = fHeader[line];
                if (!spans.empty() && spans.back().fLast + 1 == c &&
                    Continues(spans.back(), path, i)) {
                    spans.back().fLast = c;
                } else {
                    spans.push_back({c, c, i, LabelText(*path[i].fCategory)});
                }
            }
        }
        for (const std::vector<Span>& spans : fHeader) {
            for (const Span& span : spans) {
                size_t available = (span.fLast - span.fFirst) * kGap.size();
                for (size_t c = span.fFirst; c <= span.fLast; ++c) {
                    available += fWidth[c];
                }
                const size_t need = Width(span.fText);
                if (need > available) {
                    // Spread the extra width over the spanned columns.
                    const size_t count = span.fLast - span.fFirst + 1;
                    const size_t extra = need - available;
                    for (size_t c = span.fFirst; c <= span.fLast; ++c) {
                        fWidth[c] += extra / count + (c == span.fLast ? extra % count : 0);
                    }
                }
            }
        }
    }

    size_t TotalWidth() const {
        size_t total = 0;
        size_t parts = 0;
        for (size_t w : fStubWidth) {
            total += w;
            ++parts;
        }
        for (size_t w : fWidth) {
            total += w;
            ++parts;
        }
        return total + (parts > 0 ? (parts - 1) * kGap.size() : 0);
    }

    // Writes the stub texts of one line; false when the stub is empty.
    void WriteStub(const std::vector<std::string>& texts) {
        for (size_t s = 0; s < fStubWidth.size(); ++s) {
            if (s > 0) {
                fOut += kGap;
            }
            fOut += texts[s];
            Pad(fOut, fStubWidth[s] - Width(texts[s]));
        }
    }

    void WriteBody() {
        const std::string rule(TotalWidth(), '-');
        fOut += rule;
        EndLine(fOut);
        const std::vector<std::string> noStub(fStubWidth.size());
        const bool stubNames = std::any_of(fStubHeader.begin(), fStubHeader.end(),
                                           [](const std::string& name) { return !name.empty(); });
        const size_t lines = std::max<size_t>(fHeaderLines, stubNames ? 1 : 0);
        for (size_t line = 0; line < lines; ++line) {
            WriteStub(line + 1 == lines ? fStubHeader : noStub);
            size_t next = 0; // the first data column not yet written
            const std::vector<Span> none;
            for (const Span& span : line < fHeaderLines ? fHeader[line] : none) {
                for (; next < span.fFirst; ++next) {
                    Separator(next);
                    Pad(fOut, fWidth[next]);
                }
                Separator(span.fFirst);
                size_t width = (span.fLast - span.fFirst) * kGap.size();
                for (size_t c = span.fFirst; c <= span.fLast; ++c) {
                    width += fWidth[c];
                }
                fOut += span.fText;
                Pad(fOut, width - Width(span.fText));
                next = span.fLast + 1;
            }
            EndLine(fOut);
        }
        if (lines > 0) {
            fOut += rule;
            EndLine(fOut);
        }
        for (size_t r = 0; r < fGrid.fRows.size(); ++r) {
            WriteStub(fStub[r]);
            for (size_t c = 0; c < fWidth.size(); ++c) {
                Separator(c);
                const TextCell& cell = fCells[r][c];
                const size_t text = Width(cell.fText);
                const size_t marks = Width(cell.fMarks);
                if (cell.fRight) {
                    Pad(fOut, fWidth[c] - fMarkWidth[c] - text);
                    fOut += cell.fText;
                    fOut += cell.fMarks;
                    Pad(fOut, fMarkWidth[c] - marks);
                } else {
                    fOut += cell.fText;
                    fOut += cell.fMarks;
                    Pad(fOut, fWidth[c] - text - marks);
                }
            }
            EndLine(fOut);
        }
        fOut += rule;
        EndLine(fOut);
    }

    // The gap before data column c (none before the first column of a table
    // without a stub).
    void Separator(size_t c) {
        if (c > 0 || !fStubWidth.empty()) {
            fOut += kGap;
        }
    }

    const BpTableNode& fTable;
    const TableGrid fGrid;
    std::string& fOut;
    std::vector<size_t> fStubStart;              // first stub column of each row dimension
    std::vector<size_t> fStubWidth;              // by stub column
    std::vector<std::string> fStubHeader;        // dimension names over the stub
    std::vector<std::vector<std::string>> fStub; // by row, by stub column
    std::vector<std::vector<TextCell>> fCells;   // by row, by data column
    std::vector<size_t> fWidth;                  // by data column
    std::vector<size_t> fMarkWidth;              // widest marks of right-aligned cells
    size_t fHeaderLines = 0;
    std::vector<std::vector<Span>> fHeader; // by header line
};

class TextBuilder final : public OutputVisitor {
public:
    // With a file, the text is written to it after each item, so that only
    // one item's text is held at a time.
    explicit TextBuilder(std::string& out, std::FILE* file = nullptr) : fOut(out), fFile(file) {}

    // Writes what is held to the file; false once a write has failed.
    bool Flush() {
        if (fFile && !fOut.empty()) {
            fOk = fOk && std::fwrite(fOut.data(), 1, fOut.size(), fFile) == fOut.size();
            fOut.clear();
        }
        return fOk;
    }

    void EnterHeading(const BpHeadingNode& heading, const std::vector<int>& number) override {
        Separate();
        Pad(fOut, 2 * (number.size() - 1));
        char digits[16];
        for (size_t i = 0; i < number.size(); ++i) {
            if (i > 0) {
                fOut += '.';
            }
            auto [end, ec] = std::to_chars(digits, digits + sizeof digits, number[i]);
            fOut.append(digits, ec == std::errc() ? end : digits);
        }
        fOut += ' ';
        fOut += OneLine(heading.fText);
        EndLine(fOut);
    }
    void LeaveHeading(const BpHeadingNode&) override {}
    void VisitTable(const BpTableNode& table) override {
        Separate();
        TableWriter(table, fOut).Write();
        Flush();
    }
    void VisitChart(const BpChartNode& chart) override {
        Separate();
        fOut += "[chart] ";
        fOut += OneLine(chart.fTitle);
        // The description repeats the title unless it names a split.
        if (!chart.fDescription.empty() && chart.fDescription != chart.fTitle) {
            fOut += " \u2014 ";
            fOut += OneLine(chart.fDescription);
        }
        EndLine(fOut);
        Flush();
    }

private:
    // A blank line between two items (the title comes first).
    void Separate() { fOut += '\n'; }
    std::string& fOut;
    std::FILE* fFile;
    bool fOk = true;
};

void WriteTitle(std::string& out, const BpHeadingNode& root) {
    const std::string title = OneLine(root.fText);
    out += title;
    EndLine(out);
    out.append(Width(title), '=');
    EndLine(out);
}
} // namespace

std::string EscapeControls(std::string_view text) {
    const auto isControl = [](std::string_view rest) {
        const auto c = static_cast<unsigned char>(rest[0]);
        if (c < 0x20 || c == 0x7F) {
            return 1;
        }
        // C1 controls, U+0080 to U+009F (a terminal may take U+009B for CSI).
        if (c == 0xC2 && rest.size() > 1 && static_cast<unsigned char>(rest[1]) >= 0x80 &&
            static_cast<unsigned char>(rest[1]) <= 0x9F) {
            return 2;
        }
        return 0;
    };
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size();) {
        const int length = isControl(text.substr(i));
        if (length == 0) {
            out += text[i++];
            continue;
        }
        if (text[i] == '\n' || text[i] == '\t' || text[i] == '\r') {
            out += text[i] == '\n' ? "\\n" : text[i] == '\t' ? "\\t" : "\\r";
            ++i;
            continue;
        }
        const unsigned code = length == 1 ? static_cast<unsigned char>(text[i])
                                          : static_cast<unsigned char>(text[i + 1]);
        constexpr std::string_view kHex = "0123456789ABCDEF";
        out += length == 1 ? "\\x" : "\\u00";
        out += kHex[code >> 4];
        out += kHex[code & 0xF];
        i += static_cast<size_t>(length);
    }
    return out;
}

std::string TextRenderer::Render(const BpHeadingNode& root, const std::vector<CFMessage>&) const {
    std::string out;
    out.reserve(4096);
    WriteTitle(out, root);
    TextBuilder builder(out);
    WalkOutput(root, builder);
    return out;
}

bool TextRenderer::RenderTo(const BpHeadingNode& root, const std::vector<CFMessage>&,
                            std::FILE* file) const {
    std::string out;
    WriteTitle(out, root);
    TextBuilder builder(out, file);
    WalkOutput(root, builder);
    return builder.Flush();
}
