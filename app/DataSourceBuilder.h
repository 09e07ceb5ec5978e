// Builds the host's data source: from the data dictionary of a result
// document (the default) or from a dictionary file.
#pragma once

#include <memory>
#include <string>

class VEXA_DataSource;

// The variables of a result document's data dictionary: names, labels,
// measurement levels, types, formats and value labels. Null with `error` set
// when the document cannot be read; a document without a dictionary gives an
// empty data source.
std::unique_ptr<VEXA_DataSource> DataSourceFromDocument(const std::string& xml, std::string& error);

// The variables of a dictionary file (JSON):
//   {"variables": [{"name": "score", "label": "Test score",
//                   "type": "numeric" | "string", "width": 8,
//                   "format": {"type": 5, "width": 8, "decimals": 2} | "F8.2",
//                   "measure": "continuous" | "scale" | "categorical" | "nominal" | "ordinal",
//                   "valueLabels": [{"value": 1, "label": "Low"}, ...]}, ...]}
// Only "name" is required. "width" is the width of a string variable. A
// format text is a format name and a width, with decimals after a period:
// F (plain number), COMMA, DOLLAR, PCT, E, A (string), DATE, TIME, DATETIME,
// ADATE, JDATE, DTIME, WKDAY, MONTH, MOYR, QYR, WKYR, EDATE, SDATE. Value
// labels label numbers of numeric variables and texts of string variables.
// Null with `error` set (naming the variable at fault) when the file is not
// such a dictionary.
std::unique_ptr<VEXA_DataSource> DataSourceFromDictionary(const std::string& json,
                                                          std::string& error);
