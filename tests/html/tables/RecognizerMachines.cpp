#include "tests/html/tables/RecognizerMachines.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "html/framework/ParserNames.h"
#include "html/tags/AttributeSimpleParser.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagFreeStyleSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/GenericTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/tags/TokenSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/Escape2022SimpleParser.h"
#include "html/text/RawText.h"
#include "html/text/TextSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

constexpr char16_t ESC = 27;

struct RecognizerName {
    const char* word;
    WideStringView name;
};

/// The words of the tables for what is handed over to.
const RecognizerName RECOGNIZER_NAMES[] = {
    {"tag", HTML::ParserNames::GENERIC_TAG},         {"start tag", HTML::ParserNames::START_TAG},
    {"end tag", HTML::ParserNames::END_TAG},         {"comment", HTML::ParserNames::COMMENT_TAG},
    {"section", HTML::ParserNames::CDATA_TAG},       {"conditional", HTML::ParserNames::CONDITIONAL_TAG},
    {"declaration", HTML::ParserNames::ENTITY_TAG},  {"instruction", HTML::ParserNames::EXTERN_TAG},
    {"block comment", HTML::ParserNames::C_COMMENT}, {"line comment", HTML::ParserNames::CPP_COMMENT},
    {"expression", HTML::ParserNames::JS_REG_EX},    {"single", HTML::ParserNames::S_QUOTE_STRING},
    {"double", HTML::ParserNames::D_QUOTE_STRING},
};

std::string WordFor(const WideString& name) {
    for (const RecognizerName& recognizer : RECOGNIZER_NAMES) {
        if (name == recognizer.name)
            return recognizer.word;
    }
    return "a recognizer without a word";
}

template <typename S>
S FromCodes(const Codes& codes) {
    S text;
    for (const char16_t code : codes)
        text.push_back(static_cast<typename S::value_type>(code));
    return text;
}

template <typename S>
Codes ToCodes(const S& text) {
    Codes codes;
    for (const auto character : text) {
        if constexpr (sizeof(character) == 1)
            codes.push_back(static_cast<unsigned char>(character));
        else
            codes.push_back(static_cast<char16_t>(character));
    }
    return codes;
}

/// Every character of the 8-bit flavour; of the other one also some whose low or high byte is that
/// of a character that counts.
template <typename C>
std::vector<Codes> AllCharacters() {
    std::vector<Codes> symbols;
    for (char16_t code = 0; code < 256; ++code)
        symbols.emplace_back(1, code);
    if constexpr (sizeof(C) > 1) {
        // The first five are white space, but for 0x0120.
        for (const char16_t code :
             u"\u0120\u2000\u2028\u205F\u3000\u012D\u2D00\u013C\u3C00\u013E\u3E00\u015D\u5D00\u012F\u2F00\u0122"
             u"\u0127\u012A\u013F\u011B\u010A\u0A00\uFFFF"sv)
            symbols.emplace_back(1, code);
    }
    return symbols;
}

/// How a recognizer is looked at.
template <typename C, typename S, typename P>
struct View {
    std::map<std::string, S P::Data::*> fields;
    std::function<void(typename P::Data*)> prepare;
    std::function<void(const typename P::Data&, std::set<std::string>*)> readWords;
    std::function<S(const typename P::Data&)> readParts = {};  // attributes or items
};

template <typename C, typename S, typename P>
TableOutcome RunRecognizerFrom(const View<C, S, P>& view, const TableInput& input) {
    P parser;
    typename P::Data data;
    parser.BeginParse(&data);
    if (view.prepare)
        view.prepare(&data);
    data.state = input.state;
    for (const auto& [name, field] : view.fields)
        data.*field = FromCodes<S>(UNTOUCHED);
    TableOutcome outcome;
    for (const std::vector<Codes>& symbols : input.pieces) {
        Codes codes;
        for (const Codes& symbol : symbols)
            codes += symbol;
        const S text = FromCodes<S>(codes);
        const HeapPiece<C> piece{std::basic_string_view<C>(text)};
        HTML::SimpleParserContext<C, S> context;
        context.buffer = piece.Data();
        context.length = piece.Size();
        std::size_t calls = 0;
        while (outcome.result == HTML::SP_NEED_MORE_DATA && context.position < context.length &&
               ++calls <= 2 * text.size() + 2)
            outcome.result = parser.Parse(&context, &data);
        outcome.consumed += static_cast<std::size_t>(context.position);
    }
    if (input.endOfInput && outcome.result == HTML::SP_NEED_MORE_DATA)
        outcome.result = parser.EndParse(&data);
    outcome.state = data.state;
    for (const auto& [name, field] : view.fields)
        outcome.fields[name] = ToCodes(data.*field);
    if (view.readParts)
        outcome.fields["parts"] = UNTOUCHED + ToCodes(view.readParts(data));
    if (view.readWords)
        view.readWords(data, &outcome.words);
    return outcome;
}

/// The attributes as they were written, more or less.
template <typename S, typename Data>
S JoinAttributes(const Data& data) {
    S joined;
    for (const auto& attribute : data.attributes) {
        joined += attribute.prefix + attribute.name + attribute.beforeEquals;
        if (attribute.hasValue)
            joined += S(1, '=') + attribute.afterEquals + attribute.value;
    }
    return joined;
}

/// The same text field for so many states.
std::map<std::uint32_t, TableField> GrowingText(std::uint32_t states) {
    std::map<std::uint32_t, TableField> fields;
    for (std::uint32_t state = 0; state < states; ++state)
        fields[state] = {"text", false};
    return fields;
}

/// Whether the data of a recognizer that hands over names one.
template <typename Data>
void ReadNextName(const Data& data, std::set<std::string>* words) {
    if (!data.nextParserName.empty())
        words->insert(WordFor(data.nextParserName));
}

template <typename Data>
void ReadOpen(const Data& data, std::set<std::string>* words) {
    if (!data.closed)
        words->insert("open");
}

template <typename C, typename S>
class Maker {
public:
    explicit Maker(std::map<std::string, std::vector<TableMachine>>* allMachines) : machines(allMachines) {}

    void MakeAll() {
        MakeSections();
        MakeScriptParts();
        MakeText();
        MakeRawText();
        MakeParts();
        MakeTags();
    }

private:
    /// A machine for the recognizer of that name, in `html/text/` or `html/tags/`.
    template <typename P>
    TableMachine& Add(const std::string& source, const std::string& note, std::map<std::uint32_t, TableField> fields,
                      View<C, S, P> view) {
        TableMachine machine;
        machine.note = (sizeof(C) == 1 ? "8-bit" : "16-bit") + (note.empty() ? ""s : ", " + note);
        machine.fields = std::move(fields);
        machine.symbols = AllCharacters<C>();
        machine.isSpace = [](char16_t code) { return IsSpace(static_cast<C>(code)); };
        for (const RecognizerName& recognizer : RECOGNIZER_NAMES)
            machine.recognizers.insert(recognizer.word);
        machine.words = {"open", "no bracket"};
        for (const auto& [name, field] : view.fields)
            machine.fieldNames.insert(name);
        if (view.readParts)
            machine.fieldNames.insert("parts");
        machine.run = [view = std::move(view)](const TableInput& input) { return RunRecognizerFrom(view, input); };
        std::vector<TableMachine>& ofSource = (*machines)[source];
        ofSource.push_back(std::move(machine));
        return ofSource.back();
    }

    template <template <typename, typename> class P>
    using ViewOf = View<C, S, P<C, S>>;

    template <template <typename, typename> class P>
    using DataOf = typename P<C, S>::Data;

    void MakeSections() {
        using Comment = DataOf<HTML::CommentTagSimpleParser>;
        Add("html/text/CommentTagSimpleParser.cpp", "", GrowingText(3),
            ViewOf<HTML::CommentTagSimpleParser>{{{"text", &Comment::text}}, {}, ReadOpen<Comment>});
        using Section = DataOf<HTML::CDATATagSimpleParser>;
        Add("html/text/CDATATagSimpleParser.cpp", "", GrowingText(3),
            ViewOf<HTML::CDATATagSimpleParser>{{{"text", &Section::text}}, {}, ReadOpen<Section>});
        using Conditional = DataOf<HTML::ConditionalTagSimpleParser>;
        Add("html/text/ConditionalTagSimpleParser.cpp", "", {{0, {"condition", false}}, {1, {"tail", false}}},
            ViewOf<HTML::ConditionalTagSimpleParser>{
                {{"condition", &Conditional::condition}, {"tail", &Conditional::tail}},
                {},
                [](const Conditional& data, std::set<std::string>* words) {
                    if (!data.tagClosed)
                        words->insert("open");
                    if (!data.bracketClosed)
                        words->insert("no bracket");
                }});
    }

    void MakeScriptParts() {
        using Block = DataOf<HTML::CCommentSimpleParser>;
        Add("html/text/CCommentSimpleParser.cpp", "", {{0, {"text", false}}, {2, {"text", false}}},
            ViewOf<HTML::CCommentSimpleParser>{{{"text", &Block::text}}, {}, ReadNextName<Block>});
        using Line = DataOf<HTML::CPPCommentSimpleParser>;
        Add("html/text/CPPCommentSimpleParser.cpp", "", GrowingText(2),
            ViewOf<HTML::CPPCommentSimpleParser>{{{"text", &Line::text}}, {}, ReadNextName<Line>});
        using String = DataOf<HTML::DQuoteStringSimpleParser>;
        Add("html/text/DQuoteStringSimpleParser.cpp", "with escape runs", GrowingText(2),
            ViewOf<HTML::DQuoteStringSimpleParser>{
                {{"text", &String::text}}, [](String* data) { data->allowEscape2022 = true; }, {}});
        Add("html/text/DQuoteStringSimpleParser.cpp", "without", GrowingText(2),
            ViewOf<HTML::DQuoteStringSimpleParser>{{{"text", &String::text}}, {}, {}})
            .ignoredHeads = {"ESC"};
        using Escape = DataOf<HTML::Escape2022SimpleParser>;
        TableMachine& escape = Add("html/text/Escape2022SimpleParser.cpp", "", GrowingText(3),
                                   ViewOf<HTML::Escape2022SimpleParser>{{{"text", &Escape::text}}, {}, {}});
        escape.held = {{0, Codes(1, ESC)}, {2, Codes(1, ESC)}};
        escape.classify = ClassifyEscape;
        for (const std::vector<Codes>* sequences : {&OpeningSequences(), &ClosingSequences()}) {
            for (const Codes& sequence : *sequences) {
                std::vector<Codes> symbols = {Codes(1, ESC)};
                for (const char16_t code : sequence + u"a")
                    symbols.emplace_back(1, code);
                escape.sequences.push_back(symbols);
                symbols.erase(symbols.begin());
                escape.sequences.push_back(symbols);
                symbols.pop_back();
                escape.sequences.push_back(symbols);
            }
        }
    }

    static const std::vector<Codes>& OpeningSequences() {
        static const std::vector<Codes> sequences = {u"$@",  u"$B",  u"$A",  u"$(",  u"$)C", u"$)A", u"$)G",
                                                     u"$*H", u"$)E", u"$+I", u"$+J", u"$+K", u"$+L", u"$+M"};
        return sequences;
    }

    static const std::vector<Codes>& ClosingSequences() {
        static const std::vector<Codes> sequences = {u"(B", u"(J", u".F", u".A", u"(I"};
        return sequences;
    }

    static std::string ClassifyEscape(const TablePlace& place, const Codes& symbol) {
        if (place.state == 1)
            return {};
        const Codes read = place.held.substr(std::min<std::size_t>(place.held.size(), 1)) + symbol;
        std::string found = "no such sequence";
        for (const Codes& sequence : place.state == 0 ? OpeningSequences() : ClosingSequences()) {
            if (sequence == read)
                return "sequence complete";
            if (sequence.starts_with(read))
                found = "sequence begun";
        }
        return found;
    }

    void MakeText() {
        using Text = DataOf<HTML::TextSimpleParser>;
        const auto add = [&](const char* note, std::function<void(Text*)> prepare) -> TableMachine& {
            TableMachine& machine =
                Add("html/text/TextSimpleParser.cpp", note, GrowingText(3),
                    ViewOf<HTML::TextSimpleParser>{{{"text", &Text::text}}, std::move(prepare), ReadNextName<Text>});
            if (sizeof(C) > 1)
                machine.ignoredHeads.insert("ESC");
            return machine;
        };
        const auto allowAll = [](Text* data) {
            data->allowCComment = true;
            data->allowCPPComment = true;
            data->allowSQuoteString = true;
            data->allowDQuoteString = true;
            data->allowJSRegEx = true;
            data->allowEscape2022 = true;
        };
        add("all of a script", allowAll).rowNames = {{1, "\"/\", RegEx"}};
        add("without expressions", [allowAll](Text* data) {
            allowAll(data);
            data->allowJSRegEx = false;
        }).rowNames = {{1, "\"/\", none"}};
        TableMachine& markup = add("markup alone", [](Text* data) { data->allowJSRegEx = true; });
        markup.ignoredHeads = {"\"'\"", "'\"'", "\"/\"", "\"*\"", "ESC"};
        markup.rowNames = {{1, "\"/\", RegEx"}};
        TableMachine& blocks = add("block comments", [](Text* data) { data->allowCComment = true; });
        blocks.ignoredHeads = {"\"'\"", "'\"'", "ESC"};
        blocks.ignoredIn[1] = {"\"/\""};
        blocks.rowNames = {{1, "\"/\", none"}};
        TableMachine& lines = add("line comments", [](Text* data) { data->allowCPPComment = true; });
        lines.ignoredHeads = {"\"'\"", "'\"'", "ESC"};
        lines.ignoredIn[1] = {"\"*\""};
        lines.rowNames = {{1, "\"/\", none"}};
        TableMachine& escapes = add("markup and escape runs", [](Text* data) { data->allowEscape2022 = true; });
        escapes.ignoredHeads.insert({"\"'\"", "'\"'", "\"/\"", "\"*\""});
        escapes.rowNames = {{1, "\"/\", none"}};
    }

    void MakeRawText() {
        for (const bool isScript : {true, false}) {
            TableMachine machine;
            machine.note = (sizeof(C) == 1 ? "8-bit, "s : "16-bit, "s) + (isScript ? "a script" : "a style sheet");
            machine.fields = GrowingText(3);
            const Codes name = isScript ? u"script" : u"style";
            machine.symbols = {u"<!--",      u"<script>",   u"<SCRIPT ", u"<script/", u"</script>", u"</Script\n",
                               u"</script/", u"-->",        u"<!--->",   u">",        u"a",         u"-",
                               u"--",        u"<b>",        u"</b>",     u"</style>", u"</style ",  u"<!-x",
                               u"<scripts>", u"</scripts>", u" ",        u"\n",       u"<!-->"};
            machine.isSpace = [](char16_t code) { return IsSpace(static_cast<C>(code)); };
            machine.classify = [isScript](const TablePlace& place, const Codes& symbol) {
                return ClassifyRaw(isScript, place, symbol);
            };
            if (!isScript)
                machine.states = {0};
            machine.statesEndAtTable = false;
            machine.fieldNames = {"text"};
            machine.run = [isScript](const TableInput& input) { return RunRawText(isScript, input); };
            (*machines)["html/text/RawText.cpp"].push_back(std::move(machine));
        }
    }

    static std::string ClassifyRaw(bool isScript, const TablePlace& place, const Codes& symbol) {
        if (symbol == u"</style>" || symbol == u"</style ")
            return isScript ? "other" : "\"</script\"";
        if (!isScript)
            return "other";
        if (symbol == u"<!--")
            return "\"<!--\"";
        if (symbol == u"<script>" || symbol == u"<SCRIPT " || symbol == u"<script/")
            return "\"<script\"";
        if (symbol == u"</script>" || symbol == u"</Script\n" || symbol == u"</script/")
            return "\"</script\"";
        if (symbol.ends_with(u'>') && (place.gathered + symbol).ends_with(u"-->"))
            return "\">\" after \"--\"";
        return "other";
    }

    using Raw = HTML::RawText<C, S>;

    /// @return true when it ends; then the characters before the end tag
    static bool ReadRawText(Raw* raw, const Codes& codes, S* text, std::size_t* consumed) {
        const S input = FromCodes<S>(codes);
        const HeapPiece<C> piece{std::basic_string_view<C>(input)};
        HTML::SimpleParserContext<C, S> context;
        context.buffer = piece.Data();
        context.length = piece.Size();
        std::basic_string_view<C> run;
        const bool ended = raw->Read(&context, text, &run);
        text->append(run);
        *consumed += static_cast<std::size_t>(context.position);
        return ended;
    }

    /// The state cannot be looked at. Which one it is shows by what ends the content.
    static std::uint32_t FindRawState(const Raw& raw, const S& text) {
        const auto ends = [&](const Codes& codes) {
            Raw copy = raw;
            S more = text;
            std::size_t consumed = 0;
            return ReadRawText(&copy, codes, &more, &consumed);
        };
        if (!ends(u"</script>"))
            return 2;
        return ends(u"<script></script>") ? 0 : 1;
    }

    static TableOutcome RunRawText(bool isScript, const TableInput& input) {
        Raw raw;
        raw.Begin(isScript ? HTML::RawTextElement::SCRIPT : HTML::RawTextElement::STYLE, false);
        S text;
        std::size_t ignored = 0;
        const Codes approach = input.state == 0 || !isScript ? u"" : input.state == 1 ? u"<!--x" : u"<!--<script>";
        TableOutcome outcome;
        if (ReadRawText(&raw, approach, &text, &ignored))
            outcome.trouble = "the approach ends the content";
        const std::size_t before = text.size();
        bool ended = false;
        for (const std::vector<Codes>& symbols : input.pieces) {
            Codes codes;
            for (const Codes& symbol : symbols)
                codes += symbol;
            if (!ended)
                ended = ReadRawText(&raw, codes, &text, &outcome.consumed);
        }
        outcome.result = ended ? 19 : 0;
        outcome.state = isScript ? FindRawState(raw, text) : input.state;
        outcome.fields["text"] = UNTOUCHED + ToCodes(text).substr(before);
        return outcome;
    }

    void MakeParts() {
        using Generic = DataOf<HTML::GenericTagSimpleParser>;
        Add("html/tags/GenericTagSimpleParser.cpp", "", {},
            ViewOf<HTML::GenericTagSimpleParser>{{}, {}, [](const Generic& data, std::set<std::string>* words) {
                                                     if (!data.nextParser.empty())
                                                         words->insert(WordFor(data.nextParser));
                                                 }});
        using Token = DataOf<HTML::TokenSimpleParser>;
        Add("html/tags/TokenSimpleParser.cpp", "",
            {{0, {"prefix", true}}, {2, {"value", false}}, {3, {"value", true}}, {4, {"value", true}}},
            ViewOf<HTML::TokenSimpleParser>{{{"prefix", &Token::prefix}, {"value", &Token::value}}, {}, {}});
        using Attribute = DataOf<HTML::AttributeSimpleParser>;
        Add("html/tags/AttributeSimpleParser.cpp", "",
            {{0, {"prefix", true}}, {1, {"name", true}}, {2, {"beforeEquals", true}}},
            ViewOf<HTML::AttributeSimpleParser>{{{"prefix", &Attribute::prefix},
                                                 {"name", &Attribute::name},
                                                 {"beforeEquals", &Attribute::beforeEquals},
                                                 {"afterEquals", &Attribute::afterEquals},
                                                 {"value", &Attribute::value}},
                                                {},
                                                {}});
        using FreeStyle = DataOf<HTML::ExternTagFreeStyleSimpleParser>;
        Add("html/tags/ExternTagFreeStyleSimpleParser.cpp", "", GrowingText(8),
            ViewOf<HTML::ExternTagFreeStyleSimpleParser>{{{"text", &FreeStyle::text}}, {}, {}});
    }

    void MakeTags() {
        using Start = DataOf<HTML::StartTagSimpleParser>;
        Add("html/tags/StartTagSimpleParser.cpp", "", {{0, {"prefix", true}}, {1, {"name", true}}},
            ViewOf<HTML::StartTagSimpleParser>{
                {{"prefix", &Start::prefix}, {"name", &Start::name}, {"suffix", &Start::suffix}},
                {},
                ReadOpen<Start>,
                JoinAttributes<S, Start>});
        using End = DataOf<HTML::EndTagSimpleParser>;
        Add("html/tags/EndTagSimpleParser.cpp", "",
            {{0, {"prefix", true}}, {1, {"name", true}}, {2, {"afterName", true}}},
            ViewOf<HTML::EndTagSimpleParser>{{{"prefix", &End::prefix},
                                              {"name", &End::name},
                                              {"afterName", &End::afterName},
                                              {"suffix", &End::suffix}},
                                             {},
                                             ReadOpen<End>,
                                             JoinAttributes<S, End>});
        using Entity = DataOf<HTML::EntityTagSimpleParser>;
        Add("html/tags/EntityTagSimpleParser.cpp", "", {{0, {"prefix", true}}, {1, {"name", true}}},
            ViewOf<HTML::EntityTagSimpleParser>{
                {{"prefix", &Entity::prefix}, {"name", &Entity::name}, {"suffix", &Entity::suffix}},
                {},
                {},
                [](const Entity& data) {
                    S joined;
                    for (const auto& item : data.tokens)
                        joined += item.prefix + item.value;
                    return joined;
                }});
        using Extern = DataOf<HTML::ExternTagSimpleParser>;
        TableMachine& instruction =
            Add("html/tags/ExternTagSimpleParser.cpp", "", {{0, {"prefix", true}}, {1, {"name", true}}},
                ViewOf<HTML::ExternTagSimpleParser>{
                    {{"prefix", &Extern::prefix}, {"name", &Extern::name}, {"suffix", &Extern::suffix}},
                    {},
                    {},
                    JoinAttributes<S, Extern>});
        // Targets of an XML declaration are "xml" and what begins with "xml:" or "xml-".
        instruction.symbols.push_back(u"xml");
        instruction.symbols.push_back(u"Xml-a");
        instruction.symbols.push_back(u"xml:");
        instruction.symbols.push_back(u"xmlx");
        for (const char16_t* next : {u" ", u">", u"=", u"<"})
            instruction.sequences.push_back({u"xml", next});
        instruction.choosesFirst = [](const Codes& target) {
            return target == u"xml" || target == u"Xml-a" || target.starts_with(u"xml:") || target.starts_with(u"xml-");
        };
    }

    std::map<std::string, std::vector<TableMachine>>* machines;
};

}  // namespace

std::map<std::string, std::vector<TableMachine>> MakeRecognizerMachines() {
    std::map<std::string, std::vector<TableMachine>> machines;
    Maker<Narrow::C, Narrow::S>(&machines).MakeAll();
    Maker<Wide::C, Wide::S>(&machines).MakeAll();
    return machines;
}

}  // namespace Kestra::Test
