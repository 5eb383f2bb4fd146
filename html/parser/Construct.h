#pragma once

#include <cstdint>

#include "html/parser/ParserCore.h"
#include "platform/Characters.h"

namespace Kestra::HTML {

/// Which recognizer hands over to another one by name.
enum class Opener : std::uint32_t {
    NONE,
    TEXT,  ///< at the characters that stop text
    TAG,   ///< after "<"
};

/// Everything that the driver knows about one construct: which recognizers name it, how it begins,
/// and how a piece and the end of the input are handled. Not installed.
template <typename C, typename S>
struct Construct {
    using Core = ParserCore<C, S>;

    ParserState state;
    Opener opener;  ///< who hands over to it
    WideStringView name;
    std::uint64_t charactersBack;  ///< from the current place to its first character, when text hands over to it
    /// Inside script and style these characters are text, not markup; null: markup there too.
    const char* textInScript;
    bool isOpenAtEnd;  ///< the end of the input leaves it unfinished, so that its bytes must be read again

    void (*beginRecord)(Core& core);  ///< `BeginParse` and the options of the document; null: nobody hands over to it

    /// Runs the recognizer over the piece and handles its result.
    /// @return SP_NEED_MORE_DATA to go on; everything else is a failure
    std::uint32_t (*parse)(Core& core);

    /// The input ends.
    /// @return SP_TOKEN_COMPLETE, or a failure
    std::uint32_t (*end)(Core& core);

    /// Makes its recognizer the active one.
    void Begin(Core& core) const {
        beginRecord(core);
        core.SetActive(state, name);
    }

    /// The same where markup may be text.
    void BeginUnlessText(Core& core) const {
        if (core.IsInScriptOrStyle() && textInScript != nullptr)
            core.ReturnToText(textInScript);
        else
            Begin(core);
    }

    /// The same after its opener, the text before it delivered.
    void BeginAfterText(Core& core) const {
        core.MarkTokenStart(charactersBack);
        Begin(core);
    }

    static const Construct& Of(ParserState state);
    /// @return null when there is none
    static const Construct* Find(WideStringView name, Opener opener);
};

}  // namespace Kestra::HTML
