#include "html/stateless/Tags.h"

#include <string>
#include <utility>

#include "html/framework/RawTextElements.h"
#include "html/stateless/NamedTag.h"

namespace Kestra::HTML::Stateless {

namespace {

enum AttributeState : std::uint32_t { ATTRIBUTE_NAME = 0, ATTRIBUTE_EQUALS = 1, ATTRIBUTE_VALUE = 2 };

enum ValueState : std::uint32_t {
    VALUE_NOT_BEGUN = 0,
    VALUE_UNQUOTED = 1,
    VALUE_SINGLE_QUOTED = 2,
    VALUE_DOUBLE_QUOTED = 3
};

enum EndTagState : std::uint32_t { END_TAG_NAME = 0, END_TAG_LAST = 1 };

std::uint32_t AtEndOrComplete(const Data& data) {
    return AtEnd(data) ? STATELESS_NEED_MORE_DATA : STATELESS_OK;
}

}  // namespace

// Names and values

void InitIdentifierParser(Data& data) {
    data.identifier.clear();
}

//  state         white space        letter, "_"   digit, ":", "-"    other
//  0 not begun   drop               keep, to 1    701                701
//  1 begun       complete, unread   keep          keep               complete, unread
//
// It has begun when it has a byte.
std::uint32_t ParseIdentifier(Data& data) {
    if (data.identifier.empty()) {
        if (!SkipWhiteSpace(data))
            return STATELESS_NEED_MORE_DATA;
        if (!Is(Next(data), NAME_START))
            return STATELESS_NAME_EXPECTED;
    }
    std::size_t count = 0;
    while (count < data.length - data.position && Is(data.cursor[count], NAME))
        ++count;
    if (!AppendRun(data, count, &data.identifier))
        return STATELESS_LIMIT_EXCEEDED;
    return AtEndOrComplete(data);
}

void InitValueParser(Data& data) {
    data.value.clear();
    data.valueState = VALUE_NOT_BEGUN;
}

namespace {

std::uint32_t ParseQuoted(Data& data, char quote) {
    if (AtEnd(data))
        return STATELESS_NEED_MORE_DATA;
    if (!AppendRun(data, CountUntilByte(data, quote), &data.value))
        return STATELESS_LIMIT_EXCEEDED;
    if (!AtEnd(data))
        Consume(data);
    return AtEndOrComplete(data);
}

}  // namespace

//  state             "'"        '"'        ">"                white space        other
//  0 not begun       to 2       to 3       as 1               drop               as 1
//  1 unquoted        keep       keep       complete, unread   complete, unread   keep
//  2 single-quoted   complete   keep       keep               keep               keep
//  3 double-quoted   keep       complete   keep               keep               keep
//
// A closing quote that ends the piece does not complete: the value goes on in the next piece, up to
// another quote (kept).
std::uint32_t ParseValue(Data& data) {
    if (data.valueState == VALUE_NOT_BEGUN) {
        if (!SkipWhiteSpace(data))
            return STATELESS_NEED_MORE_DATA;
        data.valueState = Next(data) == '\''  ? VALUE_SINGLE_QUOTED
                          : Next(data) == '"' ? VALUE_DOUBLE_QUOTED
                                              : VALUE_UNQUOTED;
        if (data.valueState != VALUE_UNQUOTED)
            Consume(data);
        data.attributePlace.valueBegin = GetOffset(data);
    }
    if (data.valueState != VALUE_UNQUOTED)
        return ParseQuoted(data, data.valueState == VALUE_SINGLE_QUOTED ? '\'' : '"');
    if (!AppendRun(data, CountUntil(data, VALUE_STOP), &data.value))
        return STATELESS_LIMIT_EXCEEDED;
    return AtEndOrComplete(data);
}

// Attributes

void InitAttrParser(Data& data) {
    data.attributeState = ATTRIBUTE_NAME;
    InitIdentifierParser(data);
    data.value.clear();
    data.attributePlace.begin = GetOffset(data);
}

namespace {

/// For an attribute that begins with a byte that no name begins with.
std::uint32_t DropToTagEnd(Data& data) {
    if (!AtEnd(data)) {
        ConsumeRun(data, CountUntilByte(data, '>'));
        data.attributePlace.begin = GetOffset(data);  // of the attribute that the next piece begins with
    }
    return AtEndOrComplete(data);
}

}  // namespace

//  state      white space   "="    other
//  0 name     the name recognizer reads on: "a" before "=": to 1; " a" before ">": to 1; "a" before "%": to 1;
//             before ">": complete; " " before "/": complete; before "?": complete; "%b" before ">": complete (kept);
//             "=b c/" before ">": complete (kept)
//  1 equals   drop          to 2   complete, unread
//  2 value    the value recognizer reads on: "a" before " ": complete; "'>'" before "b": complete; before ">": complete
//
// An empty name means that there is no attribute.
std::uint32_t ParseAttr(Data& data) {
    AttributePlace& place = data.attributePlace;
    if (AtEnd(data))
        return STATELESS_NEED_MORE_DATA;
    if (data.attributeState == ATTRIBUTE_NAME) {
        const std::uint32_t result = ParseIdentifier(data);
        if (result == STATELESS_NAME_EXPECTED && Is(Next(data), TAG_STOP))
            return STATELESS_OK;
        if (result == STATELESS_LIMIT_EXCEEDED)
            return result;
        if (result != STATELESS_OK)
            return DropToTagEnd(data);
        data.attributeState = ATTRIBUTE_EQUALS;
        place.nameEnd = GetOffset(data);
        place.nameBegin = place.nameEnd - data.identifier.size();
    }
    if (data.attributeState == ATTRIBUTE_EQUALS) {
        if (!SkipWhiteSpace(data))
            return STATELESS_NEED_MORE_DATA;
        if (Next(data) != '=') {
            data.value.clear();
            place.valueBegin = place.valueEnd = place.end = place.nameEnd;
            return STATELESS_OK;
        }
        Consume(data);
        data.attributeState = ATTRIBUTE_VALUE;
        InitValueParser(data);
    }
    const std::uint32_t result = ParseValue(data);
    place.end = GetOffset(data);
    place.valueEnd = place.end - (data.valueState == VALUE_UNQUOTED ? 0 : 1);
    return result;
}

void InitAttrsParser(Data& data) {
    data.attributes.clear();
    data.attributePlaces.clear();
    InitAttrParser(data);
}

std::uint32_t ParseAttrs(Data& data) {
    if (AtEnd(data))
        return STATELESS_NEED_MORE_DATA;
    for (;;) {
        const std::uint32_t result = ParseAttr(data);
        if (result != STATELESS_OK || data.identifier.empty())
            return result;
        if (data.attributes.size() >= data.maxListed)
            return STATELESS_LIMIT_EXCEEDED;
        std::pair<std::string, std::string>& attribute = data.attributes.AppendRecycled();
        attribute.first.swap(data.identifier);
        attribute.second.swap(data.value);
        data.attributePlaces.push_back(data.attributePlace);
        InitAttrParser(data);
        data.attributePlace.begin = data.attributePlace.end;  // white space after a name has been read already
        if (!SkipWhiteSpace(data))
            return STATELESS_NEED_MORE_DATA;
        if (Is(Next(data), TAG_STOP))
            return STATELESS_OK;
    }
}

// Tags

namespace {

//  state    white space   "/"    ">"        other
//  0 name   the name recognizer reads on: "a" before " ": to 1; " a" before "/": to 1; "a" before ">": to 1;
//           before "1": 701
//  1 list   the attribute recognizer reads on: before ">": to 2; " a=b" before ">": to 2;
//           " a" before "/": to 2; "a='>'b " before "?": to 2; "%" before ">": to 2
//  2 end    drop          to 3   as 3       702
//  3 last   702           702    complete   702
struct StartTag {
    static constexpr std::uint32_t Data::*STATE = &Data::startTagState;

    static void InitList(Data& data) {
        data.isBrowsersName = data.isBrowsersName && EndsRawTextName(Next(data));
        InitAttrsParser(data);
    }

    static std::uint32_t ParseList(Data& data) {
        return ParseAttrs(data);
    }

    static bool ParseEnd(Data& data) {
        data.selfClosing = Next(data) == '/';
        if (!data.selfClosing)
            return Next(data) == '>';
        Consume(data);
        return true;
    }
};

}  // namespace

void InitStartTagParser(Data& data) {
    InitNamedTag<StartTag>(data);
}

std::uint32_t ParseStartTag(Data& data) {
    return ParseNamedTag<StartTag>(data);
}

void InitEndTagParser(Data& data) {
    data.endTagState = END_TAG_NAME;
    InitIdentifierParser(data);
}

//  state    ">"        other
//  0 name   the name recognizer reads on: "a" before ">": to 1; " a" before " ": to 1; before "1": 701
//  1 last   complete   702
std::uint32_t ParseEndTag(Data& data) {
    if (data.endTagState == END_TAG_NAME) {
        const std::uint32_t result = ParseTagName(data);
        if (result != STATELESS_OK)
            return result;
        data.endTagState = END_TAG_LAST;
    }
    return ParseLastByte(data);
}

}  // namespace Kestra::HTML::Stateless
