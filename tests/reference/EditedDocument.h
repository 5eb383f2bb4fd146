#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "html/rewrite/RewriterToken.h"
#include "tests/reference/DocumentMaker.h"

namespace Kestra::Test {

/// One replacement in a document: `[begin, end)` becomes `text`. An insertion has no length.
struct Splice {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;
};

/// An edit of one token, and what it must do to the bytes of the document.
struct TokenEdit {
    std::size_t tokenBegin = 0;
    std::function<std::uint32_t(HTML::RewriterToken)> edit;
};

/// A document made of tokens whose places are known because each was put there by itself, with edits of some of them.
struct EditedDocument {
    std::string bytes;
    std::vector<TokenEdit> edits;  ///< in the order of the tokens
    std::vector<Splice> splices;   ///< what the edits do, in the order of the places
};

/// Makes a document of one-byte characters and its edits.
EditedDocument MakeEditedDocument(std::uint64_t seed);

/// Does the splices by hand.
std::string ApplySplices(std::string_view bytes, const std::vector<Splice>& splices);

}  // namespace Kestra::Test
