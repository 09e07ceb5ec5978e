// The host's data source (the variables the procedure module looks up by
// name) made from a data set's variables.
#pragma once

#include <memory>

class Dataset;
class VEXA_DataSource;

std::unique_ptr<VEXA_DataSource> HostDataSource(const Dataset& data);
