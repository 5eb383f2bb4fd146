#include "tests/html/tables/StatelessMachines.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

#include "html/framework/RawTextElements.h"
#include "html/stateless/Comments.h"
#include "html/stateless/Content.h"
#include "html/stateless/Declarations.h"
#include "html/stateless/Machine.h"
#include "html/stateless/Scan.h"
#include "html/stateless/Tags.h"
#include "platform/Observable.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {

namespace {

using Data = HTML::StatelessHTMLParserData;
using HTML::RawTextElement;

constexpr char UNTOUCHED_BYTE = '\xFE';  // as `UNTOUCHED`

std::string FromCodes(const Codes& codes) {
    std::string bytes;
    for (const char16_t code : codes)
        bytes += static_cast<char>(code);
    return bytes;
}

Codes ToCodes(const std::string& bytes) {
    Codes codes;
    for (const char byte : bytes)
        codes += static_cast<unsigned char>(byte);
    return codes;
}

/// What a string has become that had `UNTOUCHED` in it, or was empty.
Codes ToField(const std::string& bytes) {
    const Codes codes = ToCodes(bytes);
    return codes.starts_with(UNTOUCHED) ? codes : UNTOUCHED + codes;
}

std::vector<Codes> AllBytes() {
    std::vector<Codes> symbols;
    for (char16_t code = 0; code < 256; ++code)
        symbols.emplace_back(1, code);
    return symbols;
}

bool IsSpaceByte(char16_t code) {
    return code == ' ' || (code >= 9 && code <= 13);
}

bool IsLetter(char16_t code) {
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z');
}

/// How a parser of a part is entered, run and looked at.
struct Part {
    std::function<void(Data*, std::uint32_t)> enter;
    std::function<std::uint32_t(Data&)> parse;
    std::function<std::uint32_t(const Data&)> getState;
    std::string Data::*field = nullptr;
    bool isFieldWithoutSlash = false;
};

struct Reading {
    Data data;
    std::uint32_t result;
    std::uint32_t state;
    std::size_t consumed;
};

Reading Read(const Part& part, std::uint32_t state, const std::string& bytes) {
    const HeapPiece<char> piece{std::string_view(bytes)};
    Reading reading;
    Data& data = reading.data;
    if (part.field != nullptr)
        data.*part.field = UNTOUCHED_BYTE;
    part.enter(&data, state);
    data.cursor = reinterpret_cast<const unsigned char*>(piece.Data());
    data.length = bytes.size();
    reading.result = part.parse(data);
    reading.state = part.getState(data);
    reading.consumed = static_cast<std::size_t>(HTML::Stateless::GetOffset(data));
    reading.consumed = std::min(reading.consumed, bytes.size());
    return reading;
}

/// A table says what each byte does, however the input is cut; what a cut changes is a row of other
/// tests. So the input is one piece. It completes a construct when it does so whatever follows.
TableOutcome RunPart(const Part& part, const TableInput& input) {
    std::string bytes;
    for (const std::vector<Codes>& piece : input.pieces) {
        for (const Codes& symbol : piece)
            bytes += FromCodes(symbol);
    }
    Reading alone = Read(part, input.state, bytes);
    bool isComplete = true;
    for (const char following : std::string_view("a=>' /?-<"))
        isComplete = isComplete && Read(part, input.state, bytes + following).result == HTML::STATELESS_OK &&
                     Read(part, input.state, bytes + following).data.position <= bytes.size();
    if (isComplete)
        alone = Read(part, input.state, bytes + "a");
    TableOutcome outcome;
    if (isComplete)
        outcome.result = 19;
    else if (alone.result != HTML::STATELESS_OK && alone.result != HTML::STATELESS_NEED_MORE_DATA)
        outcome.result = alone.result;
    outcome.consumed = alone.consumed;
    outcome.state = alone.state;
    if (part.field != nullptr) {
        std::string text = alone.data.*part.field;
        if (part.isFieldWithoutSlash && outcome.state == 1)
            text.pop_back();
        outcome.fields["text"] = ToField(text);
    }
    return outcome;
}

TableMachine MakeMachine(Part part, std::uint32_t textStates) {
    TableMachine machine;
    machine.note = "8-bit";
    for (std::uint32_t state = 0; state < textStates; ++state)
        machine.fields[state] = {"text", false};
    if (textStates > 0)
        machine.fieldNames = {"text"};
    machine.symbols = AllBytes();
    machine.isSpace = IsSpaceByte;
    machine.run = [part = std::move(part)](const TableInput& input) { return RunPart(part, input); };
    return machine;
}

TableMachine MakeNames() {
    TableMachine machine =
        MakeMachine({[](Data* data, std::uint32_t state) {
                         if (state == 0)
                             data->identifier.clear();
                     },
                     HTML::Stateless::ParseIdentifier,
                     [](const Data& data) { return data.identifier.empty() ? 0U : 1U; }, &Data::identifier},
                    2);
    machine.classify = [](const TablePlace&, const Codes& symbol) -> std::string {
        if (IsLetter(symbol[0]))
            return "letter, \"_\"";
        return symbol[0] >= '0' && symbol[0] <= '9' ? "digit, \":\", \"-\"" : "";
    };
    return machine;
}

TableMachine MakeValues() {
    return MakeMachine({[](Data* data, std::uint32_t state) { data->valueState = state; }, HTML::Stateless::ParseValue,
                        [](const Data& data) { return data.valueState; }, &Data::value},
                       4);
}

TableMachine MakeAttributes() {
    return MakeMachine({[](Data* data, std::uint32_t state) {
                            HTML::Stateless::InitAttrParser(*data);
                            HTML::Stateless::InitValueParser(*data);
                            data->attributeState = state;
                        },
                        HTML::Stateless::ParseAttr, [](const Data& data) { return data.attributeState; }},
                       0);
}

TableMachine MakeStartTags() {
    return MakeMachine({[](Data* data, std::uint32_t state) {
                            HTML::Stateless::InitStartTagParser(*data);
                            HTML::Stateless::InitAttrsParser(*data);
                            data->startTagState = state;
                        },
                        HTML::Stateless::ParseStartTag, [](const Data& data) { return data.startTagState; }},
                       0);
}

TableMachine MakeEndTags() {
    return MakeMachine({[](Data* data, std::uint32_t state) {
                            HTML::Stateless::InitEndTagParser(*data);
                            data->endTagState = state;
                        },
                        HTML::Stateless::ParseEndTag, [](const Data& data) { return data.endTagState; }},
                       0);
}

TableMachine MakeDeclarations() {
    return MakeMachine({[](Data* data, std::uint32_t state) {
                            HTML::Stateless::InitEntityTagParser(*data);
                            HTML::Stateless::InitValueParser(*data);
                            data->entityTagState = state;
                        },
                        HTML::Stateless::ParseEntityTag, [](const Data& data) { return data.entityTagState; }},
                       0);
}

TableMachine MakeInstructions() {
    return MakeMachine({[](Data* data, std::uint32_t state) {
                            HTML::Stateless::InitExternTagParser(*data);
                            HTML::Stateless::InitAttrsParser(*data);
                            data->externTagState = state == 4 ? 2 : state;
                            data->lastByte = state == 4 ? '?' : 0;
                        },
                        HTML::Stateless::ParseExternTag,
                        [](const Data& data) {
                            const bool isAfterOther = data.externTagState == 2 && HTML::Stateless::IsAfter(data, '?');
                            return isAfterOther ? 4U : data.externTagState;
                        }},
                       0);
}

TableMachine MakeComments() {
    return MakeMachine(
        {[](Data* data, std::uint32_t state) { data->commentState = state; }, HTML::Stateless::ParseCommentTag,
         [](const Data& data) { return data.commentState; }, &Data::identifier},
        3);
}

/// Some states of the table are one of the machine and the byte before.
TableMachine MakeScripts() {
    TableMachine machine =
        MakeMachine({[](Data* data, std::uint32_t state) {
                         const std::uint32_t states[] = {0, 0, 2, 3, 4, 5, 6, 2, 4, 5};
                         data->scriptState = states[state];
                         data->scriptPrevious = state == 7 ? '*' : state > 7 ? '\\' : ' ';
                         data->scriptEnd = "<";
                         if (state == 1)
                             data->text += '/';
                     },
                     HTML::Stateless::ParseScriptTag,
                     [](const Data& data) -> std::uint32_t {
                         if (data.scriptState == 0)
                             return data.text.ends_with('/') ? 1 : 0;
                         if (data.scriptState == 2)
                             return data.scriptPrevious == '*' ? 7 : 2;
                         if (data.scriptState == 4 || data.scriptState == 5)
                             return data.scriptPrevious == '\\' ? data.scriptState + 4 : data.scriptState;
                         return data.scriptState;
                     },
                     &Data::text, true},
                    10);
    machine.classify = [](const TablePlace&, const Codes& symbol) -> std::string {
        return symbol == u"\r" || symbol == u"\n" ? "line break" : "";
    };
    return machine;
}

TableMachine MakeStyleSheets() {
    return MakeMachine({[](Data* data, std::uint32_t state) { data->styleState = state; },
                        HTML::Stateless::ParseStyleTag, [](const Data& data) { return data.styleState; }, &Data::text},
                       2);
}

std::string ClassifyContent(bool isScript, const TablePlace& place, const Codes& symbol) {
    const auto isOne = [&](std::initializer_list<std::u16string_view> symbols) {
        return std::find(symbols.begin(), symbols.end(), symbol) != symbols.end();
    };
    if (isOne({u"</style>", u"</style "}))
        return isScript ? "other" : "\"</script\"";
    if (!isScript)
        return "other";
    if (symbol == u"<!--")
        return "\"<!--\"";
    if (isOne({u"<script>", u"<SCRIPT ", u"<script/"}))
        return "\"<script\"";
    if (isOne({u"</script>", u"</Script\n", u"</script/"}))
        return "\"</script\"";
    return symbol.ends_with(u'>') && (place.gathered + symbol).ends_with(u"-->") ? "\">\" after \"--\"" : "other";
}

TableMachine MakeContents(bool isScript) {
    TableMachine machine = MakeMachine(
        {[isScript](Data* data, std::uint32_t state) {
             data->rawElement = static_cast<std::uint32_t>(isScript ? RawTextElement::SCRIPT : RawTextElement::STYLE);
             data->rawTextState = state;
         },
         HTML::Stateless::ParseRawText, [](const Data& data) { return data.rawTextState; }, &Data::text},
        3);
    machine.note = isScript ? "a script" : "a style sheet";
    machine.symbols = {u"<!--",      u"<script>",   u"<SCRIPT ",  u"<script/",   u"</script>", u"</Script\n",
                       u"</script/", u"-->",        u">",         u"a",          u"-",         u"--",
                       u"<b>",       u"</b>",       u"</style>",  u"</style ",   u"<!-x",      u"<!->",
                       u"<scripts>", u"</scripts>", u"<script\v", u"</script\v", u" ",         u"\n"};
    machine.classify = [isScript](const TablePlace& place, const Codes& symbol) {
        return ClassifyContent(isScript, place, symbol);
    };
    if (!isScript)
        machine.states = {0};
    return machine;
}

class TextObserver final : public HTML::StatelessHTMLObserver {
public:
    void OnText(const WideChar* text) override {
        for (; *text != 0; ++text)
            all += static_cast<char16_t>(*text);
    }

    Codes all;
};

/// The main machine. What is complete goes on with text, so nothing completes the input.
TableOutcome RunMain(const TableInput& input) {
    std::string bytes;
    for (const std::vector<Codes>& piece : input.pieces) {
        for (const Codes& symbol : piece)
            bytes += FromCodes(symbol);
    }
    const HeapPiece<char> piece{std::string_view(bytes)};
    TextObserver observer;
    Base::MultiDelegate delegate;
    observer.RegisterCalls(&delegate);
    StringNS::CharSetConverter converter;
    Data data;
    data.started = true;
    data.charset = 28591;  // every byte is a character
    data.flags = 0;
    data.isBrowsersName = true;
    data.rawElement = static_cast<std::uint32_t>(RawTextElement::TITLE);
    HTML::Stateless::InitExternTagParser(data);
    HTML::Stateless::InitEndTagParser(data);
    HTML::Stateless::InitStartTagParser(data);
    HTML::Stateless::InitEntityTagParser(data);
    HTML::Stateless::InitCommentTagParser(data);
    HTML::Stateless::InitScriptTagParser(data);
    HTML::Stateless::InitStyleTagParser(data);
    data.state = input.state;
    data.cursor = reinterpret_cast<const unsigned char*>(piece.Data());
    data.length = bytes.size();
    TableOutcome outcome;
    const std::uint32_t result = HTML::Stateless::Machine(&data, &delegate, &converter).Run();
    if (result != HTML::STATELESS_OK && result != HTML::STATELESS_NEED_MORE_DATA)
        outcome.result = result;
    outcome.consumed = static_cast<std::size_t>(HTML::Stateless::GetOffset(data));
    outcome.state = data.state;
    outcome.fields["text"] = UNTOUCHED + observer.all;
    if (data.state == HTML::Stateless::STATE_TEXT || data.state == HTML::Stateless::STATE_RAW_TEXT)
        outcome.fields["text"] += ToCodes(data.text);
    return outcome;
}

TableMachine MakeMain() {
    TableMachine machine = MakeMachine({}, 0);
    machine.fields = {{0, {"text", false}}, {11, {"text", false}}};
    machine.fieldNames = {"text"};
    machine.symbols.erase(machine.symbols.begin());  // an observer sees a text up to its first NUL
    machine.run = [](const TableInput& input) { return RunMain(input); };
    machine.classify = [](const TablePlace&, const Codes& symbol) {
        return IsLetter(symbol[0]) ? "letter, \"_\"" : "";
    };
    return machine;
}

}  // namespace

std::vector<StatelessTable> MakeStatelessTables() {
    return {
        {"html/stateless/Comments.cpp", 0, {MakeComments()}},
        {"html/stateless/Content.cpp", 0, {MakeScripts()}},
        {"html/stateless/Content.cpp", 1, {MakeStyleSheets()}},
        {"html/stateless/Content.cpp", 2, {MakeContents(true), MakeContents(false)}},
        {"html/stateless/Declarations.cpp", 0, {MakeDeclarations()}},
        {"html/stateless/Declarations.cpp", 1, {MakeInstructions()}},
        {"html/stateless/Machine.cpp", 0, {MakeMain()}},
        {"html/stateless/Tags.cpp", 0, {MakeNames()}},
        {"html/stateless/Tags.cpp", 1, {MakeValues()}},
        {"html/stateless/Tags.cpp", 2, {MakeAttributes()}},
        {"html/stateless/Tags.cpp", 3, {MakeStartTags()}},
        {"html/stateless/Tags.cpp", 4, {MakeEndTags()}},
    };
}

}  // namespace Kestra::Test
