// Building the data source from a result document's data dictionary.
#include "app/DataSourceBuilder.h"

#include "host/vexa/VEXA_DataSource.h"
#include "host/xml/SDOMXMLWrapper.h"
#include "host/xml/XMLText.h"

std::unique_ptr<VEXA_DataSource> DataSourceFromDocument(const std::string& xml,
                                                        std::string& error) {
    SDOMXMLWrapper root;
    if (!root.LoadFromString(xml)) {
        error = root.Error();
        return nullptr;
    }
    auto source = std::make_unique<VEXA_DataSource>();
    SDOMXMLWrapper dictionary;
    root.GetFirstElement("Extension/NPAROutput/DataDictionary", dictionary, true);
    SDOMXMLIterator fields;
    if (!dictionary || !dictionary.GetElementIterator("DataField", fields, true)) {
        return source;
    }
    SDOMXMLWrapper field;
    while (fields.Next(field)) {
        std::string name, label, optype, dataType;
        field.GetAttribute("name", name);
        field.GetAttribute("displayName", label);
        field.GetAttribute("optype", optype);
        field.GetAttribute("dataType", dataType);
        const bool isString = dataType == "string";
        VEXA_Variable& variable = source->AddVariable(name, isString ? 8 : 0);
        if (label != name) {
            variable.SetLabel(label);
        }
        variable.SetMeasure(optype == "continuous"    ? VEXA_Variable::kContinuous
                            : optype == "categorical" ? VEXA_Variable::kCategorical
                            : optype == "ordinal"     ? VEXA_Variable::kOrdinal
                                                      : VEXA_Variable::kUnknownMeasure);
        VEXA_Format format;
        if (isString) {
            format = {VEXA_Format::kString, 8, 0};
        } else if (dataType == "date") {
            format = {VEXA_Format::kDate, 11, 0};
        } else if (dataType == "integer") {
            format = {VEXA_Format::kNumber, 8, 0};
        }
        variable.SetFormat(format);
        SDOMXMLIterator values;
        if (!field.GetElementIterator("Value", values, true)) {
            continue;
        }
        SDOMXMLWrapper value;
        while (values.Next(value)) {
            std::string text, display;
            value.GetAttribute("value", text);
            if (!value.GetAttribute("displayValue", display) || display == text) {
                continue;
            }
            if (isString) {
                variable.ValueLabels().Add(text, display);
            } else {
                variable.ValueLabels().Add(String2Double(text), display);
            }
        }
    }
    return source;
}
