#include "html/text/RawText.h"

#include <algorithm>
#include <type_traits>

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

/// Characters from a "<" on that are always enough to decide: "</", the longest name and one more.
constexpr std::size_t MOST_TO_JUDGE = 12;

enum State : std::uint32_t {
    CONTENT = 0,
    ESCAPED = 1,
    DOUBLE_ESCAPED = 2,
};

/// Whether a text, of which the run is the end, ends in "--".
template <typename C>
bool EndsInDashes(std::basic_string_view<C> text, std::basic_string_view<C> run) {
    const auto isDash = [&](std::size_t back) {
        if (back <= run.size())
            return run[run.size() - back] == '-';
        back -= run.size();
        return back <= text.size() && text[text.size() - back] == '-';
    };
    return isDash(1) && isDash(2);
}

}  // namespace

template <typename C, typename S>
std::basic_string_view<C> RawText<C, S>::CutName(std::basic_string_view<C> name) {
    return name.substr(0, name.find(C('/')));
}

template <typename C, typename S>
void RawText<C, S>::Begin(RawTextElement contentOf, bool hasEscapes) {
    element = contentOf;
    iso2022 = hasEscapes && std::is_same_v<C, char>;
    Restart();
}

template <typename C, typename S>
void RawText<C, S>::Restart() {
    state = CONTENT;
    begun = 0;
    inEscapeRun = false;
    escapeRunEnd = 0;
}

//  state              "<!--"       "<script"    "</script"         ">" after "--"   other
//  0 content          keep, to 1   keep         complete, unread   keep             keep
//  1 escaped          keep         keep, to 2   complete, unread   keep, to 0       keep
//  2 double escaped   keep         keep         keep, to 1         keep, to 0       keep
//
// States 1 and 2 are those of a script; other elements stay in state 0 and end at their own name.
// After a name there must be white space, "/" or ">". The dashes of "<!--" count for the ">".
template <typename C, typename S>
bool RawText<C, S>::Read(SimpleParserContext<C, S>* context, S* text, std::basic_string_view<C>* run) {
    const C* begin = context->buffer + context->position;
    const auto consumed = [&] { return std::basic_string_view<C>(begin, context->buffer + context->position); };
    *run = {};
    if (begun > 0) {
        switch (JudgeBegun(*context, *text)) {
            case Verdict::END_TAG:
                return true;
            case Verdict::UNDECIDED:
                begun += context->length - context->position;
                context->MovePointer(context->length - context->position);
                *run = consumed();
                return false;
            case Verdict::TEXT:
                begun = 0;
        }
    }
    while (!Scan::AtEnd(*context)) {
        if (inEscapeRun) {
            if (!ReadEscapeRun(context, text))
                return false;
            begin = context->buffer + context->position;
            continue;
        }
        SkipToStop(context);
        *run = consumed();
        if (Scan::AtEnd(*context))
            return false;
        const C stop = Scan::Next(*context);
        if (stop == '<') {
            const std::uint64_t left = context->length - context->position;
            const C* const opener = context->buffer + context->position;
            const Verdict verdict = Judge(opener, opener + std::min<std::uint64_t>(left, MOST_TO_JUDGE));
            if (verdict == Verdict::END_TAG)
                return true;
            if (verdict == Verdict::UNDECIDED) {
                begun = left;
                context->MovePointer(left);
                break;
            }
        } else if (stop == '>') {
            if (EndsInDashes<C>(std::basic_string_view<C>(*text).substr(escapeRunEnd), *run))
                state = CONTENT;
        } else {
            text->append(*run);
            *run = {};
            escape.BeginParse(&escapeData);
            inEscapeRun = true;
        }
        Scan::Advance(*context);
    }
    if (!inEscapeRun)
        *run = consumed();
    return false;
}

template <typename C, typename S>
void RawText<C, S>::SkipToStop(SimpleParserContext<C, S>* context) const {
    constexpr Scan::Classes ESCAPED_STOPS = Scan::LESS_THAN | Scan::GREATER_THAN;
    if (iso2022)
        Scan::ConsumeUntil(*context, (state == CONTENT ? Scan::LESS_THAN : ESCAPED_STOPS) | Scan::ESCAPE);
    else if (state == CONTENT)
        Scan::ConsumeUntil<Scan::LESS_THAN>(*context);
    else
        Scan::ConsumeUntil<ESCAPED_STOPS>(*context);
}

/// @return false when the piece is used up
template <typename C, typename S>
bool RawText<C, S>::ReadEscapeRun(SimpleParserContext<C, S>* context, S* text) {
    if (escape.Parse(context, &escapeData) != SP_TOKEN_COMPLETE)
        return false;
    text->append(escapeData.text);
    inEscapeRun = false;
    escapeRunEnd = text->size();
    return true;
}

/// Decides what a "<" and the characters after it are.
template <typename C, typename S>
auto RawText<C, S>::Judge(const C* begin, const C* end) -> Verdict {
    if (element == RawTextElement::PLAINTEXT)
        return Verdict::TEXT;
    ++begin;
    if (begin == end)
        return Verdict::UNDECIDED;
    if (*begin == '/') {
        const Match match = MatchName(begin + 1, end);
        if (state == DOUBLE_ESCAPED)
            return SwitchTo(ESCAPED, match);
        return match == Match::COMPLETE ? Verdict::END_TAG : SwitchTo(state, match);
    }
    if (element != RawTextElement::SCRIPT || state == DOUBLE_ESCAPED)
        return Verdict::TEXT;
    if (state == ESCAPED)
        return SwitchTo(DOUBLE_ESCAPED, MatchName(begin, end));
    constexpr std::string_view OPENER = SCRIPT_ESCAPE_OPENER.substr(1);
    const auto length = std::min(static_cast<std::size_t>(end - begin), OPENER.size());
    if (!std::equal(begin, begin + length, OPENER.begin()))
        return Verdict::TEXT;
    return SwitchTo(ESCAPED, length == OPENER.size() ? Match::COMPLETE : Match::PARTIAL);
}

/// The same for a "<" in an earlier piece.
template <typename C, typename S>
auto RawText<C, S>::JudgeBegun(const SimpleParserContext<C, S>& context, const S& text) -> Verdict {
    C characters[MOST_TO_JUDGE];
    C* end = std::copy(text.end() - static_cast<std::ptrdiff_t>(begun), text.end(), characters);
    const C* const next = context.buffer + context.position;
    end = std::copy(next, next + std::min(context.length - context.position, MOST_TO_JUDGE - begun), end);
    return Judge(characters, end);
}

template <typename C, typename S>
auto RawText<C, S>::SwitchTo(std::uint32_t next, Match match) -> Verdict {
    if (match == Match::COMPLETE)
        state = next;
    return match == Match::PARTIAL ? Verdict::UNDECIDED : Verdict::TEXT;
}

/// The element's name and what ends it.
template <typename C, typename S>
auto RawText<C, S>::MatchName(const C* begin, const C* end) const -> Match {
    for (const char expected : GetRawTextName(element)) {
        if (begin == end)
            return Match::PARTIAL;
        if (FoldAscii(*begin) != static_cast<C>(expected))
            return Match::NONE;
        ++begin;
    }
    if (begin == end)
        return Match::PARTIAL;
    return EndsRawTextName(*begin) ? Match::COMPLETE : Match::NONE;
}

template <typename C, typename S>
std::uint64_t RawText<C, S>::GetBegun() const {
    return begun;
}

template <typename C, typename S>
void RawText<C, S>::DropBegun() {
    begun = 0;
}

template <typename C, typename S>
void RawText<C, S>::End(S* text) {
    if (!inEscapeRun)
        return;
    escape.EndParse(&escapeData);
    text->append(escapeData.text);
    inEscapeRun = false;
}

KESTRA_HTML_INSTANTIATE(RawText);

}  // namespace Kestra::HTML
