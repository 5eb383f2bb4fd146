#include "tools/kestra-html/HiddenComments.h"

#include <algorithm>
#include <cstddef>
#include <tuple>

namespace Kestra::Tool {

HiddenComments::HiddenComments(const HTML::GenericParser* observedParser, std::string_view input, std::uint64_t firstByte)
    : parser(observedParser), bytes(input), offset(firstByte) {}

void HiddenComments::PassMark(std::uint64_t size) {
    offset = size;
}

void HiddenComments::SetInScript(bool isInScript) {
    inScript = isInScript;
}

std::uint64_t HiddenComments::Pass(TokenKind kind, std::uint64_t size) {
    const std::uint64_t hidden = CountCommentBytes(kind);
    for (std::uint64_t i = 0; i < hidden; ++i)
        Advance();
    if (kind == TokenKind::TEXT) {  // the parser stands after the opener of the next token
        for (std::uint64_t i = 0; i < size; ++i)
            Advance();
        return hidden;
    }
    const std::uint64_t endLine = parser->GetLine();
    const std::uint64_t endColumn = parser->GetColumn();
    while (offset < bytes.size() && std::tie(line, column) < std::tie(endLine, endColumn))
        Advance();
    return hidden;
}

std::uint64_t HiddenComments::CountCommentBytes(TokenKind kind) const {
    const std::string_view rest = bytes.substr(static_cast<std::size_t>(std::min<std::uint64_t>(offset, bytes.size())));
    if (!inScript || !rest.starts_with("//"))
        return 0;
    std::size_t end = std::string_view::npos;
    if (kind == TokenKind::TEXT)
        end = rest.find('\n');
    else if (kind == TokenKind::COMMENT_TAG || kind == TokenKind::CDATA_TAG || kind == TokenKind::CONDITIONAL_TAG)
        end = std::min(rest.find("<!--"), rest.find("<!["));  // in a comment every other "<!-" and "<![" makes it junk
    return end == std::string_view::npos ? 0 : end;
}

void HiddenComments::Advance() {
    if (offset >= bytes.size())
        return;
    const bool isLineFeed = bytes[static_cast<std::size_t>(offset)] == '\n';
    line += isLineFeed ? 1 : 0;
    column = isLineFeed ? 1 : column + 1;
    ++offset;
}

}  // namespace Kestra::Tool
