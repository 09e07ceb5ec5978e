// The JSON document of an output tree: the contract that tests and scripts
// read ("procedure", "items" in output order, "messages").
#pragma once

#include "render/Renderer.h"

class JsonRenderer final : public Renderer {
public:
    std::string Render(const BpHeadingNode& root,
                       const std::vector<CFMessage>& messages) const override;
};
