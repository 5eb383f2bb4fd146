#include "tests/reference/PlaceCheck.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

#include "html/framework/TokenObserver.h"
#include "html/output/ParserObserverOutput.h"
#include "tests/reference/DocumentFeeding.h"
#include "tests/reference/ReferenceReader.h"
#include "tests/support/Flavours.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {

namespace {

using HTML::AttributePlace;
using HTML::GenericParser;
using HTML::TokenPlace;

/// Serializes single records.
template <typename C, typename S>
class Writer final : public HTML::ParserObserverOutput<C, S> {
public:
    void OnOutput(const void* data, std::uint64_t byteCount, bool) override {
        bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
    }

    std::string bytes;
};

/// Whether these are the bytes that characters have in the document.
bool HasBytes(std::string_view text, std::string_view bytes, bool) {
    return text == bytes;
}

bool HasBytes(WideStringView text, std::string_view bytes, bool wideInput) {
    const std::size_t size = wideInput ? 2 : 1;
    if (bytes.size() != size * text.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const unsigned low = static_cast<unsigned char>(bytes[size * i]);
        const unsigned high = wideInput ? static_cast<unsigned char>(bytes[2 * i + 1]) : 0U;
        if (text[i] != static_cast<WideChar>(high << 8 | low))
            return false;
    }
    return true;
}

/// Looks at every token as it comes.
template <typename C, typename S>
class PlaceObserver final : public HTML::EventObserver<PlaceObserver<C, S>, C, S> {
public:
    explicit PlaceObserver(const GenericParser* observedParser) : parser(observedParser) {}

    /// @param documentBytes  borrowed until the next document
    /// @param cut            into several pieces
    void Begin(std::string_view documentBytes, const PlacedReading& placedReading, bool cut) {
        document = documentBytes;
        reading = placedReading;
        isCut = cut;
        fault.clear();
        seen = PlacesSeen();
        last = TokenPlace();
        line = 1;
        column = 1;
    }

    /// Callbacks without a record have the place of their tag.
    void OnEvent(HTML::ObserverEvent event) {
        if (event == HTML::ObserverEvent::StartParsing)
            return;
        const TokenPlace place = parser->GetTokenPlace();
        if (event == HTML::ObserverEvent::EndParsing) {
            if (place.begin != place.end || place.end != document.size())
                Blame("the end of parsing is not the end of the document", place);
            Continue(place);
        } else if (place.begin != last.begin || place.end != last.end || place.line != last.line ||
                   place.column != last.column) {
            Blame("not the place of the tag", place);
        }
    }

    template <template <typename, typename> class Record>
    void OnToken(Record<C, S>* record) {
        const TokenPlace place = parser->GetTokenPlace();
        Continue(place);
        ++seen.tokens;
        if (place.begin == place.end && !std::is_same_v<Record<C, S>, HTML::JunkData<C, S>>)
            Blame("no bytes", place);
        // Bytes of UTF-16 between the markup of an 8-bit serializer are no document.
        if (!(reading.wideInput && !reading.wideObserver) && fault.empty()) {
            CheckText(record, place);
            if constexpr (requires { record->attributes; }) {
                CheckAttributes(*record->attributes, place);
                CheckParts(record, place);
            }
        }
    }

    std::string fault;
    PlacesSeen seen;

private:
    std::string_view At(std::uint64_t begin, std::uint64_t end) const {
        return document.substr(begin, end - begin);
    }

    void Blame(const std::string& what, const TokenPlace& place) {
        if (fault.empty())
            fault = what + ": [" + std::to_string(place.begin) + ", " + std::to_string(place.end) + ") at " +
                    std::to_string(place.line) + ":" + std::to_string(place.column) + ", \"" +
                    std::string(At(std::min(place.begin, document.size()), std::min(place.end, document.size()))) +
                    "\", the token before ended at " + std::to_string(last.end);
    }

    /// Only script line comments may be missing between this token and the one before, and only for
    /// one kind of observer.
    void Continue(const TokenPlace& place) {
        if (place.begin > place.end || place.end > document.size() || place.begin < last.end) {
            Blame("no place after the last one", place);
            return;
        }
        const bool hidesLineComments = !reading.wideInput && !reading.wideObserver;
        if (place.begin != last.end && !(hidesLineComments && At(last.end, place.begin).starts_with("//")))
            Blame("a hole", place);
        seen.holes += place.begin - last.end;
        Count(last.begin, place.begin);
        if (line != place.line || column != place.column)
            Blame("really at " + std::to_string(line) + ":" + std::to_string(column), place);
        last = place;
    }

    /// Lines and columns by looking at every character.
    void Count(std::uint64_t begin, std::uint64_t end) {
        const std::uint64_t size = reading.wideInput ? 2 : 1;
        for (std::uint64_t i = begin; i < end; i += size) {
            const bool isLineFeed = document[i] == '\n' && (size == 1 || document[i + 1] == 0);
            line += isLineFeed ? 1 : 0;
            column = isLineFeed ? 1 : column + 1;
        }
    }

    template <template <typename, typename> class Record>
    void CheckText(Record<C, S>* record, const TokenPlace& place) {
        const std::string_view bytes = At(place.begin, place.end);
        if constexpr (std::is_same_v<Record<C, S>, HTML::JunkData<C, S>>) {
            // An opener that began in an earlier piece is not read again.
            if (!bytes.ends_with(*record->text) || bytes.size() > record->text->size() + 2 * sizeof(WideChar))
                Blame("not the bytes of the junk", place);
            seen.exact += bytes == *record->text ? 1 : 0;
        } else {
            writer.bytes.clear();
            HTML::CallObserver(static_cast<HTML::ParserObserver<C, S>*>(&writer), record);
            const std::basic_string_view<C> written(reinterpret_cast<const C*>(writer.bytes.data()),
                                                    writer.bytes.size() / sizeof(C));
            if (HasBytes(written, bytes, reading.wideInput))
                ++seen.exact;
            else if (!IsWrittenDifferently(*record, bytes))
                Blame("not the bytes of the token", place);
        }
    }

    /// Sections whose body a wide serializer halves; conditional sections without their end, or
    /// with a tail that lies in two pieces; an XML declaration with white space after a bare word
    /// that ends in a slash.
    template <template <typename, typename> class Record>
    bool IsWrittenDifferently(const Record<C, S>& record, std::string_view bytes) const {
        using Comment = HTML::CommentTagData<C, S>;
        using CData = HTML::CDATATagData<C, S>;
        using Conditional = HTML::ConditionalTagData<C, S>;
        using Extern = HTML::ExternTagData<C, S>;
        const auto startsWith = [&](std::string_view opener) {
            return bytes.starts_with(reading.wideInput ? ToUtf16LE(opener) : std::string(opener));
        };
        if constexpr (std::is_same_v<Record<C, S>, Conditional>)
            return startsWith("<![") && (sizeof(C) == 2 || !record.tagClosed || isCut);
        else if constexpr (std::is_same_v<Record<C, S>, Comment>)
            return startsWith("<!--") && sizeof(C) == 2;
        else if constexpr (std::is_same_v<Record<C, S>, CData>)
            return startsWith("<![") && sizeof(C) == 2;
        else if constexpr (std::is_same_v<Record<C, S>, Extern>)
            return startsWith("<?") && !record.freeStyle && record.slashBeforeClose;
        else
            return false;
    }

    void CheckAttributes(const Vector<HTML::Attribute<C, S>>& attributes, const TokenPlace& token) {
        std::uint64_t end = 0;
        for (std::size_t i = 0; i < attributes.size(); ++i) {
            const HTML::Attribute<C, S>& attribute = attributes[i];
            ++seen.attributes;
            AttributePlace place;
            if (parser->GetAttributePlace(i, &place) != 0) {
                Blame("no place of attribute " + std::to_string(i), token);
                return;
            }
            const bool isInside = place.begin >= token.begin && place.end <= token.end && place.begin <= place.end;
            const bool follows = i == 0 || place.begin == end;
            const bool hasName = HasBytes(attribute.prefix, At(place.begin, place.nameBegin), reading.wideInput) &&
                                 HasBytes(attribute.name, At(place.nameBegin, place.nameEnd), reading.wideInput);
            const bool hasValue =
                attribute.hasValue
                    ? HasBytes(attribute.value, At(place.valueBegin, place.valueEnd), reading.wideInput) &&
                          HasQuotes(attribute.quote, place)
                    : place.valueBegin == place.nameEnd && place.valueEnd == place.nameEnd &&
                          place.end == place.nameEnd;
            if (!isInside || !follows || !hasName || !hasValue)
                Blame("a wrong place of attribute " + std::to_string(i) + ": [" + std::to_string(place.begin) + ", " +
                          std::to_string(place.end) + "), value [" + std::to_string(place.valueBegin) + ", " +
                          std::to_string(place.valueEnd) + ")",
                      token);
            end = place.end;
        }
        AttributePlace none;
        if (parser->GetAttributePlace(attributes.size(), &none) != 2)
            Blame("an attribute too many", token);
    }

    /// What each attribute was written as, against what the second tokenizer reads at the place of
    /// the tag.
    template <template <typename, typename> class Record>
    void CheckParts(Record<C, S>* record, const TokenPlace& token) {
        std::vector<AttributePlace> found;
        std::vector<AttributePlace> parts;
        for (std::size_t i = 0; i < record->attributes->size(); ++i) {
            AttributePlace whole;
            if (parser->GetAttributeParts(i, &parts) != 0 || parser->GetAttributePlace(i, &whole) != 0 ||
                parts.empty() || parts.front().begin != whole.begin || parts.back().end != whole.end) {
                Blame("no parts of attribute " + std::to_string(i), token);
                return;
            }
            found.insert(found.end(), parts.begin(), parts.end());
        }
        seen.words += found.size() - record->attributes->size();
        if (parser->GetAttributeParts(record->attributes->size(), &parts) != 2)
            Blame("parts of an attribute too many", token);
        // A tag may end right before the character after it.
        const std::uint64_t size = reading.wideInput ? 2 : 1;
        std::string text;
        for (std::uint64_t i = token.begin; i < std::min<std::uint64_t>(token.end + size, document.size()); i += size)
            text += document[i];
        // They are white space in wide text only, which the second tokenizer does not know.
        if (reading.wideInput && text.find_first_of("\x85\xA0") != std::string::npos)
            return;
        const std::vector<AttributePlace> expected = SearchParts<Record>(text, token.begin);
        if (!std::equal(found.begin(), found.end(), expected.begin(), expected.end(), IsSamePlace))
            Blame("other parts than are written there: " + Show(found) + "but" + Show(expected), token);
    }

    static bool IsSamePlace(const AttributePlace& left, const AttributePlace& right) {
        return left.begin == right.begin && left.end == right.end && left.nameBegin == right.nameBegin &&
               left.nameEnd == right.nameEnd && left.valueBegin == right.valueBegin && left.valueEnd == right.valueEnd;
    }

    static std::string Show(const std::vector<AttributePlace>& places) {
        std::string shown;
        for (const AttributePlace& place : places)
            shown += " [" + std::to_string(place.begin) + ", " + std::to_string(place.end) + ") value [" +
                     std::to_string(place.valueBegin) + ", " + std::to_string(place.valueEnd) + ")";
        return shown + " ";
    }

    /// The attributes of a tag as they are written, no bare word folded.
    template <template <typename, typename> class Record>
    std::vector<AttributePlace> SearchParts(std::string_view text, std::uint64_t begin) const {
        const StringNS::CharSet::Code charset = parser->GetCharset();
        const bool iso2022 = !reading.wideInput && (charset == StringNS::CharSet::ISO_2022_JP ||
                                                    charset == StringNS::CharSet::ISO_2022_JP_SISO ||
                                                    charset == StringNS::CharSet::ISO_2022_KR);
        const bool isEndTag = std::is_same_v<Record<C, S>, HTML::EndTagData<C, S>>;
        const bool isInstruction = std::is_same_v<Record<C, S>, HTML::ExternTagData<C, S>>;
        std::size_t offset = isEndTag || isInstruction ? 2 : 1;
        ReferenceReader reader(text.substr(offset));
        ReferenceAttributes attributes;
        if (isEndTag) {
            ReferenceEndTag tag;
            reader.ReadEndTag(iso2022, &tag);
            offset += tag.prefix.size() + tag.name.size() + tag.afterName.size();
            attributes = tag.written;
        } else if (isInstruction) {
            ReferenceInstruction instruction;
            reader.ReadInstruction(iso2022, &instruction);
            offset += instruction.prefix.size() + instruction.name.size();
            attributes = instruction.attributes;
        } else {
            ReferenceStartTag tag;
            reader.ReadStartTag(iso2022, &tag);
            offset += tag.prefix.size() + tag.name.size();
            attributes = tag.written;
        }
        std::vector<AttributePlace> places;
        for (const ReferenceAttribute& attribute : attributes) {
            std::size_t marks[6] = {offset, 0, offset + attribute.prefix.size()};
            marks[3] = marks[4] = marks[5] = marks[2] + attribute.name.size();
            offset = marks[3];
            if (attribute.hasValue) {
                const std::size_t quote = attribute.quote == ReferenceQuote::NONE ? 0 : 1;
                marks[4] = marks[3] + attribute.beforeEquals.size() + 1 + attribute.afterEquals.size() + quote;
                marks[5] = marks[4] + attribute.value.size();
                offset = marks[5] + quote;
            }
            marks[1] = offset;
            const auto toBytes = [&](std::size_t mark) { return begin + mark * (reading.wideInput ? 2 : 1); };
            places.push_back({toBytes(marks[0]), toBytes(marks[1]), toBytes(marks[2]), toBytes(marks[3]),
                              toBytes(marks[4]), toBytes(marks[5])});
        }
        return places;
    }

    bool HasQuotes(std::uint32_t quote, const AttributePlace& place) const {
        const std::uint64_t size = reading.wideInput ? 2 : 1;
        if (quote == HTML::QUOTE_NONE)
            return place.end == place.valueEnd;
        const char character = quote == HTML::QUOTE_SINGLE ? '\'' : '"';
        return place.end == place.valueEnd + size && document[place.valueBegin - size] == character &&
               document[place.valueEnd] == character;
    }

    const GenericParser* parser;
    std::string_view document;
    PlacedReading reading;
    bool isCut = false;
    Writer<C, S> writer;
    TokenPlace last;
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

/// A parser with its observer, for one document after the other.
template <typename C, typename S>
class PlacedParser {
public:
    PlacedParser() : observer(&parser) {
        parser.SetObserver(&observer, false);
    }

    /// @return what is wrong, or nothing; valid until the next document
    const std::string& Fault(std::string_view document, const PlacedReading& reading, const Cuts& cuts,
                             PlacesSeen* seen) {
        observer.Begin(document, reading, !cuts.empty() || document.size() > GenericParser::BUFFER_SIZE);
        parser.SetScriptMode(reading.scriptsAsText ? GenericParser::SCRIPT_AS_TEXT : GenericParser::SCRIPT_AS_TOKENS);
        const StringNS::CharSet::Code charset = reading.wideObserver ? StringNS::CharSet::ISO_8859_1 : reading.charset;
        parser.StartParse(charset,
                          reading.wideInput ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT);
        if (reading.fromStream) {
            stream.Reset(document, cuts);
            parser.ParseStream(&stream, false);
        } else {
            std::uint32_t result = 0;
            for (const auto& [begin, end] : PiecesOf(cuts, document.size())) {
                const HeapPiece<char> piece(document.substr(begin, end - begin));
                if (result == 0)
                    result = parser.ParseBuffer(piece.Data(), piece.Size());
            }
        }
        parser.EndParse();
        *seen += observer.seen;
        return observer.fault;
    }

private:
    GenericParser parser;
    PlaceObserver<C, S> observer;
    CutInputStream stream;
};

}  // namespace

PlacesSeen& PlacesSeen::operator+=(const PlacesSeen& other) {
    tokens += other.tokens;
    exact += other.exact;
    attributes += other.attributes;
    words += other.words;
    holes += other.holes;
    return *this;
}

/// The parsers for each kind of reading: what one has of its last document is of the same kind as
/// what the next one needs.
struct PlaceChecker::Parsers {
    PlacedParser<char, std::string> narrow[2];   ///< of 8-bit and of wide documents
    PlacedParser<WideChar, WideString> wide[2];  ///< likewise
};

PlaceChecker::PlaceChecker() : parsers(std::make_unique<Parsers>()) {}

PlaceChecker::~PlaceChecker() = default;

std::string PlaceChecker::Fault(std::string_view latin1, const PlacedReading& reading, const Cuts& cuts,
                                PlacesSeen* seen) {
    const std::size_t input = reading.wideInput ? 1 : 0;
    const auto read = [&](std::string_view document, const Cuts& byteCuts) {
        return reading.wideObserver ? parsers->wide[input].Fault(document, reading, byteCuts, seen)
                                    : parsers->narrow[input].Fault(document, reading, byteCuts, seen);
    };
    return reading.wideInput ? read(ToUtf16LE(latin1), Scaled(cuts, 2)) : read(latin1, cuts);
}

}  // namespace Kestra::Test
