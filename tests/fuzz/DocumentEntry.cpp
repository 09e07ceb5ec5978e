// The shared entry: builds the data source from the document's dictionary,
// drives the procedure module over it, renders the output as text and as
// JSON and discards it.
#include "tests/fuzz/DocumentEntry.h"

#include <memory>
#include <string>
#include <vector>

#include "app/DataSourceBuilder.h"
#include "backend/nonpar/NOPRProcCustom.h"
#include "host/bp/BpOutput.h"
#include "host/cf/CFAssert.h"
#include "host/cf/CFErrorChannel.h"
#include "host/fac/FacSTDictionary.h"
#include "host/vexa/VEXA_DataSource.h"
#include "render/Renderer.h"

namespace {
// The English string tables, read once: composite texts are filled from them.
const FacSTDictionary& Strings() {
    static const FacSTDictionary* const strings = [] {
        auto* dictionary = new FacSTDictionary(PathFactory::getPathInstance(PathFactory::kStrings));
        dictionary->SetProcedure("Nonparametric Tests");
        return dictionary;
    }();
    return *strings;
}
} // namespace

DocumentOutcome RunDocument(const std::uint8_t* data, std::size_t size) {
    const CFAssertHandler previous = CFSetAssertHandler(CFThrowingAssertHandler);
    CFErrorChannel::Clear();
    DocumentOutcome outcome = DocumentOutcome::kRejected;
    try {
        std::vector<CFSplitDocument> splits(1);
        splits[0].fResultDocument.assign(reinterpret_cast<const char*>(data), size);
        std::string error;
        std::unique_ptr<VEXA_DataSource> dataSource =
            DataSourceFromDocument(splits[0].fResultDocument, error);
        // The document's length picks the Lilliefors requests, so that the
        // corpus reaches the companions' paths as well as their absence.
        NOPRProcCustom procedure;
        procedure.fNormalFromSample = size & 1;
        procedure.fUniformFromSample = size & 2;
        procedure.fExponentialFromSample = size & 4;
        BpProcedure output("Nonparametric Tests", &Strings(), dataSource.get());
        procedure.fProcedure = &output;
        procedure.fDataSource = dataSource.get();
        std::vector<std::string> models;
        if (procedure.ProduceOutput(models, splits)) {
            outcome = DocumentOutcome::kShown;
        }
        for (Renderer::Format format : {Renderer::kText, Renderer::kJson}) {
            const std::string text =
                Renderer::Make(format)->Render(output.Root(), CFErrorChannel::Messages());
            if (text.empty()) {
                __builtin_trap(); // a renderer always writes at least the procedure's title
            }
        }
    } catch (const CFAssertionFailure&) {
        outcome = DocumentOutcome::kAssertion;
    }
    CFErrorChannel::Clear();
    CFSetAssertHandler(previous);
    return outcome;
}
