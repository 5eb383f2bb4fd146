#include "tools/kestra-html/TokenFinder.h"

#include <type_traits>

#include "html/framework/ParserNames.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Tool {

namespace {

/// Characters of a token's opener that the text recognizer consumes before it hands over. Text behind text is a regular expression, or
/// a "<" that opens nothing.
std::uint64_t OpenerLength(TokenKind kind) {
    const bool isScriptComment = kind == TokenKind::C_COMMENT || kind == TokenKind::CPP_COMMENT;
    return isScriptComment ? 2 : 1;
}

/// Characters of a section's opener that a line comment consumes before it hands over; other tokens do not end it.
std::uint64_t SectionOpenerLength(TokenKind kind, std::uint64_t keywordLength) {
    switch (kind) {
        case TokenKind::COMMENT_TAG:
            return 4;  // "<!--"
        case TokenKind::CDATA_TAG:
        case TokenKind::CONDITIONAL_TAG:
            return 3 + keywordLength;  // "<![" and the word
        case TokenKind::TEXT:
        case TokenKind::START_TAG:
        case TokenKind::SHORT_TAG:
        case TokenKind::END_TAG:
        case TokenKind::ENTITY_TAG:
        case TokenKind::EXTERN_TAG:
        case TokenKind::C_COMMENT:
        case TokenKind::CPP_COMMENT:
        case TokenKind::S_QUOTE_STRING:
        case TokenKind::D_QUOTE_STRING:
        case TokenKind::SCRIPT:
        case TokenKind::STYLE:
        case TokenKind::JUNK:
        case TokenKind::EVENT:
            break;
    }
    return 0;
}

}  // namespace

TokenFinder::TokenFinder(const HTML::GenericParser* observedParser, std::string_view input, std::uint64_t firstByte, std::uint64_t byte)
    : parser(observedParser), bytes(input), wanted(byte), offset(firstByte) {}

/// Lines and columns start behind the mark.
void TokenFinder::OnBOM(const void*, std::uint64_t size) {
    offset = size;
}

const std::string& TokenFinder::GetToken() const {
    return token;
}

std::uint64_t TokenFinder::GetTokenStart() const {
    return tokenStart;
}

template <typename Record>
void TokenFinder::OnToken(TokenKind kind, const Record& record) {
    std::uint64_t keywordLength = 0;
    if constexpr (requires { record.keyword; })
        keywordLength = record.keyword->size();
    std::uint64_t start = FindStart(kind, keywordLength);
    Advance();
    if constexpr (std::is_same_v<Record, HTML::JunkData<C, S>>)
        start = offset - record.text->size();  // junk is the bytes of the document up to here
    if (start <= wanted) {
        token = Trace::Format(record, {LONGEST_TEXT, true});
        tokenStart = start;
    }
    boundary = Boundary::EXACT;
    if (kind == TokenKind::CPP_COMMENT)
        boundary = Boundary::LINE_COMMENT;
    else if (kind == TokenKind::TEXT && parser->GetCurrentParserName() != HTML::ParserNames::JS_REG_EX)
        boundary = Boundary::TEXT;
}

std::uint64_t TokenFinder::FindStart(TokenKind kind, std::uint64_t keywordLength) const {
    const std::uint64_t characterSize = parser->IsWParser() ? sizeof(WideChar) : 1;
    switch (boundary) {
        case Boundary::EXACT:
            break;
        case Boundary::TEXT:
            return offset - OpenerLength(kind) * characterSize;
        case Boundary::LINE_COMMENT:
            return offset - SectionOpenerLength(kind, keywordLength) * characterSize;
    }
    return offset;
}

/// Goes through the input to where the parser stands.
void TokenFinder::Advance() {
    const std::size_t characterSize = parser->IsWParser() ? sizeof(WideChar) : 1;
    const std::uint64_t parserLine = parser->GetLine();
    const std::uint64_t parserColumn = parser->GetColumn();
    while ((line != parserLine || column != parserColumn) && offset + characterSize <= bytes.size()) {
        const bool isLineFeed = bytes[offset] == '\n' && (characterSize == 1 || bytes[offset + 1] == 0);  // UTF-16 is low byte first
        line += isLineFeed ? 1 : 0;
        column = isLineFeed ? 1 : column + 1;
        offset += characterSize;
    }
}

template class TokenReceiver<TokenFinder>;

}  // namespace Kestra::Tool
