// Field information charts.
#include "backend/nonpar/FieldInformation.h"

bool FieldInformation::MakeChart(const std::string&, bool) {
    return false;
}
