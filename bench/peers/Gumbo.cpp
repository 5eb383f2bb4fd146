#include <gumbo.h>

#include <vector>

#include "bench/peers/Peers.h"

namespace Kestra::Bench {

std::uint64_t ReadWithGumbo(const std::string& document) {
    GumboOutput* const output = gumbo_parse_with_options(&kGumboDefaultOptions, document.data(), document.size());
    std::uint64_t counted = 0;
    std::vector<const GumboNode*> open{output->root};
    while (!open.empty()) {
        const GumboNode* const node = open.back();
        open.pop_back();
        ++counted;
        if (node->type != GUMBO_NODE_ELEMENT && node->type != GUMBO_NODE_TEMPLATE)
            continue;
        counted += node->v.element.attributes.length;
        for (unsigned i = 0; i < node->v.element.children.length; ++i)
            open.push_back(static_cast<const GumboNode*>(node->v.element.children.data[i]));
    }
    gumbo_destroy_output(&kGumboDefaultOptions, output);
    return counted;
}

}  // namespace Kestra::Bench
