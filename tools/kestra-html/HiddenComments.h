#pragma once

#include <cstdint>
#include <string_view>

#include "html/parser/GenericParser.h"
#include "tools/kestra-html/TokenKind.h"

namespace Kestra::Tool {

/// Finds the line comments of scripts, which the 8-bit parser keeps from an 8-bit observer, by looking at the input where a token ends.
///
/// In a script only a comment begins with "//". It lies in one line. Either the line feed ends it, and the next token is the text that
/// begins with it, or a section does, and the next token is that.
class HiddenComments {
public:
    /// @param observedParser  borrowed; asked in callbacks where it stands
    /// @param input           borrowed; the bytes that are parsed
    /// @param firstByte       offset of the first byte that is parsed, where the start of the input is lost to the tokens
    HiddenComments(const HTML::GenericParser* observedParser, std::string_view input, std::uint64_t firstByte);

    /// Lines and columns start after the mark.
    void PassMark(std::uint64_t size);
    void SetInScript(bool isInScript);

    /// Goes to the end of a token, in its callback.
    /// @param size  the bytes of a text; of other tokens the parser tells where they end
    /// @return the bytes of the comment before the token, 0 when there is none
    std::uint64_t Pass(TokenKind kind, std::uint64_t size);

private:
    std::uint64_t CountCommentBytes(TokenKind kind) const;
    void Advance();

    const HTML::GenericParser* parser;
    std::string_view bytes;
    bool inScript = false;

    // The end of the last token.
    std::uint64_t offset;
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

}  // namespace Kestra::Tool
