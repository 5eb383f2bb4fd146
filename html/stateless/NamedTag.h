#pragma once

#include <cstdint>

#include "html/stateless/Scan.h"
#include "html/stateless/Tags.h"

/// @file
/// The parts that start tags, declarations and instructions share: a name, a list, and an end. Not
/// installed.

namespace Kestra::HTML::Stateless {

enum TagState : std::uint32_t { TAG_NAME = 0, TAG_LIST = 1, TAG_END = 2, TAG_LAST = 3 };

/// Reads the name of a construct, up to the byte after it.
inline std::uint32_t ParseTagName(Data& data) {
    const std::uint32_t result = ParseIdentifier(data);
    if (result == STATELESS_OK)
        data.tagName = data.identifier;
    return result;
}

/// Reads the ">" of a construct.
inline std::uint32_t ParseLastByte(Data& data) {
    if (Next(data) != '>')
        return STATELESS_TAG_END_EXPECTED;
    Consume(data);
    return STATELESS_OK;
}

template <typename Construct>
void InitNamedTag(Data& data) {
    data.*Construct::STATE = TAG_NAME;
    InitIdentifierParser(data);
}

/// Reads a construct up to its ">". The table of its states is above the class that names its
/// parts:
///
///     static constexpr std::uint32_t Data::*STATE;
///     static void InitList(Data& data);            // before the byte after the name
///     static std::uint32_t ParseList(Data& data);
///     static bool ParseEnd(Data& data);            // the byte before the ">", if any; false for a wrong one
///
/// A piece that ends right before the ">" completes the construct, and the ">" in the next piece is
/// text (kept).
template <typename Construct>
std::uint32_t ParseNamedTag(Data& data) {
    std::uint32_t& state = data.*Construct::STATE;
    while (!AtEnd(data)) {
        std::uint32_t result = STATELESS_OK;
        switch (static_cast<TagState>(state)) {
            case TAG_NAME:
                result = ParseTagName(data);
                if (result != STATELESS_OK)
                    return result;
                Construct::InitList(data);
                state = TAG_LIST;
                break;
            case TAG_LIST:
                result = Construct::ParseList(data);
                if (result != STATELESS_OK)
                    return result;
                state = TAG_END;
                break;
            case TAG_END:
                if (!SkipWhiteSpace(data))
                    return STATELESS_NEED_MORE_DATA;
                if (!Construct::ParseEnd(data))
                    return STATELESS_TAG_END_EXPECTED;
                state = TAG_LAST;
                break;
            case TAG_LAST:
                return ParseLastByte(data);
        }
    }
    return STATELESS_OK;
}

}  // namespace Kestra::HTML::Stateless
