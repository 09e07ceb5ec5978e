// Choosing a renderer by format.
#include "render/Renderer.h"

#include "render/HtmlRenderer.h"
#include "render/JsonRenderer.h"
#include "render/TextRenderer.h"

Renderer::~Renderer() = default;

bool Renderer::RenderTo(const BpHeadingNode& root, const std::vector<CFMessage>& messages,
                        std::FILE* out) const {
    const std::string text = Render(root, messages);
    return std::fwrite(text.data(), 1, text.size(), out) == text.size();
}

std::unique_ptr<Renderer> Renderer::Make(Format format) {
    switch (format) {
    case kText:
        return std::make_unique<TextRenderer>();
    case kJson:
        return std::make_unique<JsonRenderer>();
    case kHtml:
        return std::make_unique<HtmlRenderer>(HtmlRenderer::DefaultWebFolder());
    }
    return nullptr;
}

std::optional<Renderer::Format> Renderer::FormatNamed(std::string_view name) {
    if (name == "text") {
        return kText;
    }
    if (name == "json") {
        return kJson;
    }
    if (name == "html") {
        return kHtml;
    }
    return std::nullopt;
}
