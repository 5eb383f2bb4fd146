#include "html/stateless/Limits.h"

#include <algorithm>
#include <string>

#include "html/framework/TokenLimits.h"
#include "html/stateless/Content.h"
#include "platform/KeptBuffers.h"

namespace Kestra::HTML {

/// For `LimitBuffers`: there is no string in it.
template <typename Visitor>
void ForEachString(AttributePlace&, Visitor&) {}

namespace Stateless {

void ApplyLimits(Data& data) {
    data.maxBytes = data.maxTokenSize == 0 ? UINT64_MAX : data.maxTokenSize;
    data.maxItems = TokenLimits::GetMostParts(data.maxTokenSize);
    data.maxListed = data.maxAttributes == 0
                         ? data.maxItems
                         : static_cast<std::size_t>(std::min<std::uint64_t>(data.maxAttributes, SIZE_MAX));
}

void GoBackToToken(Data& data) {
    data.wentOver = true;
    // A script or a style sheet begins with its start tag, another content after it.
    const bool isInContent =
        (data.state == STATE_RAW_TEXT || data.state == STATE_RAW_TEXT_END) && !IsScriptOrStyle(GetRawElement(data));
    data.state = isInContent ? STATE_RAW_TEXT : STATE_TEXT;
    InitRawTextParser(data);
    data.pieceOffset = data.tokenOffset;
    data.cursor = nullptr;
    data.position = 0;
    data.length = 0;
    data.buffersDue = 0;
    data.line = data.tokenLine;
    data.column = data.tokenColumn;
    data.afterNewline = data.tokenAfterNewline;
}

void LimitBuffers(Data& data, bool isNewDocument) {
    if (data.state != STATE_TEXT)
        return;
    const auto visitBuffers = [&data](auto& visit) {
        for (std::string* const string : {&data.identifier, &data.value, &data.tagName})
            visit(*string);
        if (data.text.empty())
            visit(data.text);
        visit(data.attributes);
        visit(data.attributePlaces);
        visit(data.tokens);
        visit(data.wideName);
        visit(data.wideText);
        visit(data.wideAttributes);
        visit(data.wideTokens);
    };
    data.buffersDue =
        data.position + Kestra::LimitBuffers(isNewDocument, visitBuffers, TokenLimits::GetKeptBytes(data.maxTokenSize));
}

}  // namespace Stateless

}  // namespace Kestra::HTML
