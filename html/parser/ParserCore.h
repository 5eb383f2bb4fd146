#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "html/framework/ParserNames.h"
#include "html/framework/ResultCodes.h"
#include "html/parser/MarkupCharset.h"
#include "html/parser/OpenConstruct.h"
#include "html/parser/ParserInput.h"
#include "html/parser/Recognizers.h"
#include "html/parser/RecordCalls.h"
#include "html/parser/TokenDelivery.h"
#include "html/parser/TokenLimit.h"
#include "html/parser/TokenPlaces.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"

namespace Kestra::HTML {

/// Which recognizer is active. No state 9 exists.
enum ParserState : std::uint32_t {
    STATE_TEXT = 0,
    STATE_GENERIC_TAG = 1,
    STATE_START_TAG = 2,
    STATE_COMMENT_TAG = 3,
    STATE_CDATA_TAG = 4,
    STATE_CONDITIONAL_TAG = 5,
    STATE_END_TAG = 6,
    STATE_ENTITY_TAG = 7,
    STATE_EXTERN_TAG = 8,
    STATE_C_COMMENT = 10,
    STATE_CPP_COMMENT = 11,
    STATE_JS_REG_EX = 12,
    STATE_S_QUOTE_STRING = 13,
    STATE_D_QUOTE_STRING = 14,
    STATE_JUNK = 15,
    STATE_RAW_TEXT = 16,
};

/// The state of the driver of one flavour, and the functions that the readers of its constructs
/// share. Not installed.
template <typename C, typename S>
struct ParserCore {
    ParserInput<C, S> input;
    ParserState state = STATE_TEXT;
    WideStringView currentParserName = ParserNames::TEXT;
    Recognizers<C, S> recognizers;
    S wholeText;                      ///< text that lies in one piece as a whole; retained for its buffer
    bool isWholeTextPending = false;  ///< `wholeText` is being delivered: a copy has it as its pending text
    bool inScript = false;
    bool inStyle = false;
    /// The content of scripts and the like is one text; `inScript` and `inStyle` stay false.
    bool scriptsAsText = false;
    TokenPlaces<C, S> places;
    TokenDelivery<C, S> delivery;
    MarkupCharset<C, S> markupCharset;
    OpenConstruct<C, S> openConstruct;
    TokenLimit<C> limit;
    std::uint32_t halted = PARSER_OK;  ///< 710 or 711, once it has ended the document
    std::uint64_t buffersDue = 0;      ///< where `LimitBuffers` is called next: characters into the piece
    std::size_t roomOfLists = 0;       ///< `GetRoomOfLists` when it was last measured

    void SetActive(ParserState activeState, WideStringView name) {
        currentParserName = name;
        state = activeState;
    }

    /// For a copy made while a text was delivered: makes that text its pending text, even when it
    /// was read as a whole.
    void SettleCopy();

    bool IsHalted() const {
        return halted != PARSER_OK;
    }
    bool IsInScriptOrStyle() const {
        return inScript || inStyle;
    }
    bool MayHaveEscapeRuns() const {
        return StringNS::CharSet::IsIso2022(delivery.GetCharset());
    }

    // Between two tokens.

    void MarkTokenStart(std::uint64_t charactersBack) {
        openConstruct.MarkStart(input, charactersBack);
    }
    void ReturnToText() {
        recognizers.text.Begin();
        SetActive(STATE_TEXT, ParserNames::TEXT);
    }
    /// Goes back to text: the first characters of what looked like a construct are text.
    void ReturnToText(const char* prefix);
    void FinishToken() {
        MarkTokenStart(0);
        ReturnToText();
    }

    // Delivery.

    /// @param charactersAhead  characters of the next token that have been read already
    template <typename Record>
    void Deliver(Record record, std::uint64_t charactersAhead = 0) {
        places.EndToken(input, charactersAhead);
        delivery.Deliver(&record);
    }
    void DeliverText(std::uint64_t charactersAhead) {
        S& text = recognizers.text.data.text;
        if (text.empty())
            return;
        Deliver(MakeRecord<TextData>(recognizers.text.data), charactersAhead);
        text.clear();
    }
    DeliveredAttributes<C, S> GetDeliveredAttributes() const;

    // Limits.

    /// Without a limit the context gets the rest of the piece; with one, as much as the current
    /// token may still have.
    void BeginSlice();
    /// Applies changed limits.
    void ApplyLimits();
    /// Characters between the end of the last token and the current place. After an exception the
    /// last token ends with the piece.
    std::uint64_t GetLengthSoFar() const;
    /// Whether the token that ends that many characters before the current place exceeds the limit.
    bool IsTooLong(std::uint64_t charactersAhead) const;
    /// Whether the unfinished token exceeds the limit, whatever follows. Characters that may turn
    /// out to be the opener of the next token do not count yet, so that the result does not depend
    /// on where the document is cut into pieces.
    bool IsTooLongUnderWay() const;
    /// The unfinished token is too long: the next call that feeds goes on at its first character.
    void GoBackToToken();

    // What is retained for the next tokens.

    /// A list of parts takes much more memory than its characters in the document. With a limit the
    /// buffers are measured as soon as a list has grown.
    void CountParts() {
        if (limit.GetBytes() != 0 && recognizers.GetRoomOfLists() > roomOfLists)
            buffersDue = 0;
    }
    /// Frees the buffers if too much memory is retained. Does nothing inside a construct, whose
    /// text may be in any string.
    void LimitBuffers(bool isNewDocument);
    void ReleaseBuffers();

private:
    template <typename Visitor>
    void VisitBuffers(Visitor& visit);
};

}  // namespace Kestra::HTML
