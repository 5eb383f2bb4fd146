#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "html/rewrite/RewriterElement.h"
#include "html/rewrite/RewriterToken.h"
#include "tests/support/DocumentMaker.h"

namespace Kestra::Test {

/// One replacement in a document: `[begin, end)` becomes `text`. An insertion has no length.
struct Splice {
    std::size_t begin = 0;
    std::size_t end = 0;
    std::string text;
    bool isText = false;  ///< its first character becomes a reference where it would go on with one that is before it
};

/// An edit of one token, or of the element that it opens.
/// @return true when it answered as it must
struct Edit {
    std::size_t tokenBegin = 0;
    std::function<bool(HTML::RewriterToken)> ofToken;
    std::function<bool(HTML::RewriterElement)> ofElement;
};

/// A document made of tokens whose places are known because each was put there by itself, with
/// edits of some of them and of elements.
struct EditedDocument {
    std::string bytes;
    std::vector<Edit> edits;      ///< in the order of the tokens
    std::vector<Splice> splices;  ///< what the edits do, in the order of the places
};

/// What was asked for in all documents, so that a test can tell that it asked for everything.
struct EditsSeen {
    std::uint64_t ofTokens = 0;
    std::uint64_t ofAttributes = 0;
    std::uint64_t ofTexts = 0;
    std::uint64_t ofElements[8] = {};  ///< before, after, prepend, append, set content, replace, remove, unwrap
    std::uint64_t refused = 0;
    std::uint64_t inRemovedContent = 0;
};

/// Makes a document of one-byte characters and its edits.
/// @param seen  what is asked for is added to it
EditedDocument MakeEditedDocument(std::uint64_t seed, EditsSeen* seen);

/// Does the splices by hand.
std::string ApplySplices(std::string_view bytes, const std::vector<Splice>& splices);

}  // namespace Kestra::Test
