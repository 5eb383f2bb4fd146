#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "html/framework/TokenKind.h"
#include "html/parser/GenericParser.h"
#include "html/rewrite/DocumentText.h"
#include "html/rewrite/TagEdits.h"

/// @file
/// Where the parts of a tag lie. Not installed.

namespace Kestra::HTML {

/// Asks the parser for the places of a tag's name and attributes. Keeps its buffers from tag to
/// tag.
class TagLayoutReader {
public:
    /// @param kind   of the token whose callback runs: a tag or an XML declaration
    /// @param begin  of that token in the document
    /// @param bytes  of that token
    /// @return false when the parser does not know where the name ends
    bool Read(const GenericParser& parser, TokenKind kind, std::uint64_t begin, std::string_view bytes,
              const DocumentText& charset);

    const TagLayout& GetLayout() const {
        return layout;
    }

private:
    bool MayBeFolded(const AttributePlace& place, std::string_view bytes) const;

    TagLayout layout;
    std::vector<AttributePlace> attributeParts;
};

}  // namespace Kestra::HTML
