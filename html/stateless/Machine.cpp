#include "html/stateless/Machine.h"

#include <string_view>

#include "html/framework/RawTextElements.h"
#include "html/stateless/Comments.h"
#include "html/stateless/Content.h"
#include "html/stateless/Declarations.h"
#include "html/stateless/Limits.h"
#include "html/stateless/Tags.h"
#include "platform/Characters.h"

namespace Kestra::HTML::Stateless {

/// Forwards the result of the parser of a construct. When the construct is complete, causes its
/// events, unless it exceeded a limit.
template <typename Event>
std::uint32_t Machine::Finish(std::uint32_t result, Event raiseEvent) {
    if (result != STATELESS_OK)
        return result;
    if (GoesOver(data, 0))
        return STATELESS_LIMIT_EXCEEDED;
    BeginToken(data);
    raiseEvent();
    return data.stopped ? STATELESS_STOPPED : STATELESS_OK;
}

//  state            "<"    "?"    "/"    "!"    "-"    white space   letter, "_"   other
//  0 text           to 1   keep   keep   keep   keep   keep          keep          keep
//  1 "<"            703    to 2   to 6   to 3   703    to 7          as 7          703
//  2 instruction    the instruction recognizer reads on: "a?>": to 0; before "1": 701
//  3 "<!"           703    703    703    703    to 4   to 8          as 8          703
//  4 "<!-"          703    703    703    703    to 5   703           703           703
//  5 comment        the comment recognizer reads on: "a-->": to 0
//  6 end tag        the end tag recognizer reads on: "a>": to 0; before "1": 701; "a" before " ": 702
//  7 start tag      the start tag recognizer reads on: "a b=c>": to 0; "a/>": to 0; "script>": to 9; "style>": to 10
//  8 declaration    the declaration recognizer reads on: "a b>": to 0
//  9 script         the script recognizer reads on: "a</script>": to 0
//  10 style sheet   the style sheet recognizer reads on: "a</style>": to 0
//  11 content       the content recognizer reads on: "a</title" before " ": "a", to 12
//  12 its end tag   the end tag recognizer reads on: " a>": to 0
//
// Where contents are text, an element without markup goes from 7 to 11. A text is reported before
// its "<" is read.
std::uint32_t Machine::Run() {
    std::uint32_t result = STATELESS_OK;
    while (!AtEnd(data) && result == STATELESS_OK) {
        if (data.position >= data.buffersDue)
            LimitBuffers(data, false);
        switch (static_cast<State>(data.state)) {
            case STATE_TEXT:
                result = ParseText();
                break;
            case STATE_AFTER_LESS_THAN:
                result = ParseAfterLessThan();
                break;
            case STATE_EXTERN_TAG:
                result = Finish(ParseExternTag(data), [this] { events.RaiseExternTag(); });
                break;
            case STATE_AFTER_EXCLAMATION_MARK:
                result = ParseAfterExclamationMark();
                break;
            case STATE_AFTER_HYPHEN:
                result = ParseAfterHyphen();
                break;
            case STATE_COMMENT:
                result = Finish(ParseCommentTag(data),
                                [this] { events.RaiseString(StatelessHTMLParser::ID_COMMENT, &data.identifier); });
                break;
            case STATE_END_TAG:
                result = Finish(ParseEndTag(data), [this] { events.RaiseEndTag(); });
                break;
            case STATE_START_TAG:
                result = ParseStartTag(data);
                if (result == STATELESS_OK)
                    result = FinishStartTag();
                break;
            case STATE_ENTITY_TAG:
                result = Finish(ParseEntityTag(data), [this] { events.RaiseEntityTag(); });
                break;
            case STATE_SCRIPT:
                result = Finish(ParseScriptTag(data), [this] { events.RaiseBody(StatelessHTMLParser::ID_SCRIPT); });
                break;
            case STATE_STYLE:
                result = Finish(ParseStyleTag(data), [this] { events.RaiseBody(StatelessHTMLParser::ID_STYLE); });
                break;
            case STATE_RAW_TEXT:
                result = ParseContent();
                break;
            case STATE_RAW_TEXT_END:
                result = Finish(ParseRawTextEnd(data), [this] { RaiseContentEnd(); });
                break;
        }
    }
    return result;
}

/// State 0: the text up to "<", and that "<".
std::uint32_t Machine::ParseText() {
    if (!AppendContentRun(data, CountUntilByte(data, '<'), &data.text))
        return STATELESS_LIMIT_EXCEEDED;
    if (AtEnd(data))
        return STATELESS_OK;
    if (!data.text.empty()) {
        BeginToken(data);
        events.RaiseString(StatelessHTMLParser::ID_TEXT, &data.text);
        if (data.stopped)
            return STATELESS_STOPPED;
    }
    Consume(data);
    data.state = STATE_AFTER_LESS_THAN;
    return STATELESS_OK;
}

/// State 1.
std::uint32_t Machine::ParseAfterLessThan() {
    const unsigned char next = Next(data);
    if (next == '?') {
        Consume(data);
        InitExternTagParser(data);
        data.state = STATE_EXTERN_TAG;
    } else if (next == '/') {
        Consume(data);
        InitEndTagParser(data);
        data.state = STATE_END_TAG;
    } else if (next == '!') {
        Consume(data);
        data.state = STATE_AFTER_EXCLAMATION_MARK;
    } else if (Is(next, WHITE_SPACE | NAME_START)) {
        data.isBrowsersName = !Is(next, WHITE_SPACE);
        if (!data.isBrowsersName)
            Consume(data);
        InitStartTagParser(data);
        data.state = STATE_START_TAG;
    } else {
        return STATELESS_UNKNOWN_CONSTRUCT;
    }
    return STATELESS_OK;
}

/// State 3.
std::uint32_t Machine::ParseAfterExclamationMark() {
    const unsigned char next = Next(data);
    if (next == '-') {
        Consume(data);
        data.state = STATE_AFTER_HYPHEN;
    } else if (Is(next, WHITE_SPACE | NAME_START)) {
        if (Is(next, WHITE_SPACE))
            Consume(data);
        InitEntityTagParser(data);
        data.state = STATE_ENTITY_TAG;
    } else {
        return STATELESS_UNKNOWN_CONSTRUCT;
    }
    return STATELESS_OK;
}

/// State 4.
std::uint32_t Machine::ParseAfterHyphen() {
    if (Next(data) != '-')
        return STATELESS_UNKNOWN_CONSTRUCT;
    Consume(data);
    InitCommentTagParser(data);
    data.state = STATE_COMMENT;
    return STATELESS_OK;
}

/// From state 7. A script or a style sheet is reported as one, after its end tag; a "/" before the
/// ">" changes nothing about it.
std::uint32_t Machine::FinishStartTag() {
    if (data.scriptsAsText)
        return FinishStartTagAsText();
    if (EqualsKeyword(data.tagName, "script")) {
        InitScriptTagParser(data);
        data.state = STATE_SCRIPT;
    } else if (EqualsKeyword(data.tagName, "style")) {
        InitStyleTagParser(data);
        data.state = STATE_STYLE;
    } else {
        return Finish(STATELESS_OK, [this] { events.RaiseStartTag(); });
    }
    return STATELESS_OK;
}

/// The same when contents are text. An exception out of the callback, or what stops the parser
/// there, ends the content.
std::uint32_t Machine::FinishStartTagAsText() {
    const RawTextElement element =
        data.isBrowsersName ? FindRawTextElement(std::string_view(data.tagName)) : RawTextElement::NONE;
    const bool hasContent = element != RawTextElement::NONE;
    data.rawElement = static_cast<std::uint32_t>(element);
    data.selfClosing = data.selfClosing && !hasContent;
    const std::uint32_t result =
        IsScriptOrStyle(element) ? STATELESS_OK : Finish(STATELESS_OK, [this] { events.RaiseStartTag(); });
    if (result == STATELESS_OK && hasContent) {
        InitRawTextParser(data);
        data.state = STATE_RAW_TEXT;
    }
    return result;
}

/// State 11. A piece may end in a content that is reported as text, as it may in text.
std::uint32_t Machine::ParseContent() {
    const std::uint32_t result = ParseRawText(data);
    if (result == STATELESS_NEED_MORE_DATA && !IsScriptOrStyle(GetRawElement(data)))
        return STATELESS_OK;
    return result == STATELESS_OK ? FinishContent() : result;
}

/// In the event of the content the parser is before the end tag, however the input is cut.
std::uint32_t Machine::FinishContent() {
    std::uint32_t result = STATELESS_OK;
    if (!IsScriptOrStyle(GetRawElement(data)) && !data.text.empty())
        result = Finish(STATELESS_OK, [this] { events.RaiseString(StatelessHTMLParser::ID_TEXT, &data.text); });
    if (result != STATELESS_OK)
        return result;
    data.tagName.assign(data.heldBack, 2);
    data.column += data.heldBack.size();
    data.heldBack.clear();
    data.state = STATE_RAW_TEXT_END;
    return STATELESS_OK;
}

void Machine::RaiseContentEnd() {
    const RawTextElement element = GetRawElement(data);
    if (element == RawTextElement::SCRIPT)
        events.RaiseBody(StatelessHTMLParser::ID_SCRIPT);
    else if (element == RawTextElement::STYLE)
        events.RaiseBody(StatelessHTMLParser::ID_STYLE);
    else
        events.RaiseEndTag();
}

}  // namespace Kestra::HTML::Stateless
