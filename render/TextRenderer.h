// The plain-text document of an output tree, for a terminal: headings as a
// numbered outline, pivot tables in aligned columns with nested labels and
// footnote marks such as "[a]" or "[a,b]", footnotes listed under each table,
// and one line per chart.
#pragma once

#include "render/Renderer.h"

class TextRenderer final : public Renderer {
public:
    // The messages are not part of the text (the command line prints them on
    // standard error as they arrive).
    std::string Render(const BpHeadingNode& root,
                       const std::vector<CFMessage>& messages) const override;
};
