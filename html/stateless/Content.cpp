#include "html/stateless/Content.h"

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/Characters.h"

namespace Kestra::HTML::Stateless {

namespace {

enum ScriptState : std::uint32_t {
    SCRIPT_CODE = 0,
    SCRIPT_BLOCK_COMMENT = 2,
    SCRIPT_LINE_COMMENT = 3,
    SCRIPT_SINGLE_QUOTED = 4,
    SCRIPT_DOUBLE_QUOTED = 5,
    SCRIPT_LESS_THAN = 6,
};

enum StyleState : std::uint32_t { STYLE_RULES = 0, STYLE_LESS_THAN = 1 };

enum RawTextState : std::uint32_t { RAW_CONTENT = 0, RAW_ESCAPED = 1, RAW_DOUBLE_ESCAPED = 2 };

constexpr std::string_view SCRIPT_END = "</script>";
constexpr std::string_view STYLE_END = "/style>";  // the "<" before it is no longer there to compare

constexpr std::string_view NESTED_SCRIPT = "<script";

enum class EndTag { BEGUN, COMPLETE, NONE };

/// Compares one more byte with an end tag. `compared` becomes content when it is none.
EndTag CompareWithEnd(Data& data, std::string_view endTag, std::string* compared) {
    *compared += static_cast<char>(Next(data));
    ConsumeContent(data);
    if (EqualsKeyword(*compared, endTag.substr(0, compared->size())))
        return compared->size() == endTag.size() ? EndTag::COMPLETE : EndTag::BEGUN;
    data.text += *compared;
    return EndTag::NONE;
}

}  // namespace

// Scripts

void InitScriptTagParser(Data& data) {
    data.text.clear();
    data.scriptState = SCRIPT_CODE;
}

namespace {

/// State 0: a run of code, or a byte that may end it.
std::uint32_t ParseScriptCode(Data& data) {
    if (!AppendContentRun(data, CountUntil(data, SCRIPT_STOP), &data.text))
        return STATELESS_LIMIT_EXCEEDED;
    if (AtEnd(data))
        return STATELESS_OK;
    const unsigned char next = Next(data);
    const bool isAfterSlash = !data.text.empty() && data.text.back() == '/';
    if (next == '<') {
        data.scriptEnd.assign(1, '<');
        data.scriptState = SCRIPT_LESS_THAN;
        Consume(data);
    } else if ((next == '/' || next == '*') && isAfterSlash) {
        data.text.pop_back();
        data.scriptPrevious = ' ';
        data.scriptState = next == '/' ? SCRIPT_LINE_COMMENT : SCRIPT_BLOCK_COMMENT;
        Consume(data);
    } else if (next == '\'' || next == '"') {
        data.text += static_cast<char>(next);
        data.scriptPrevious = ' ';
        data.scriptState = next == '\'' ? SCRIPT_SINGLE_QUOTED : SCRIPT_DOUBLE_QUOTED;
        Consume(data);
    } else {
        data.text += static_cast<char>(next);
        ConsumeContent(data);
    }
    return STATELESS_OK;
}

/// States 4 and 5: what comes before a quote, and that quote.
std::uint32_t ParseScriptString(Data& data) {
    const char quote = data.scriptState == SCRIPT_SINGLE_QUOTED ? '\'' : '"';
    const std::size_t count = CountUntilByte(data, quote);
    if (!AppendRun(data, count, &data.text))
        return STATELESS_LIMIT_EXCEEDED;
    if (count > 0)
        data.scriptPrevious = data.cursor[-1];
    if (AtEnd(data))
        return STATELESS_OK;
    data.text += quote;
    if (data.scriptPrevious != '\\')
        data.scriptState = SCRIPT_CODE;
    else
        data.scriptPrevious = static_cast<unsigned char>(quote);
    Consume(data);
    return STATELESS_OK;
}

}  // namespace

//  state             "/"       "*"       "'"          '"'          "<"     "\"          line break   other
//  0 code            to 1      keep      keep, to 4   keep, to 5   to 6    keep         keep         keep
//  1 code, "/"       to 3      to 2      other        other        other   other        other        "/", as 0
//  2 block comment   drop      to 7      drop         drop         drop    drop         drop         drop
//  3 line comment    drop      drop      drop         drop         drop    drop         to 0         drop
//  4 in "'"          keep      keep      keep, to 0   keep         keep    keep, to 8   keep         keep
//  5 in '"'          keep      keep      keep         keep, to 0   keep    keep, to 9   keep         keep
//  6 after "<"       the end tag recognizer reads on: "/Script>": complete; "a": "<a", to 0; "/'": "</'", to 0;
//                    "<": "<<", to 0 (kept); "/script ": "</script ", to 0
//  7 comment, "*"    to 0      drop      other        other        other   other        other        as 2
//  8 in "'", "\"     other     other     other        other        other   keep         other        keep, to 4
//  9 in '"', "\"     other     other     other        other        other   keep (kept)  other        keep, to 5
//
// States 1 and 7 to 9 are states 0, 2, 4 and 5 with the byte before.
std::uint32_t ParseScriptTag(Data& data) {
    while (!AtEnd(data)) {
        const unsigned char next = Next(data);
        std::uint32_t result = STATELESS_OK;
        switch (static_cast<ScriptState>(data.scriptState)) {
            case SCRIPT_CODE:
                result = ParseScriptCode(data);
                break;
            case SCRIPT_BLOCK_COMMENT:
                if (next == '/' && data.scriptPrevious == '*')
                    data.scriptState = SCRIPT_CODE;
                else
                    data.scriptPrevious = next;
                Consume(data);
                break;
            case SCRIPT_LINE_COMMENT:
                if (Is(next, LINE_END))
                    data.scriptState = SCRIPT_CODE;
                Consume(data);
                break;
            case SCRIPT_SINGLE_QUOTED:
            case SCRIPT_DOUBLE_QUOTED:
                result = ParseScriptString(data);
                break;
            case SCRIPT_LESS_THAN:
                switch (CompareWithEnd(data, SCRIPT_END, &data.scriptEnd)) {
                    case EndTag::COMPLETE:
                        return STATELESS_OK;
                    case EndTag::NONE:
                        data.scriptState = SCRIPT_CODE;
                        break;
                    case EndTag::BEGUN:
                        break;
                }
                break;
        }
        if (result != STATELESS_OK)
            return result;
    }
    return STATELESS_NEED_MORE_DATA;
}

// Style sheets

void InitStyleTagParser(Data& data) {
    data.text.clear();
    data.styleState = STYLE_RULES;
}

//  state         "<"    other
//  0 rules       to 1   keep
//  1 after "<"   the end tag recognizer reads on: "/Style>": complete; "a": "a", to 0; "/x": "/x", to 0; "<": "<", to 0
//
// A "<" that does not begin the end tag is lost (kept).
std::uint32_t ParseStyleTag(Data& data) {
    while (!AtEnd(data)) {
        switch (static_cast<StyleState>(data.styleState)) {
            case STYLE_RULES:
                if (!AppendContentRun(data, CountUntilByte(data, '<'), &data.text))
                    return STATELESS_LIMIT_EXCEEDED;
                if (!AtEnd(data)) {
                    data.styleEnd.clear();
                    Consume(data);
                    data.styleState = STYLE_LESS_THAN;
                }
                break;
            case STYLE_LESS_THAN:
                switch (CompareWithEnd(data, STYLE_END, &data.styleEnd)) {
                    case EndTag::COMPLETE:
                        return STATELESS_OK;
                    case EndTag::NONE:
                        data.styleState = STYLE_RULES;
                        break;
                    case EndTag::BEGUN:
                        break;
                }
                break;
        }
    }
    return STATELESS_NEED_MORE_DATA;
}

// Contents that are text

RawTextElement GetRawElement(const Data& data) {
    return static_cast<RawTextElement>(data.rawElement);
}

bool IsScriptOrStyle(RawTextElement element) {
    return element == RawTextElement::SCRIPT || element == RawTextElement::STYLE;
}

void InitRawTextParser(Data& data) {
    data.text.clear();
    data.heldBack.clear();
    data.rawTextState = RAW_CONTENT;
}

namespace {

/// Holds back the next byte: it is neither content nor counted until it is known what it belongs
/// to.
void HoldBack(Data& data) {
    data.heldBack += static_cast<char>(Next(data));
    PassByte(data);
}

/// Checks the byte after what is held back. True when it ends the name of the end tag; it stays
/// unread.
bool JudgeHeldBack(Data& data) {
    const char next = static_cast<char>(Next(data));
    const auto mayBegin = [&](std::string_view mark) {
        const std::size_t size = data.heldBack.size();
        return size < mark.size() && EqualsKeyword(data.heldBack, mark.substr(0, size)) &&
               EqualsKeyword(std::string_view(&next, 1), mark.substr(size, 1));
    };
    const RawTextElement element = GetRawElement(data);
    const std::string_view end = GetRawTextEnd(element);
    // The last hyphen of the opener stays unread: it is content as well.
    constexpr std::string_view ESCAPE = SCRIPT_ESCAPE_OPENER.substr(0, SCRIPT_ESCAPE_OPENER.size() - 1);
    std::string_view opener;
    if (element == RawTextElement::SCRIPT && data.rawTextState != RAW_DOUBLE_ESCAPED)
        opener = data.rawTextState == RAW_CONTENT ? ESCAPE : NESTED_SCRIPT;
    if (mayBegin(end) || mayBegin(opener)) {
        HoldBack(data);
        return false;
    }
    if (EqualsKeyword(data.heldBack, end) && EndsRawTextName(next)) {
        if (data.rawTextState != RAW_DOUBLE_ESCAPED)
            return true;
        data.rawTextState = RAW_ESCAPED;
    } else if (EqualsKeyword(data.heldBack, opener) && (opener == ESCAPE ? next == '-' : EndsRawTextName(next))) {
        ++data.rawTextState;
    }
    for (const char byte : data.heldBack)
        CountContent(data, static_cast<unsigned char>(byte));
    data.column += data.heldBack.size();
    data.text += data.heldBack;
    data.heldBack.clear();
    return false;
}

/// How many bytes are content whatever comes after them.
std::size_t CountRawText(const Data& data) {
    if (GetRawElement(data) == RawTextElement::PLAINTEXT)
        return static_cast<std::size_t>(data.length - data.position);
    return data.rawTextState == RAW_CONTENT ? CountUntilByte(data, '<') : CountUntil(data, RAW_STOP);
}

}  // namespace

//  state              "<!--"       "<script"    "</script"         ">" after "--"   other
//  0 content          keep, to 1   keep         complete, unread   keep             keep
//  1 escaped          keep         keep, to 2   complete, unread   keep, to 0       keep
//  2 double escaped   keep         keep         keep, to 1         keep, to 0       keep
//
// States 1 and 2 are those of a script; other elements stay in state 0 and are complete at their
// own name. A name counts only with what ends it in browsers after it. The hyphens of "<!--" count
// for the ">".
std::uint32_t ParseRawText(Data& data) {
    while (!AtEnd(data)) {
        if (!data.heldBack.empty()) {
            if (JudgeHeldBack(data))
                return STATELESS_OK;
            continue;
        }
        if (!AppendContentRun(data, CountRawText(data), &data.text))
            return STATELESS_LIMIT_EXCEEDED;
        if (AtEnd(data))
            break;
        if (Next(data) == '<') {
            HoldBack(data);
        } else {
            if (data.text.ends_with("--"))
                data.rawTextState = RAW_CONTENT;
            data.text += '>';
            ConsumeContent(data);
        }
    }
    return STATELESS_NEED_MORE_DATA;
}

std::uint32_t ParseRawTextEnd(Data& data) {
    while (!AtEnd(data) && Next(data) != '>') {
        CountContent(data, Next(data));
        PassByte(data);
    }
    if (AtEnd(data))
        return STATELESS_NEED_MORE_DATA;
    Consume(data);
    return STATELESS_OK;
}

}  // namespace Kestra::HTML::Stateless
