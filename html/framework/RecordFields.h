#pragma once

#include <cstdint>
#include <tuple>

#include "html/framework/ParserObserver.h"
#include "html/framework/RecordFieldTypes.h"
#include "html/framework/TokenKind.h"
#include "html/framework/TokenRecords.h"

/// @file
/// The one list of the kinds of tokens and of the fields of records: one line a kind, and one line
/// a field, in the order of the memory. It is followed by the conversion between the flavours, the
/// trace and the JSON of the tool, the observers that treat all kinds alike, and the tests of
/// layouts, of copies and of what `BeginParse` clears. Not installed.
///
/// A new field needs a line here; a new kind a line and the list of its fields.

// clang-format off

/// The kinds of tokens, in the order of `TokenKind`: `X(NAME, RECORD, WORD)` for the operation
/// `On##NAME` of an observer, its record, and the word of the kind in the trace language.
#define KESTRA_HTML_FOR_EACH_KIND(X)                     \
    X(Text, TextData, "text")                            \
    X(CComment, CCommentData, "c-comment")               \
    X(CPPComment, CPPCommentData, "cpp-comment")         \
    X(SQuoteString, SQuoteStringData, "s-string")        \
    X(DQuoteString, DQuoteStringData, "d-string")        \
    X(StartTag, StartTagData, "start")                   \
    X(ShortTag, ShortTagData, "short")                   \
    X(EndTag, EndTagData, "end")                         \
    X(CDATATag, CDATATagData, "cdata")                   \
    X(ConditionalTag, ConditionalTagData, "conditional") \
    X(CommentTag, CommentTagData, "comment")             \
    X(EntityTag, EntityTagData, "entity")                \
    X(ExternTag, ExternTagData, "extern")                \
    X(JunkData, JunkData, "junk")

/// The operations of an observer without record and argument, in their order: `X(NAME, WORD)`.
#define KESTRA_HTML_FOR_EACH_EVENT(X)  \
    X(StartParsing, "start-parsing")   \
    X(EndParsing, "end-parsing")       \
    X(JSTagStart, "js-start")          \
    X(JSTagEnd, "js-end")              \
    X(CSSTagStart, "css-start")        \
    X(CSSTagEnd, "css-end")

// clang-format on

namespace Kestra::HTML {

/// The fields of a record: `Get` returns a tuple of `RecordField`.
template <template <typename, typename> class Record>
struct RecordFields;

// clang-format off

#define FIELD(TAG, NAME) MakeRecordField<TAG>(#NAME, [](auto& record) -> auto& { return record.NAME; })

#define FIELDS(RECORD, ...)                      \
    template <>                                  \
    struct RecordFields<RECORD> {                \
        static constexpr auto Get() {            \
            return std::make_tuple(__VA_ARGS__); \
        }                                        \
    };

// A state record belongs to a folder above this one, and is only named here.
#define STATE_FIELDS(RECORD, ...)     \
    template <typename C, typename S> \
    struct RECORD;                    \
    FIELDS(RECORD, __VA_ARGS__)

// The parts of lists.

FIELDS(Attribute,
    FIELD(StringField, prefix),
    FIELD(StringField, name),
    FIELD(StringField, beforeEquals),
    FIELD(StringField, afterEquals),
    FIELD(StringField, value),
    FIELD(NumberField, quote),
    FIELD(FlagField, hasValue))

FIELDS(EntityToken,
    FIELD(StringField, prefix),
    FIELD(StringField, value),
    FIELD(NumberField, quote))

// The records of tokens.

FIELDS(TextData,
    FIELD(TextField, text))

FIELDS(CCommentData,
    FIELD(TextField, text))

FIELDS(CPPCommentData,
    FIELD(TextField, text))

FIELDS(SQuoteStringData,
    FIELD(TextField, text))

FIELDS(DQuoteStringData,
    FIELD(TextField, text))

FIELDS(StartTagData,
    FIELD(TextField, prefix),
    FIELD(TextField, name),
    FIELD(AttributesField, attributes),
    FIELD(TextField, suffix),
    FIELD(FlagField, closed))

FIELDS(ShortTagData,
    FIELD(TextField, prefix),
    FIELD(TextField, name),
    FIELD(AttributesField, attributes),
    FIELD(TextField, suffix),
    FIELD(FlagField, closed))

FIELDS(EndTagData,
    FIELD(TextField, prefix),
    FIELD(TextField, name),
    FIELD(TextField, afterName),
    FIELD(FlagField, closed),
    FIELD(AttributesField, attributes),
    FIELD(FlagField, slashBeforeClose),
    FIELD(TextField, suffix))

FIELDS(CDATATagData,
    FIELD(TextField, keyword),
    FIELD(TextField, text),
    FIELD(FlagField, closed))

FIELDS(ConditionalTagData,
    FIELD(TextField, keyword),
    FIELD(TextField, condition),
    FIELD(TextField, tail),
    FIELD(FlagField, bracketClosed),
    FIELD(FlagField, tagClosed))

FIELDS(CommentTagData,
    FIELD(TextField, text),
    FIELD(FlagField, closed))

FIELDS(EntityTagData,
    FIELD(TextField, prefix),
    FIELD(TextField, name),
    FIELD(TokensField, tokens),
    FIELD(TextField, suffix))

FIELDS(ExternTagData,
    FIELD(TextField, prefix),
    FIELD(TextField, name),
    FIELD(AttributesField, attributes),
    FIELD(TextField, suffix),
    FIELD(FlagField, freeStyle),
    FIELD(TextField, text),
    FIELD(FlagField, slashBeforeClose))

FIELDS(JunkData,
    FIELD(BytesField, text))

// The state records of the recognizers, after what all of them have.

STATE_FIELDS(TextSimpleParserData,
    FIELD(NumberField, state),
    FIELD(FlagField, allowCComment),
    FIELD(FlagField, allowCPPComment),
    FIELD(FlagField, allowSQuoteString),
    FIELD(FlagField, allowDQuoteString),
    FIELD(FlagField, allowJSRegEx),
    FIELD(FlagField, allowEscape2022),
    FIELD(StringField, text),
    FIELD(WideStringField, nextParserName))

STATE_FIELDS(WhiteSpaceSimpleParserData,
    FIELD(StringField, text))

STATE_FIELDS(SQuoteStringSimpleParserData,
    FIELD(StringField, text),
    FIELD(CharacterField, lastChar),
    FIELD(FlagField, allowEscapes))

STATE_FIELDS(DQuoteStringSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, text),
    FIELD(CharacterField, lastChar),
    FIELD(FlagField, allowEscapes),
    FIELD(FlagField, allowEscape2022))

STATE_FIELDS(JSRegExSimpleParserData,
    FIELD(StringField, text),
    FIELD(CharacterField, lastChar),
    FIELD(FlagField, allowEscapes))

STATE_FIELDS(Escape2022SimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, text),
    FIELD(StringField, pending))

STATE_FIELDS(JunkSimpleParserData,
    FIELD(OwnBytesField, text))

STATE_FIELDS(IdentifierSimpleParserData,
    FIELD(StringField, text),
    FIELD(FlagField, attributeNameMode))

STATE_FIELDS(TokenSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, prefix),
    FIELD(StringField, value),
    FIELD(NumberField, quote),
    FIELD(FlagField, iso2022))

STATE_FIELDS(AttributeSimpleParserData,
    FIELD(NumberField, state),
    FIELD(NumberField, hasValue),
    FIELD(StringField, prefix),
    FIELD(StringField, name),
    FIELD(StringField, beforeEquals),
    FIELD(StringField, afterEquals),
    FIELD(StringField, value),
    FIELD(NumberField, quote),
    FIELD(FlagField, iso2022))

STATE_FIELDS(GenericTagSimpleParserData,
    FIELD(NumberField, state),
    FIELD(NumberField, reserved),
    FIELD(StringField, text),
    FIELD(StringField, keyword),
    FIELD(WideStringField, nextParser))

STATE_FIELDS(StartTagSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, prefix),
    FIELD(StringField, name),
    FIELD(OwnAttributesField, attributes),
    FIELD(StringField, suffix),
    FIELD(WideStringField, wideName),
    FIELD(FlagField, selfClosing),
    FIELD(FlagField, closed),
    FIELD(FlagField, iso2022))

STATE_FIELDS(EndTagSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, prefix),
    FIELD(StringField, name),
    FIELD(StringField, afterName),
    FIELD(StringField, suffix),
    FIELD(OwnAttributesField, attributes),
    FIELD(FlagField, slashBeforeClose),
    FIELD(FlagField, closed),
    FIELD(FlagField, iso2022))

STATE_FIELDS(CommentTagSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, text),
    FIELD(FlagField, closed))

STATE_FIELDS(CDATATagSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, keyword),
    FIELD(StringField, text),
    FIELD(FlagField, closed))

STATE_FIELDS(ConditionalTagSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, keyword),
    FIELD(StringField, condition),
    FIELD(StringField, tail),
    FIELD(FlagField, bracketClosed),
    FIELD(FlagField, tagClosed))

STATE_FIELDS(CCommentSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, text),
    FIELD(StringField, keyword),
    FIELD(WideStringField, nextParserName))

STATE_FIELDS(CPPCommentSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, text),
    FIELD(StringField, keyword),
    FIELD(WideStringField, nextParserName))

STATE_FIELDS(EntityTagSimpleParserData,
    FIELD(NumberField, state),
    FIELD(StringField, prefix),
    FIELD(StringField, name),
    FIELD(OwnTokensField, tokens),
    FIELD(StringField, suffix),
    FIELD(FlagField, iso2022))

STATE_FIELDS(ExternTagSimpleParserData,
    FIELD(NumberField, state),
    FIELD(FlagField, freeStyle),
    FIELD(FlagField, slashBeforeClose),
    FIELD(StringField, prefix),
    FIELD(StringField, name),
    FIELD(StringField, text),
    FIELD(OwnAttributesField, attributes),
    FIELD(StringField, suffix),
    FIELD(FlagField, iso2022))

STATE_FIELDS(ExternTagFreeStyleSimpleParserData,
    FIELD(NumberField, state),
    FIELD(FlagField, questionPending),
    FIELD(StringField, text),
    FIELD(FlagField, iso2022))

#undef STATE_FIELDS
#undef FIELDS
#undef FIELD

// clang-format on

/// Calls `visit(field)` for each field of a record, in order, with a `RecordField`.
template <template <typename, typename> class Record, typename Visitor>
constexpr void ForEachField(Visitor visit) {
    std::apply([&visit](const auto&... field) { (visit(field), ...); }, RecordFields<Record>::Get());
}

/// The same with the field of one record: `visit(name, value)`.
template <template <typename, typename> class Record, typename C, typename S, typename Visitor>
constexpr void ForEachField(const Record<C, S>& record, Visitor visit) {
    ForEachField<Record>([&record, &visit](const auto& field) { visit(field.name, field.In(record)); });
}

/// The same for changes: `visit(name, pointer)`.
template <template <typename, typename> class Record, typename C, typename S, typename Visitor>
constexpr void ForEachField(Record<C, S>* record, Visitor visit) {
    ForEachField<Record>([record, &visit](const auto& field) { visit(field.name, &field.In(*record)); });
}

/// The positions in the list of kinds, from 1 on.
enum KindPosition : std::uint32_t {
    POSITION_BEFORE_KINDS,
#define POSITION(NAME, RECORD, WORD) POSITION_OF_##NAME,
    KESTRA_HTML_FOR_EACH_KIND(POSITION)
#undef POSITION
};

/// The kind of a record.
template <template <typename, typename> class Record>
struct RecordKind;

#define KIND(NAME_OF_KIND, RECORD, WORD_OF_KIND)                                                       \
    template <>                                                                                        \
    struct RecordKind<RECORD> {                                                                        \
        static constexpr TokenKind KIND_OF_TOKEN = static_cast<TokenKind>(POSITION_OF_##NAME_OF_KIND); \
        static constexpr const char* NAME = #NAME_OF_KIND; /* of its operation, without "On" */        \
        static constexpr const char* WORD = WORD_OF_KIND;                                              \
                                                                                                       \
        template <typename C, typename S>                                                              \
        static void Call(ParserObserver<C, S>* observer, RECORD<C, S>* record) {                       \
            observer->On##NAME_OF_KIND(record);                                                        \
        }                                                                                              \
    };
KESTRA_HTML_FOR_EACH_KIND(KIND)
#undef KIND

/// Calls the operation of the record's kind.
template <template <typename, typename> class Record, typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, Record<C, S>* record) {
    RecordKind<Record>::Call(observer, record);
}

/// Calls `visit` once for each kind, in order: `visit.template operator()<Record>()`.
template <typename Visitor>
constexpr void ForEachKind(Visitor visit) {
#define VISIT(NAME, RECORD, WORD) visit.template operator()<RECORD>();
    KESTRA_HTML_FOR_EACH_KIND(VISIT)
#undef VISIT
}

/// The operations of `KESTRA_HTML_FOR_EACH_EVENT`.
enum class ObserverEvent : std::uint32_t {
#define EVENT(NAME, WORD) NAME,
    KESTRA_HTML_FOR_EACH_EVENT(EVENT)
#undef EVENT
};

/// An event as its operation without "On", and as the word of the trace language.
struct EventNames {
    const char* name;
    const char* word;
};

constexpr EventNames GetEventNames(ObserverEvent event) {
    constexpr EventNames NAMES[] = {
#define NAMES_OF_EVENT(NAME, WORD) {#NAME, WORD},
        KESTRA_HTML_FOR_EACH_EVENT(NAMES_OF_EVENT)
#undef NAMES_OF_EVENT
    };
    return NAMES[static_cast<std::uint32_t>(event)];
}

template <typename C, typename S>
void CallObserver(ParserObserver<C, S>* observer, ObserverEvent event) {
    switch (event) {
#define CALL(NAME, WORD)      \
    case ObserverEvent::NAME: \
        observer->On##NAME(); \
        break;
        KESTRA_HTML_FOR_EACH_EVENT(CALL)
#undef CALL
    }
}

}  // namespace Kestra::HTML
