#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "html/framework/RawTextElements.h"
#include "html/framework/SimpleParserContext.h"
#include "html/text/Escape2022SimpleParser.h"

/// @file
/// The content of the elements in which the HTML standard sees no markup. Not installed.

namespace Kestra::HTML {

/// Reads the content of such an element, from after its start tag to before its end tag: "</" and
/// the name, compared without case, followed by white space, "/" or ">". In a script a part
/// between `<!--` and `-->` may contain scripts with their end tags.
///
/// Resumable at every character: a copy has all that it must remember. Never fails. Source: the
/// tokenizer of the HTML standard, from its RCDATA state to its script data double escape end
/// state.
template <typename C, typename S>
class RawText {
public:
    /// The name without what follows its first "/", which ends a name in browsers.
    static std::basic_string_view<C> CutName(std::basic_string_view<C> name);

    /// @param hasEscapes  the document may have ISO-2022 runs, in which no character is markup
    void Begin(RawTextElement contentOf, bool hasEscapes);

    /// Resets to the beginning of the content.
    void Restart();

    /// Reads on. What is consumed is appended to `text`, except `run`, which the caller appends.
    /// @param context  borrowed for the call
    /// @param text     the content up to here, and nothing else; receives what cannot be in `run`
    /// @param run      the last characters consumed
    /// @return true before the end tag: at its "<", or, when `GetBegun` is not 0, after those of
    ///         its characters that ended an earlier piece; false when the piece is used up
    bool Read(SimpleParserContext<C, S>* context, S* text, std::basic_string_view<C>* run);

    /// Characters at the end of the content that may begin the end tag, or something else that
    /// counts.
    std::uint64_t GetBegun() const;

    /// Drops these characters: they begin the end tag, and the caller removes them from the
    /// content.
    void DropBegun();

    /// The input ends in the content.
    void End(S* text);

private:
    template <typename, typename>
    friend class RecognizerBuffers;

    enum class Match { NONE, PARTIAL, COMPLETE };
    enum class Verdict { TEXT, UNDECIDED, END_TAG };

    void SkipToStop(SimpleParserContext<C, S>* context) const;
    bool ReadEscapeRun(SimpleParserContext<C, S>* context, S* text);
    Verdict Judge(const C* begin, const C* end);
    Verdict JudgeBegun(const SimpleParserContext<C, S>& context, const S& text);
    Verdict SwitchTo(std::uint32_t next, Match match);
    Match MatchName(const C* begin, const C* end) const;

    RawTextElement element = RawTextElement::NONE;
    std::uint32_t state = 0;  // 0 content; of a script also 1 escaped and 2 double escaped
    std::uint64_t begun = 0;  // see `GetBegun`
    bool iso2022 = false;
    bool inEscapeRun = false;
    std::size_t escapeRunEnd = 0;  // of the last escape run: characters of the content
    Escape2022SimpleParser<C, S> escape;
    Escape2022SimpleParserData<C, S> escapeData;
};

}  // namespace Kestra::HTML
