#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

#include "html/framework/ResultCodes.h"
#include "html/framework/SimpleParserContext.h"
#include "tests/support/Pieces.h"
#include "tests/support/Splits.h"

namespace Kestra::Test {

/// How a recognizer is passed from one piece to the next.
enum class Handing {
    SAME,      ///< the same objects go on
    COPIED,    ///< copies go on; the originals then read something else and are destroyed
    ASSIGNED,  ///< objects that have read something else are assigned to and go on; the originals are treated as above
    EMPTY_PIECE  ///< the same objects, with an empty piece between each two
};

/// How a recognizer is driven over an input.
template <typename Parser>
struct RecognizerOptions {
    std::function<void(typename Parser::Data*)> prepare;  ///< sets options: called once, after `BeginParse`
    Handing handing = Handing::SAME;
    std::uint64_t line = 1;  ///< where the context stands before the first piece
    std::uint64_t column = 1;
};

/// What a recognizer made of an input.
template <typename Parser>
struct RecognizerOutcome {
    typename Parser::Data data;
    std::uint32_t result = 0;
    bool atEnd = false;  ///< `result` is that of `EndParse`: the whole input was given before it was complete
    /// False: `Parse` answered 0 again and again without consuming anything, and was given up.
    bool progressing = true;
    std::uint32_t emptyPieceResult = 0;  ///< the first answer other than 0 to an empty piece
    std::uint64_t consumed = 0;          ///< characters, from the start of the input
    std::uint64_t line = 0;
    std::uint64_t column = 0;
};

template <typename Parser>
struct RecognizerFlavour;

template <template <typename, typename> class Parser, typename CharacterType, typename StringType>
struct RecognizerFlavour<Parser<CharacterType, StringType>> {
    using C = CharacterType;
    using S = StringType;
};

/// Feeds the pieces of an input to a recognizer as its owner does: `BeginParse`, the options,
/// `Parse` while it answers 0 and the piece has characters left, then the next piece, and
/// `EndParse` at the end of the input.
template <typename Parser>
class RecognizerRunner {
public:
    using C = typename RecognizerFlavour<Parser>::C;
    using S = typename RecognizerFlavour<Parser>::S;
    using Data = typename Parser::Data;

    explicit RecognizerRunner(RecognizerOptions<Parser> runOptions) : options(std::move(runOptions)) {}

    RecognizerOutcome<Parser> Run(std::basic_string_view<C> input, const Cuts& cuts) {
        RecognizerOutcome<Parser> outcome;
        context.Init();
        context.line = options.line;
        context.column = options.column;
        outcome.result = parser->BeginParse(data.get());
        if (options.prepare)
            options.prepare(data.get());
        for (const auto& [begin, end] : PiecesOf(cuts, input.size())) {
            const HeapPiece<C> piece(input.substr(begin, end - begin));
            context.buffer = piece.Data();
            context.position = 0;
            context.length = piece.Size();
            outcome.result = ParsePiece(&outcome.progressing);
            outcome.consumed += context.position;
            if (outcome.result != HTML::SP_NEED_MORE_DATA || !outcome.progressing)
                break;
            HandOn(&outcome.emptyPieceResult);
        }
        if (outcome.result == HTML::SP_NEED_MORE_DATA && outcome.progressing) {
            outcome.atEnd = true;
            outcome.result = parser->EndParse(data.get());
        }
        outcome.data = *data;
        outcome.line = context.line;
        outcome.column = context.column;
        return outcome;
    }

private:
    /// More calls in a row that answer 0 and consume nothing than any machine has states.
    static constexpr int MAX_IDLE_CALLS = 16;

    std::uint32_t ParsePiece(bool* progressing) {
        int idleCalls = 0;
        std::uint32_t result = HTML::SP_NEED_MORE_DATA;
        while (context.position < context.length && result == HTML::SP_NEED_MORE_DATA) {
            const std::uint64_t before = context.position;
            result = parser->Parse(&context, data.get());
            idleCalls = context.position == before ? idleCalls + 1 : 0;
            if (idleCalls > MAX_IDLE_CALLS) {
                *progressing = false;
                break;
            }
        }
        return result;
    }

    void HandOn(std::uint32_t* emptyPieceResult) {
        switch (options.handing) {
            case Handing::SAME:
                return;
            case Handing::COPIED: {
                auto parserCopy = std::make_unique<Parser>(*parser);
                auto dataCopy = std::make_unique<Data>(*data);
                Spoil(parser.get(), data.get());
                parser = std::move(parserCopy);
                data = std::move(dataCopy);
                return;
            }
            case Handing::ASSIGNED: {
                auto parserCopy = std::make_unique<Parser>();
                auto dataCopy = std::make_unique<Data>();
                parserCopy->BeginParse(dataCopy.get());
                Spoil(parserCopy.get(), dataCopy.get());
                *parserCopy = *parser;
                *dataCopy = *data;
                Spoil(parser.get(), data.get());
                parser = std::move(parserCopy);
                data = std::move(dataCopy);
                return;
            }
            case Handing::EMPTY_PIECE: {
                const HeapPiece<C> piece((std::basic_string_view<C>()));
                context.buffer = piece.Data();
                context.position = 0;
                context.length = 0;
                if (const std::uint32_t result = parser->Parse(&context, data.get()); *emptyPieceResult == 0)
                    *emptyPieceResult = result;
                return;
            }
        }
    }

    /// Lets a recognizer read on in something that opens attributes, strings and an escape run, so
    /// that whatever a copy shares with it changes under the copy.
    static void Spoil(Parser* spoiled, Data* record) {
        static constexpr char TEXT[] = {'z', ' ', 'z', '=', '\'', 'z', '\'', ' ',
                                        'z', '=', '"', 'z', 27,   '$', 'B',  'z'};
        const S text(std::begin(TEXT), std::end(TEXT));
        SimpleParserContextOf other;
        other.buffer = text.data();
        other.length = text.size();
        for (int calls = 0; calls < 8 && other.position < other.length; ++calls) {
            if (spoiled->Parse(&other, record) != HTML::SP_NEED_MORE_DATA)
                spoiled->BeginParse(record);
        }
    }

    using SimpleParserContextOf = HTML::SimpleParserContext<C, S>;

    RecognizerOptions<Parser> options;
    SimpleParserContextOf context;
    std::unique_ptr<Parser> parser = std::make_unique<Parser>();
    std::unique_ptr<Data> data = std::make_unique<Data>();
};

template <typename Parser>
RecognizerOutcome<Parser> RunRecognizer(std::basic_string_view<typename RecognizerFlavour<Parser>::C> input,
                                        const Cuts& cuts, const RecognizerOptions<Parser>& options = {}) {
    return RecognizerRunner<Parser>(options).Run(input, cuts);
}

/// Line and column of the character that follows the first `count` characters of an input, counted
/// one by one.
struct Place {
    std::uint64_t line = 1;
    std::uint64_t column = 1;

    bool operator==(const Place&) const = default;
};

template <typename C>
Place PlaceAfter(std::basic_string_view<C> input, std::uint64_t count) {
    Place place;
    for (const C character : input.substr(0, static_cast<std::size_t>(count))) {
        if (character == 10) {
            ++place.line;
            place.column = 1;
        } else {
            ++place.column;
        }
    }
    return place;
}

}  // namespace Kestra::Test
