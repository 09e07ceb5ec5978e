// The result document reader.
#include "backend/nonpar/NOPRParseOutXML.h"

#include "host/cf/CFSysmis.h"

OutputXMLParser::OutputXMLParser(VEXA_DataSource* dataSource, NOPROutputStats* stats,
                                 const std::string& xml)
    : fMissingValue(kCFSysmis), fDataSource(dataSource), fStats(stats), fXML(xml) {}

bool OutputXMLParser::Parse() {
    return false;
}
