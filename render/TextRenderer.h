// The plain-text document of an output tree, for a terminal: headings as a
// numbered outline, pivot tables in aligned columns with nested labels and
// footnote marks such as "[a]" or "[a,b]", footnotes listed under each table,
// and one line per chart.
#pragma once

#include <string_view>

#include "render/Renderer.h"

class TextRenderer final : public Renderer {
public:
    // The messages are not part of the text (the command line prints them on
    // standard error as they arrive).
    std::string Render(const BpHeadingNode& root,
                       const std::vector<CFMessage>& messages) const override;
    // Writes each item as soon as its text is made.
    bool RenderTo(const BpHeadingNode& root, const std::vector<CFMessage>& messages,
                  std::FILE* out) const override;
};

// `text` with its control characters shown escaped ("\n", "\x1B",
// "\u009B"), so
// that text a document controls cannot drive the terminal.
std::string EscapeControls(std::string_view text);
