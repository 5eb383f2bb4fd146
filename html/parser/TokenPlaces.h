#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "html/framework/Attribute.h"
#include "html/framework/TokenPlace.h"
#include "html/parser/ParserInput.h"
#include "platform/Vector.h"

namespace Kestra::HTML {

/// The attributes of the tag that is being delivered. Offsets in characters of the document.
template <typename C, typename S>
struct DeliveredAttributes {
    const Vector<Attribute<C, S>>* list = nullptr;  ///< null when the token has none
    std::uint64_t nameEnd = 0;                      ///< of the tag's name
    std::uint64_t listBegin = 0;                    ///< where the first attribute begins
    bool bareValueEndsEscapeRuns = false;  ///< after an unquoted value without words values have no escape runs
};

/// Where the token that is being delivered, or was delivered last, begins and ends. Not installed.
///
/// A token begins where the one before it ended.
template <typename C, typename S>
class TokenPlaces {
public:
    /// @param bytes  of the document before its first character
    void BeginDocument(std::uint64_t bytes);

    /// The token that is about to be delivered ends that many characters before the current place:
    /// they are an opener that has been read already, and have no line feed.
    void EndToken(const ParserInput<C, S>& input, std::uint64_t charactersAhead) {
        lastEnd ^= 1U;
        boundaries[lastEnd] = {input.GetOffset() - charactersAhead, input.context.line,
                               input.context.column - charactersAhead};
    }

    /// The next token begins where the piece ends: the rest of the piece is in no token.
    void SkipPiece(const ParserInput<C, S>& input);

    /// These bytes of the document are in no token.
    /// @return the characters in them
    std::uint64_t SkipTo(const ParserInput<C, S>& input, std::uint64_t bytes);

    /// Makes the end of the last token the place of the input.
    void GoBackToEnd(ParserInput<C, S>* input) const;

    /// In characters of the document.
    std::uint64_t GetBegin() const {
        return boundaries[lastEnd ^ 1U].offset;
    }
    std::uint64_t GetEnd() const {
        return boundaries[lastEnd].offset;
    }

    TokenPlace GetTokenPlace() const;

    /// @return false when there is no such attribute
    bool GetAttributePlace(const DeliveredAttributes<C, S>& delivered, std::size_t index, AttributePlace* place) const;

    /// The same for the parts of a folded attribute: the attribute itself, and then its bare words.
    /// @param isIso2022  values of the document may have escape runs
    bool GetAttributeParts(const DeliveredAttributes<C, S>& delivered, bool isIso2022, std::size_t index,
                           std::vector<AttributePlace>* places) const;

    /// From characters of the document to bytes.
    std::uint64_t ToBytes(std::uint64_t offset) const;

private:
    struct Boundary {
        std::uint64_t offset = 0;  // in characters, from the first one of the document
        std::uint64_t line = 1;
        std::uint64_t column = 1;
    };

    /// An attribute whose place is known; offsets in characters.
    struct AttributeCursor {
        std::uint64_t listBegin = UINT64_MAX;  // of its list; none yet
        std::size_t index = 0;
        std::uint64_t offset = 0;
    };

    bool IsAfterBareValue(const DeliveredAttributes<C, S>& delivered, std::size_t index) const;
    std::uint64_t FindAttribute(const DeliveredAttributes<C, S>& delivered, std::size_t index) const;
    AttributePlace PlaceOf(const Attribute<C, S>& attribute, std::uint64_t offset) const;

    std::uint64_t bytesDropped = 0;  // bytes of the document before its first character
    Boundary boundaries[2];          // the begin and the end of the token that was delivered last, in turn
    unsigned lastEnd = 0;            // index of the end
    mutable AttributeCursor attributeCursor;
};

}  // namespace Kestra::HTML
