// Reading a data file: CSV or TSV with a header row of variable names.
//
// The file is RFC 4180 text read by libcsv: fields may be quoted with ",
// a quoted field may hold separators, quotes (doubled) and line breaks;
// lines end with LF or CRLF; a UTF-8 byte-order mark is skipped; blank lines
// are skipped. The separator is a tab for files ending in .tsv or .tab and a
// comma otherwise. Every text must be UTF-8.
//
// Cells: an empty cell (or one of blanks) is missing. A numeric variable's
// cell is a decimal number (std::from_chars; a leading + and surrounding
// blanks allowed); "nan", "inf" and numbers beyond the double range are
// errors. A date variable's cell is a date in the variable's format (DATE
// dd-mmm-yyyy, ADATE mm/dd/yyyy, EDATE dd.mm.yyyy, SDATE yyyy/mm/dd) or in
// ISO form yyyy-mm-dd, read as days since 1970-01-01.
//
// Variables: with a dictionary, every dictionary variable must be a column
// of the file and takes the dictionary's type, label, level, format, value
// labels and user-missing values; columns the dictionary does not name, and
// every column without a dictionary, are numeric and continuous when every
// cell is a number or empty, else strings and nominal; the label is the name.
#pragma once

#include <string>

class Dataset;
class VEXA_DataSource;

// Reads `path` into `data`. False with `error` naming the file, the line and
// the column at fault (a missing file, a header without names, a name given
// twice, a row with more or fewer cells than the header, a cell that does not
// fit its variable, a line longer than 64 MiB, a text that is not UTF-8).
// `progress`, when set, is called now and then with the share read so far.
bool ReadDataFile(const std::string& path, const VEXA_DataSource* dictionary, Dataset& data,
                  std::string& error, void (*progress)(double share) = nullptr);

// The same from a text in memory; `name` stands for the file in messages and
// chooses the separator as a path does.
bool ReadDataText(const std::string& name, const std::string& text,
                  const VEXA_DataSource* dictionary, Dataset& data, std::string& error);

// Days since 1970-01-01 of a date text in the format of VEXA_Format type
// `formatType` (or ISO yyyy-mm-dd); false when it is not such a date.
bool ParseDate(std::string_view text, int formatType, double& days);
