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

//  state     white space   "/"    ">"            other   end of the piece
//  0 name    the name is read; to 1 with it
//  1 list    the items are read; to 2 with the last one
//  2 end     skip          to 3   to 3, unread   702     16
//  3 last    702           702    complete       702     complete (kept)
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

//  state     white space   "?"    ">"                 other               end of the piece
//  0 name    the name is read; to 1 with it
//  1 list    the attributes are read; to 2 with the last one
//  2 end     skip          to 3   702; after "?" to 3, unread   702; after "?": to 3, unread   16
//  3 last    702           702    complete            702                 complete (kept)
//
// An unquoted value takes the "?" with it: so one that was consumed last counts as well.
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
