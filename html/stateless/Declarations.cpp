#include "html/stateless/Declarations.h"

#include "html/stateless/NamedTag.h"

namespace Kestra::HTML::Stateless {

namespace {

void InitTokensParser(Data& data) {
    data.tokens.clear();
    InitValueParser(data);
}

/// Items up to a "/" or ">". Nothing before it is an empty item (kept).
std::uint32_t ParseTokens(Data& data) {
    if (AtEnd(data))
        return STATELESS_NEED_MORE_DATA;
    for (;;) {
        const std::uint32_t result = ParseValue(data);
        if (result != STATELESS_OK)
            return result;
        if (data.tokens.size() >= data.maxItems)
            return STATELESS_LIMIT_EXCEEDED;
        data.tokens.AppendRecycled().swap(data.value);
        InitValueParser(data);
        if (!SkipWhiteSpace(data))
            return STATELESS_NEED_MORE_DATA;
        if (Next(data) == '/' || Next(data) == '>')
            return STATELESS_OK;
    }
}

//  state    white space   "/"    ">"        other
//  0 name   the name recognizer reads on: "a" before " ": to 1; " a" before ">": to 1; before "1": 701
//  1 list   the item recognizer reads on: before ">": to 2; " a b" before ">": to 2; "'a'" before "/": to 2;
//           "a " before "/": to 2
//  2 end    drop          to 3   as 3       702
//  3 last   702           702    complete   702
struct EntityTag {
    static constexpr std::uint32_t Data::*STATE = &Data::entityTagState;

    static void InitList(Data& data) {
        InitTokensParser(data);
    }

    static std::uint32_t ParseList(Data& data) {
        return ParseTokens(data);
    }

    static bool ParseEnd(Data& data) {
        if (Next(data) == '>')
            return true;
        if (Next(data) != '/')
            return false;
        Consume(data);
        return true;
    }
};

//  state            white space   "?"    ">"        other
//  0 name           the name recognizer reads on: "a" before "?": to 1; " a" before " ": to 1; before "1": 701
//  1 list           the attribute recognizer reads on: before "?": to 2; " a='b' " before "?": to 2;
//                   " a=b?" before ">": to 4; " a" before ">": to 2; "%?" before ">": to 4
//  2 end            drop          to 3   702        702
//  3 last           702           702    complete   702
//  4 end after "?"  to 2          to 3   as 3       as 3
//
// State 4 is state 2 after a "?" that is not its own: an unquoted value takes it.
struct ExternTag {
    static constexpr std::uint32_t Data::*STATE = &Data::externTagState;

    static void InitList(Data& data) {
        InitAttrsParser(data);
    }

    static std::uint32_t ParseList(Data& data) {
        return ParseAttrs(data);
    }

    static bool ParseEnd(Data& data) {
        if (Next(data) != '?')
            return IsAfter(data, '?');
        Consume(data);
        return true;
    }
};

}  // namespace

void InitEntityTagParser(Data& data) {
    InitNamedTag<EntityTag>(data);
}

std::uint32_t ParseEntityTag(Data& data) {
    return ParseNamedTag<EntityTag>(data);
}

void InitExternTagParser(Data& data) {
    InitNamedTag<ExternTag>(data);
}

std::uint32_t ParseExternTag(Data& data) {
    return ParseNamedTag<ExternTag>(data);
}

}  // namespace Kestra::HTML::Stateless
