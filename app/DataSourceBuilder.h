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
