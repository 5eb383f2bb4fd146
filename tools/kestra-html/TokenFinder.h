#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "html/parser/GenericParser.h"
#include "tools/kestra-html/TokenReceiver.h"

namespace Kestra::Tool {

/// Finds the token that holds one byte of an input.
///
/// The strings that a wide observer gets from the 8-bit parser are converted, so their lengths say nothing about bytes. But in every
/// callback the parser's own line and column, which count the document's characters in either parser, tell where it stands: behind
/// the token, or behind the opener of the next one. From that and from the kind of the next token follows where each token starts.
class TokenFinder final : public TokenReceiver<TokenFinder> {
public:
    static constexpr std::uint64_t LONGEST_TEXT = 40;  ///< characters of each string of the token that are shown

    /// @param observedParser  borrowed; asked in callbacks
    /// @param input           borrowed; the bytes that are parsed
    /// @param firstByte       offset of the first byte that is parsed, where the start of the input is lost to the tokens
    /// @param byte            offset of the byte to find; the size of the input stands for what follows behind its last token
    TokenFinder(const HTML::GenericParser* observedParser, std::string_view input, std::uint64_t firstByte, std::uint64_t byte);

    void OnBOM(const void* bytes, std::uint64_t size) override;

    /// For the pass as a whole: the token in the trace language, its long texts cut. Empty when no token starts at or before the byte.
    const std::string& GetToken() const;
    std::uint64_t GetTokenStart() const;  ///< byte offset

    template <typename Record>
    void OnToken(TokenKind kind, const Record& record);

private:
    /// What the token before has left behind the place where the parser stood when it was delivered.
    enum class Boundary {
        EXACT,         ///< nothing
        TEXT,          ///< text ends in front of the opener of the next token, which has been consumed
        LINE_COMMENT,  ///< a line comment, too, where a section ends it; not where the line does
    };

    std::uint64_t FindStart(TokenKind kind, std::uint64_t keywordLength) const;
    void Advance();

    const HTML::GenericParser* parser;
    std::string_view bytes;
    std::uint64_t wanted;

    // The place that the parser has reached.
    std::uint64_t offset;
    std::uint64_t line = 1;
    std::uint64_t column = 1;

    Boundary boundary = Boundary::EXACT;
    std::string token;
    std::uint64_t tokenStart = 0;
};

}  // namespace Kestra::Tool
