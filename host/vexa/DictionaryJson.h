// The dictionary file of nptests (JSON): the variables of the data.
#pragma once

#include <memory>
#include <string>

class VEXA_DataSource;

// The variables of a dictionary file (JSON):
//   {"variables": [{"name": "score", "label": "Test score",
//                   "type": "numeric" | "string", "width": 8,
//                   "format": {"type": 5, "width": 8, "decimals": 2} | "F8.2",
//                   "measure": "continuous" | "scale" | "categorical" | "nominal" | "ordinal",
//                   "valueLabels": [{"value": 1, "label": "Low"}, ...],
//                   "missing": [9, 99]}, ...]}
// Only "name" is required. "width" is the width of a string variable. A
// format text is a format name and a width, with decimals after a period:
// F (plain number), COMMA, DOLLAR, PCT, E, A (string), DATE, TIME, DATETIME,
// ADATE, JDATE, DTIME, WKDAY, MONTH, MOYR, QYR, WKYR, EDATE, SDATE. Value
// labels label numbers of numeric variables and texts of string variables;
// "missing" lists the user-missing values (numbers, or texts of a string
// variable).
// Null with `error` set (naming the variable at fault) when the file is not
// such a dictionary.
std::unique_ptr<VEXA_DataSource> DataSourceFromDictionary(const std::string& json,
                                                          std::string& error);
