#include "html/parser/ParserCore.h"

#include <algorithm>

#include "html/framework/Instantiate.h"
#include "html/framework/TokenLimits.h"
#include "platform/KeptBuffers.h"

namespace Kestra::HTML {

template <typename C, typename S>
void ParserCore<C, S>::SettleCopy() {
    if (isWholeTextPending)
        recognizers.text.data.text = wholeText;
    isWholeTextPending = false;
}

template <typename C, typename S>
void ParserCore<C, S>::ReturnToText(const char* prefix) {
    ReturnToText();
    for (; *prefix != 0; ++prefix)
        recognizers.text.data.text += static_cast<C>(*prefix);
}

template <typename C, typename S>
DeliveredAttributes<C, S> ParserCore<C, S>::GetDeliveredAttributes() const {
    DeliveredAttributes<C, S> delivered;
    const std::uint64_t tagBegin = places.GetBegin();
    if (state == STATE_START_TAG) {
        const auto& tag = recognizers.startTag.data;
        delivered.list = &tag.attributes;
        delivered.nameEnd = tagBegin + 1 + tag.prefix.size() + tag.name.size();
        delivered.listBegin = delivered.nameEnd;
        delivered.bareValueEndsEscapeRuns = true;
    } else if (state == STATE_END_TAG) {
        const auto& tag = recognizers.endTag.data;
        delivered.list = &tag.attributes;
        delivered.nameEnd = tagBegin + 2 + tag.prefix.size() + tag.name.size();
        delivered.listBegin = delivered.nameEnd + tag.afterName.size();
    } else if (state == STATE_EXTERN_TAG) {
        const auto& tag = recognizers.externTag.data;
        delivered.list = &tag.attributes;
        delivered.nameEnd = tagBegin + 2 + tag.prefix.size() + tag.name.size();
        delivered.listBegin = delivered.nameEnd;
        delivered.bareValueEndsEscapeRuns = true;
    }
    return delivered;
}

template <typename C, typename S>
void ParserCore<C, S>::BeginSlice() {
    SimpleParserContext<C, S>& context = input.context;
    const std::uint64_t left = input.pieceLength - context.position;
    context.length = context.position + (IsHalted() ? 0 : limit.GetSliceLength(GetLengthSoFar(), left));
    using ConditionalTag = ConditionalTagSimpleParser<C, S>;
    ConditionalTag::Internals::SetPieceContinues(recognizers.conditionalTag.recognizer,
                                                 context.length != input.pieceLength);
}

template <typename C, typename S>
void ParserCore<C, S>::ApplyLimits() {
    recognizers.SetMaxParts(limit.GetMostAttributes(), limit.GetMostItems());
    BeginSlice();
}

template <typename C, typename S>
std::uint64_t ParserCore<C, S>::GetLengthSoFar() const {
    const std::uint64_t begin = places.GetEnd();
    return std::max(begin, input.GetOffset()) - begin;
}

template <typename C, typename S>
bool ParserCore<C, S>::IsTooLong(std::uint64_t charactersAhead) const {
    const std::uint64_t length = GetLengthSoFar();
    return length > charactersAhead && limit.IsExceededBy(length - charactersAhead);
}

template <typename C, typename S>
bool ParserCore<C, S>::IsTooLongUnderWay() const {
    if (!IsTooLong(0))
        return false;
    if (state == STATE_TEXT)
        return IsTooLong(recognizers.text.data.state == 1 ? 1 : 0);
    if (state == STATE_RAW_TEXT)
        return IsTooLong(recognizers.rawText.GetBegun());
    if (state != STATE_CPP_COMMENT)
        return true;
    constexpr std::uint64_t LONGEST_SECTION_OPENER = 8;  // "<![CDATA"
    const std::uint64_t opener = GetLengthSoFar() - 2 - recognizers.cppComment.data.text.size();
    return IsTooLong(opener <= LONGEST_SECTION_OPENER ? opener : 0);
}

template <typename C, typename S>
void ParserCore<C, S>::GoBackToToken() {
    halted = PARSER_LIMIT_EXCEEDED;
    if (state == STATE_JUNK)
        recognizers.junk.Begin();
    else if (state == STATE_RAW_TEXT)
        recognizers.rawText.Restart();
    else
        ReturnToText();
    recognizers.text.data.text.clear();
    places.GoBackToEnd(&input);
    buffersDue = 0;
}

template <typename C, typename S>
void ParserCore<C, S>::LimitBuffers(bool isNewDocument) {
    if (state != STATE_TEXT && state != STATE_JUNK)
        return;
    const std::uint64_t bytes = Kestra::LimitBuffers(
        isNewDocument, [this](auto& visit) { this->VisitBuffers(visit); }, TokenLimits::GetKeptBytes(limit.GetBytes()));
    buffersDue = input.context.position + bytes / sizeof(C);
    roomOfLists = recognizers.GetRoomOfLists();
}

template <typename C, typename S>
void ParserCore<C, S>::ReleaseBuffers() {
    BufferRelease release;
    VisitBuffers(release);
}

template <typename C, typename S>
template <typename Visitor>
void ParserCore<C, S>::VisitBuffers(Visitor& visit) {
    recognizers.VisitBuffers(state == STATE_JUNK, visit);
    visit(wholeText);
    visit(markupCharset.GetNameBuffer());
    RecognizerBuffers<C, S>::Visit(delivery.GetConverter(), visit);
}

KESTRA_HTML_INSTANTIATE_STRUCT(ParserCore);

}  // namespace Kestra::HTML
