// Renderers of the output tree: each turns one procedure's output (headings,
// pivot tables, charts) and the host's messages into a document of its
// format. Text and JSON sit here; an HTML renderer takes the same place.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct BpHeadingNode;
struct CFMessage;

class Renderer {
public:
    enum Format { kText, kJson, kHtml };

    virtual ~Renderer();
    // The whole document for the output under `root` (the procedure's own
    // heading, whose text is the procedure title) and the messages raised
    // while it was made.
    virtual std::string Render(const BpHeadingNode& root,
                               const std::vector<CFMessage>& messages) const = 0;

    // A renderer of the format, or null when there is none for it yet.
    static std::unique_ptr<Renderer> Make(Format format);
    // "text", "json", "html"; empty when the name is none of them.
    static std::optional<Format> FormatNamed(std::string_view name);
};
