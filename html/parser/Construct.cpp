#include "html/parser/Construct.h"

#include <cstring>
#include <type_traits>

#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"
#include "html/parser/TextAndTags.h"

namespace Kestra::HTML {

namespace {

/// Compares names as memory: `char_traits` of 16-bit characters goes one by one.
bool IsSameName(WideStringView one, WideStringView other) {
    return one.size() == other.size() && std::memcmp(one.data(), other.data(), one.size() * sizeof(WideChar)) == 0;
}

/// The table of constructs, and its functions except those of text and tags. `RECOGNITION` is a
/// member of `Recognizers`.
template <typename C, typename S>
class ConstructTable {
public:
    using Core = ParserCore<C, S>;
    using R = Recognizers<C, S>;
    using Plain = TextAndTags<C, S>;

    static const Construct<C, S> ROWS[];

private:
    template <auto RECOGNITION>
    static void Begin(Core& core) {
        (core.recognizers.*RECOGNITION).Begin();
    }

    /// A construct with quoted strings, in which an ISO-2022 document may have escape runs.
    template <auto RECOGNITION>
    static void BeginTag(Core& core) {
        Begin<RECOGNITION>(core);
        (core.recognizers.*RECOGNITION).data.iso2022 = core.MayHaveEscapeRuns();
    }

    /// A section whose keyword has been read.
    template <auto RECOGNITION>
    static void BeginSection(Core& core) {
        Begin<RECOGNITION>(core);
        MoveText(&core.recognizers.genericTag.data.keyword, &(core.recognizers.*RECOGNITION).data.keyword);
    }

    /// A literal of a script or a style sheet.
    template <auto RECOGNITION>
    static void BeginLiteral(Core& core) {
        Begin<RECOGNITION>(core);
        (core.recognizers.*RECOGNITION).data.allowEscapes = true;
    }

    static void BeginDQuoteString(Core& core) {
        BeginLiteral<&R::dQuoteString>(core);
        core.recognizers.dQuoteString.data.allowEscape2022 = core.MayHaveEscapeRuns();
    }

    /// A construct whose recognizer either needs more input or completes one token.
    template <auto RECOGNITION>
    static std::uint32_t Parse(Core& core) {
        auto& [recognizer, data] = core.recognizers.*RECOGNITION;
        const std::uint32_t result = recognizer.Parse(&core.input.context, &data);
        if (result != SP_TOKEN_COMPLETE)
            return result;
        if (core.IsTooLong(0))
            return PARSER_LIMIT_EXCEEDED;
        Deliver(core, data);
        core.FinishToken();
        return SP_NEED_MORE_DATA;
    }

    template <auto RECOGNITION>
    static std::uint32_t End(Core& core) {
        auto& [recognizer, data] = core.recognizers.*RECOGNITION;
        const std::uint32_t result = recognizer.EndParse(&data);
        if (result == SP_TOKEN_COMPLETE)
            Deliver(core, data);
        return result;
    }

    static std::uint32_t EndUnfinished(Core&) {
        return PARSER_UNTERMINATED;
    }

    static std::uint32_t ParseGenericTag(Core& core) {
        const std::uint32_t result = core.recognizers.genericTag.Parse(&core.input.context);
        return result == SP_TOKEN_COMPLETE ? BeginNamed(core, core.recognizers.genericTag.data.nextParser) : result;
    }

    /// A line comment is delivered before the section that interrupts it starts.
    static std::uint32_t ParseCPPComment(Core& core) {
        auto& [recognizer, data] = core.recognizers.cppComment;
        const std::uint32_t result = recognizer.Parse(&core.input.context, &data);
        if (result != SP_TOKEN_COMPLETE)
            return result;
        // What looked like the opener of a section may have turned out to be none.
        if (core.IsTooLong(CountOpenerOfSection(data)))
            return PARSER_LIMIT_EXCEEDED;
        Deliver(core, data);
        core.FinishToken();
        if (data.nextParserName.empty())
            return SP_NEED_MORE_DATA;
        MoveText(&data.keyword, &core.recognizers.genericTag.data.keyword);
        return BeginNamed(core, data.nextParserName);
    }

    static std::uint32_t ParseJunk(Core& core) {
        auto& [recognizer, data] = core.recognizers.junk;
        const std::uint32_t result = recognizer.Parse(&core.input.context, &data);
        if (result != SP_TOKEN_COMPLETE)
            return result;
        if (!data.text.empty())
            Deliver(core, data);
        core.MarkTokenStart(0);
        if (!Scan::AtEnd(core.input.context))
            Scan::Advance(core.input.context);
        Construct<C, S>::Of(STATE_GENERIC_TAG).Begin(core);
        return SP_NEED_MORE_DATA;
    }

    static std::uint32_t EndJunk(Core& core) {
        auto& [recognizer, data] = core.recognizers.junk;
        const std::uint32_t result = recognizer.EndParse(&data);
        if (result == SP_TOKEN_COMPLETE && !data.text.empty())
            Deliver(core, data);
        return result;
    }

    static std::uint32_t BeginNamed(Core& core, WideStringView name) {
        const Construct<C, S>* const construct = Construct<C, S>::Find(name, Opener::TAG);
        if (construct == nullptr)
            return PARSER_UNKNOWN_RECOGNIZER;
        construct->BeginUnlessText(core);
        return SP_NEED_MORE_DATA;
    }

    static void Deliver(Core& core, const CommentTagSimpleParserData<C, S>& data) {
        core.Deliver(MakeRecord<CommentTagData>(data));
    }
    static void Deliver(Core& core, const CDATATagSimpleParserData<C, S>& data) {
        core.Deliver(MakeRecord<CDATATagData>(data));
    }
    static void Deliver(Core& core, const ConditionalTagSimpleParserData<C, S>& data) {
        core.Deliver(MakeRecord<ConditionalTagData>(data));
    }
    static void Deliver(Core& core, const EntityTagSimpleParserData<C, S>& data) {
        core.CountParts();
        core.Deliver(MakeRecord<EntityTagData>(data));
    }
    static void Deliver(Core& core, const ExternTagSimpleParserData<C, S>& data) {
        core.CountParts();
        core.Deliver(MakeRecord<ExternTagData>(data));
    }
    static void Deliver(Core& core, const CCommentSimpleParserData<C, S>& data) {
        core.Deliver(MakeRecord<CCommentData>(data));
    }
    /// A regular expression is text to an observer.
    static void Deliver(Core& core, const JSRegExSimpleParserData<C, S>& data) {
        core.Deliver(MakeRecord<TextData>(data));
    }
    static void Deliver(Core& core, const SQuoteStringSimpleParserData<C, S>& data) {
        core.Deliver(MakeRecord<SQuoteStringData>(data));
    }
    static void Deliver(Core& core, const DQuoteStringSimpleParserData<C, S>& data) {
        core.Deliver(MakeRecord<DQuoteStringData>(data));
    }
    static void Deliver(Core& core, const JunkSimpleParserData<C, S>& data) {
        core.Deliver(MakeRecord<JunkData>(data));
    }

    /// An 8-bit observer of the 8-bit parser gets no line comments (kept).
    static void Deliver(Core& core, const CPPCommentSimpleParserData<C, S>& data) {
        core.places.EndToken(core.input, CountOpenerOfSection(data));
        CPPCommentData<C, S> record = MakeRecord<CPPCommentData>(data);
        core.delivery.DeliverToSelfCheck(record);
        if (std::is_same_v<C, WideChar> || !core.delivery.HasNarrowObserver())
            core.delivery.DeliverToObserver(&record);
    }

    /// Characters that have been read of the section that interrupts a line comment: "<!--", or
    /// "<![" and its word.
    static std::uint64_t CountOpenerOfSection(const CPPCommentSimpleParserData<C, S>& data) {
        if (data.nextParserName.empty())
            return 0;
        return data.nextParserName == ParserNames::COMMENT_TAG ? 4 : 3 + data.keyword.size();
    }
};

// In the order of the states. The opening slash of a regular expression lies before its recorded
// start (kept). Each row: the state, who hands over to it, its name, characters back to its begin,
// what it is inside scripts (null: markup, as outside), whether it is open at the end of the input;
// how it begins, how a piece is parsed, how it ends.
// clang-format off
template <typename C, typename S>
const Construct<C, S> ConstructTable<C, S>::ROWS[] = {
    {STATE_TEXT, Opener::NONE, ParserNames::TEXT, 0, nullptr, false,
        nullptr, Plain::ParseText, Plain::EndText},
    {STATE_GENERIC_TAG, Opener::TEXT, ParserNames::GENERIC_TAG, 1, nullptr, true,
        Begin<&R::genericTag>, ParseGenericTag, EndUnfinished},
    {STATE_START_TAG, Opener::TAG, ParserNames::START_TAG, 0, "<", true,
        BeginTag<&R::startTag>, Plain::ParseStartTag, EndUnfinished},
    {STATE_COMMENT_TAG, Opener::TAG, ParserNames::COMMENT_TAG, 0, nullptr, false,
        Begin<&R::commentTag>, Parse<&R::commentTag>, End<&R::commentTag>},
    {STATE_CDATA_TAG, Opener::TAG, ParserNames::CDATA_TAG, 0, nullptr, false,
        BeginSection<&R::cdataTag>, Parse<&R::cdataTag>, End<&R::cdataTag>},
    {STATE_CONDITIONAL_TAG, Opener::TAG, ParserNames::CONDITIONAL_TAG, 0, nullptr, false,
        BeginSection<&R::conditionalTag>, Parse<&R::conditionalTag>, End<&R::conditionalTag>},
    {STATE_END_TAG, Opener::TAG, ParserNames::END_TAG, 0, nullptr, true,
        BeginTag<&R::endTag>, Plain::ParseEndTag, Plain::EndEndTag},
    {STATE_ENTITY_TAG, Opener::TAG, ParserNames::ENTITY_TAG, 0, "<!", true,
        BeginTag<&R::entityTag>, Parse<&R::entityTag>, End<&R::entityTag>},
    {STATE_EXTERN_TAG, Opener::TAG, ParserNames::EXTERN_TAG, 0, "<?", true,
        BeginTag<&R::externTag>, Parse<&R::externTag>, End<&R::externTag>},
    {STATE_C_COMMENT, Opener::TEXT, ParserNames::C_COMMENT, 2, nullptr, true,
        Begin<&R::cComment>, Parse<&R::cComment>, End<&R::cComment>},
    {STATE_CPP_COMMENT, Opener::TEXT, ParserNames::CPP_COMMENT, 2, nullptr, true,
        Begin<&R::cppComment>, ParseCPPComment, End<&R::cppComment>},
    {STATE_JS_REG_EX, Opener::TEXT, ParserNames::JS_REG_EX, 0, nullptr, false,
        BeginLiteral<&R::jsRegEx>, Parse<&R::jsRegEx>, End<&R::jsRegEx>},
    {STATE_S_QUOTE_STRING, Opener::TEXT, ParserNames::S_QUOTE_STRING, 1, nullptr, true,
        BeginLiteral<&R::sQuoteString>, Parse<&R::sQuoteString>, End<&R::sQuoteString>},
    {STATE_D_QUOTE_STRING, Opener::TEXT, ParserNames::D_QUOTE_STRING, 1, nullptr, true,
        BeginDQuoteString, Parse<&R::dQuoteString>, End<&R::dQuoteString>},
    {STATE_JUNK, Opener::NONE, ParserNames::JUNK, 0, nullptr, false,
        nullptr, ParseJunk, EndJunk},
    {STATE_RAW_TEXT, Opener::NONE, ParserNames::TEXT, 0, nullptr, false,
        nullptr, Plain::ParseRawText, Plain::EndRawText},
};
// clang-format on

}  // namespace

template <typename C, typename S>
auto Construct<C, S>::Of(ParserState wanted) -> const Construct& {
    return ConstructTable<C, S>::ROWS[wanted < STATE_C_COMMENT ? wanted : wanted - 1];
}

template <typename C, typename S>
auto Construct<C, S>::Find(WideStringView wanted, Opener by) -> const Construct* {
    for (const Construct& construct : ConstructTable<C, S>::ROWS) {
        if (construct.opener == by && IsSameName(construct.name, wanted))
            return &construct;
    }
    return nullptr;
}

KESTRA_HTML_INSTANTIATE_STRUCT(Construct);

}  // namespace Kestra::HTML
