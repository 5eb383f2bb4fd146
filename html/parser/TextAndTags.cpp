#include "html/parser/TextAndTags.h"

#include <optional>

#include "html/fastpath/WholeText.h"
#include "html/framework/AssignText.h"
#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"
#include "html/output/ParserObserverOutput.h"
#include "html/parser/Construct.h"
#include "html/tags/TagGrammar.h"
#include "platform/StringHelper.h"

namespace Kestra::HTML {

namespace {

/// Appends what the serializer writes to a string.
template <typename C, typename S>
class AppendingHandler final : public ParserObserverOutputHandler {
public:
    explicit AppendingHandler(S* receivingText) : target(receivingText) {}

    void Write(const void* data, std::uint64_t byteCount, bool) override {
        target->append(static_cast<const C*>(data), static_cast<std::size_t>(byteCount / sizeof(C)));
    }

private:
    S* target;
};

/// The element whose content follows as text. Browsers see a start tag only where the name follows
/// its "<" at once, and a name only where white space of theirs, "/" or ">" ends it.
template <typename C, typename S>
RawTextElement FindRawTextElementOf(const StartTagSimpleParserData<C, S>& tag) {
    const std::basic_string_view<C> name = tag.name;
    const std::basic_string_view<C> element = RawText<C, S>::CutName(name);
    if (!tag.closed || !tag.prefix.empty())
        return RawTextElement::NONE;
    const S& following = tag.attributes.empty() ? tag.suffix : tag.attributes[0].prefix;
    const bool isEnded = following.empty() ? tag.attributes.empty() : EndsRawTextName(following[0]);
    return isEnded || element.size() < name.size() ? FindRawTextElement(element) : RawTextElement::NONE;
}

}  // namespace

template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::ParseText(Core& core) {
    if (IsPlainText(core))
        return ParsePlainText(core);
    auto& [text, data] = core.recognizers.text;
    data.allowCComment = core.IsInScriptOrStyle();
    data.allowCPPComment = core.inScript;
    data.allowSQuoteString = core.IsInScriptOrStyle();
    data.allowDQuoteString = core.IsInScriptOrStyle();
    data.allowJSRegEx = core.inScript;
    data.allowEscape2022 = core.MayHaveEscapeRuns();
    const C opener = TextSimpleParser<C, S>::Internals::ReadUntilOpener(text, &core.input.context, &data);
    if (opener != 0) {
        core.DeliverText(1);
        if (opener == '<')
            return ReadTag(core);
        Construct<C, S>::Of(opener == '"' ? STATE_D_QUOTE_STRING : STATE_S_QUOTE_STRING).BeginAfterText(core);
        return SP_NEED_MORE_DATA;
    }
    const std::uint32_t result = text.Parse(&core.input.context, &data);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    const Construct<C, S>* const construct = Construct<C, S>::Find(data.nextParserName, Opener::TEXT);
    const bool isOpenedByTwo = construct != nullptr && construct->charactersBack == 2;  // "/*" and "//"
    // A "/" may have turned out to be text.
    if (core.IsTooLong(isOpenedByTwo ? 2 : 1))
        return PARSER_LIMIT_EXCEEDED;
    core.DeliverText(isOpenedByTwo ? 2 : 1);
    if (construct == nullptr)
        return PARSER_UNKNOWN_RECOGNIZER;
    construct->BeginAfterText(core);
    return SP_NEED_MORE_DATA;
}

/// Text that only a "<" stops.
template <typename C, typename S>
bool TextAndTags<C, S>::IsPlainText(const Core& core) {
    return core.state == STATE_TEXT && core.recognizers.text.data.state == 0 && !core.inScript && !core.inStyle &&
           !core.MayHaveEscapeRuns();
}

/// Most of a document: plain text and tags that lie in the piece as a whole, one after the other.
/// No recognizer runs.
template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::ParsePlainText(Core& core) {
    std::uint32_t result = SP_NEED_MORE_DATA;
    while (result == SP_NEED_MORE_DATA && IsPlainText(core) && core.input.context.position < core.buffersDue) {
        const WholeText<C> run = ReadWholeText(&core.input.context);
        if (!run.endsAtTag) {
            core.recognizers.text.data.text.append(run.characters);
            break;
        }
        DeliverTextWith(core, run.characters);
        result = ReadTag(core);
    }
    return result;
}

/// After a "<": delivers the text before it. The piece has the end of the text, and mostly all of
/// it.
template <typename C, typename S>
void TextAndTags<C, S>::DeliverTextWith(Core& core, std::basic_string_view<C> run) {
    S& pending = core.recognizers.text.data.text;
    if (!pending.empty()) {
        pending.append(run);
        core.DeliverText(1);
    } else if (!run.empty()) {
        AssignText(run.data(), run.data() + run.size(), &core.wholeText);
        core.isWholeTextPending = true;
        core.Deliver(TextData<C, S>{&core.wholeText}, 1);
        core.isWholeTextPending = false;
    }
}

template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::EndText(Core& core) {
    const std::uint32_t result = core.recognizers.text.End();
    if (result == SP_TOKEN_COMPLETE)
        core.DeliverText(0);
    return result;
}

/// The content of an element that has no markup, and its end tag.
template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::ParseRawText(Core& core) {
    SimpleParserContext<C, S>& context = core.input.context;
    RawText<C, S>& rawText = core.recognizers.rawText;
    S& pending = core.recognizers.text.data.text;
    std::basic_string_view<C> run;
    const bool isAtEndTag = rawText.Read(&context, &pending, &run);
    if (!isAtEndTag) {
        pending.append(run);
        const std::uint64_t begun = rawText.GetBegun();
        if (begun > 0 && begun <= context.position)  // in this piece
            core.MarkTokenStart(begun);
        return SP_NEED_MORE_DATA;
    }
    if (rawText.GetBegun() > 0)
        return ParseCutEndTag(core);
    Scan::Advance(context);
    DeliverTextWith(core, run);
    return ReadTag(core);
}

/// An end tag whose first characters lie in earlier pieces, and were taken for content.
template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::ParseCutEndTag(Core& core) {
    SimpleParserContext<C, S>& context = core.input.context;
    RawText<C, S>& rawText = core.recognizers.rawText;
    S& pending = core.recognizers.text.data.text;
    const std::size_t contentLength = pending.size() - static_cast<std::size_t>(rawText.GetBegun());
    const S opener = pending.substr(contentLength);
    pending.resize(contentLength);
    rawText.DropBegun();
    // In the callback only the "<" has been read, wherever the input is cut.
    const std::uint64_t ahead = opener.size() - 1;
    context.position -= ahead;
    context.column -= ahead;
    core.DeliverText(1);
    if (core.IsHalted())
        return SP_NEED_MORE_DATA;
    context.position += ahead;
    context.column += ahead;
    core.BeginSlice();  // the callback may have set a limit
    Construct<C, S>::Of(STATE_END_TAG).Begin(core);
    if (opener.size() == 1) {
        Scan::Advance(context);  // the "/"
        return SP_NEED_MORE_DATA;
    }
    SimpleParserContext<C, S> name;
    name.buffer = opener.data();
    name.position = 2;
    name.length = opener.size();
    return core.recognizers.endTag.Parse(&name);
}

template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::EndRawText(Core& core) {
    core.recognizers.rawText.End(&core.recognizers.text.data.text);
    core.DeliverText(0);
    return SP_TOKEN_COMPLETE;
}

/// After a "<", when the text before it has been delivered. The next character shows whether it is
/// a start tag or an end tag. Most of these are in the piece as a whole and need no recognizer.
template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::ReadTag(Core& core) {
    SimpleParserContext<C, S>& context = core.input.context;
    const C next = Scan::AtEnd(context) ? C('!') : Scan::Next(context);
    if (next == '!' || next == '?') {
        Construct<C, S>::Of(STATE_GENERIC_TAG).BeginAfterText(core);
        return SP_NEED_MORE_DATA;
    }
    const bool hasNoEscapeRuns = !core.MayHaveEscapeRuns();
    if (next == '/') {
        Scan::Advance(context);
        if (hasNoEscapeRuns) {
            if (const std::optional<WholeTag> tag =
                    WholeTagReader<C, S>(&context).Read(&core.recognizers.endTag.data)) {
                core.SetActive(STATE_END_TAG, ParserNames::END_TAG);
                return FinishEndTag(core, *tag);
            }
        }
        core.MarkTokenStart(2);
        Construct<C, S>::Of(STATE_END_TAG).BeginUnlessText(core);
        return SP_NEED_MORE_DATA;
    }
    if (hasNoEscapeRuns && !core.IsInScriptOrStyle()) {
        const std::optional<WholeTag> tag =
            WholeTagReader<C, S>(&context, core.limit.GetMostAttributes()).Read(&core.recognizers.startTag.data);
        core.CountParts();
        if (tag) {
            core.SetActive(STATE_START_TAG, ParserNames::START_TAG);
            return FinishStartTag(core, *tag);
        }
    }
    core.MarkTokenStart(1);
    Construct<C, S>::Of(STATE_START_TAG).BeginUnlessText(core);
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::ParseStartTag(Core& core) {
    auto& [recognizer, data] = core.recognizers.startTag;
    const std::uint32_t result = recognizer.Parse(&core.input.context, &data);
    if (result == SP_NOT_THIS_TOKEN) {
        core.ReturnToText("<");
        S& pending = core.recognizers.text.data.text;
        pending += data.prefix;
        pending += data.name;
        return SP_NEED_MORE_DATA;
    }
    if (result == SP_TOKEN_COMPLETE && core.IsTooLong(0))
        return PARSER_LIMIT_EXCEEDED;
    core.CountParts();
    return result == SP_TOKEN_COMPLETE ? FinishStartTag(core, RecognizedTag()) : result;
}

template <typename C, typename S>
template <typename Tag>
std::uint32_t TextAndTags<C, S>::FinishStartTag(Core& core, Tag tag) {
    StartTagSimpleParserData<C, S>& data = core.recognizers.startTag.data;
    TagGrammar::SettleShortTag(&data);
    const bool asText = core.scriptsAsText;
    const RawTextElement element = asText ? FindRawTextElementOf(data) : RawTextElement::NONE;
    DeliverStartTag(core);
    if (core.markupCharset.IsWanted() && EqualsKeyword(data.name, "meta") &&
        core.markupCharset.Apply(data, core.IsHalted(), &core.delivery))
        return PARSER_PARSE_AGAIN;
    if (asText)
        NotifyOfRawText(core, element);
    else if (!data.selfClosing)
        SwitchScriptAndStyle(core, data.name, true);
    ReturnToText(core, tag);
    if (element != RawTextElement::NONE) {
        core.recognizers.rawText.Begin(element, core.MayHaveEscapeRuns());
        core.SetActive(STATE_RAW_TEXT, ParserNames::TEXT);
    }
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
void TextAndTags<C, S>::DeliverStartTag(Core& core) {
    const StartTagSimpleParserData<C, S>& data = core.recognizers.startTag.data;
    if (data.selfClosing)
        core.Deliver(MakeRecord<ShortTagData>(data));
    else
        core.Deliver(MakeRecord<StartTagData>(data));
}

template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::ParseEndTag(Core& core) {
    const std::uint32_t result = core.recognizers.endTag.Parse(&core.input.context);
    if (result == SP_TOKEN_COMPLETE && core.IsTooLong(0))
        return PARSER_LIMIT_EXCEEDED;
    core.CountParts();
    return result == SP_TOKEN_COMPLETE ? FinishEndTag(core, RecognizedTag()) : result;
}

template <typename C, typename S>
template <typename Tag>
std::uint32_t TextAndTags<C, S>::FinishEndTag(Core& core, Tag tag) {
    const EndTagSimpleParserData<C, S>& data = core.recognizers.endTag.data;
    const bool isForeign =
        (core.inScript && !EqualsKeyword(data.name, "script")) || (core.inStyle && !EqualsKeyword(data.name, "style"));
    if (isForeign) {
        ReturnToText(core, tag);
        AppendingHandler<C, S> handler(&core.recognizers.text.data.text);
        const EndTagData<C, S> record = MakeRecord<EndTagData>(data);
        ParserObserverOutput<C, S>::GetEndTagOutput(&record, &handler);
        return SP_NEED_MORE_DATA;
    }
    core.Deliver(MakeRecord<EndTagData>(data));
    const std::basic_string_view<C> name = data.name;
    SwitchScriptAndStyle(core, core.scriptsAsText ? RawText<C, S>::CutName(name) : name, false);
    ReturnToText(core, tag);
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t TextAndTags<C, S>::EndEndTag(Core& core) {
    const std::uint32_t result = core.recognizers.endTag.End();
    if (result == SP_TOKEN_COMPLETE)
        core.Deliver(MakeRecord<EndTagData>(core.recognizers.endTag.data));
    return result;
}

/// A `script` or `style` tag was delivered: notifies the observer and switches the mode, also for a
/// stray end tag.
template <typename C, typename S>
void TextAndTags<C, S>::SwitchScriptAndStyle(Core& core, std::basic_string_view<C> name, bool starts) {
    if (EqualsKeyword(name, "script")) {
        if (!core.IsHalted())
            core.delivery.Notify(
                [starts](auto* observer) { starts ? observer->OnJSTagStart() : observer->OnJSTagEnd(); });
        core.inScript = starts;
    } else if (EqualsKeyword(name, "style")) {
        if (!core.IsHalted())
            core.delivery.Notify(
                [starts](auto* observer) { starts ? observer->OnCSSTagStart() : observer->OnCSSTagEnd(); });
        core.inStyle = starts;
    }
}

/// The same for a tag after which the content is text.
template <typename C, typename S>
void TextAndTags<C, S>::NotifyOfRawText(Core& core, RawTextElement element) {
    if (core.IsHalted())
        return;
    if (element == RawTextElement::SCRIPT)
        core.delivery.Notify([](auto* observer) { observer->OnJSTagStart(); });
    else if (element == RawTextElement::STYLE)
        core.delivery.Notify([](auto* observer) { observer->OnCSSTagStart(); });
}

/// After a tag that no recognizer has read, the recognizer of text is unchanged, at the beginning
/// of a text; its options are set when text is read.
template <typename C, typename S>
void TextAndTags<C, S>::ReturnToText(Core& core, WholeTag) {
    core.SetActive(STATE_TEXT, ParserNames::TEXT);
}

template <typename C, typename S>
void TextAndTags<C, S>::ReturnToText(Core& core, RecognizedTag) {
    core.ReturnToText();
}

KESTRA_HTML_INSTANTIATE(TextAndTags);

}  // namespace Kestra::HTML
