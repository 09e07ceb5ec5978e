// Builds the host's data source from the data dictionary of a result
// document (the default); a dictionary file is read by host/vexa/DictionaryJson.h.
#pragma once

#include <memory>
#include <string>

#include "host/vexa/DictionaryJson.h"

class VEXA_DataSource;

// The variables of a result document's data dictionary: names, labels,
// measurement levels, types, formats and value labels. Only the text up to
// the end of the dictionary is read when that suffices. Null with `error` set
// when the document cannot be read that far; a document without a dictionary
// gives an empty data source.
std::unique_ptr<VEXA_DataSource> DataSourceFromDocument(const std::string& xml, std::string& error);
