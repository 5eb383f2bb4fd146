#include <cstring>
#include <memory>

#include "tests/html/parser/DocumentRows.h"
#include "tests/reference/DocumentTests.h"

// A document that is read with limits against the same document without: the tokens up to the first
// one that goes over are the same, it goes over at the same token however the document is cut, and
// a host that goes on from there gets all the others.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using HTML::TokenPlace;

constexpr std::uint64_t DOCUMENTS = 4000;
constexpr std::uint64_t SHARDS = 8;
constexpr std::size_t ENUMERATED_LENGTH = KESTRA_ENUMERATED_LENGTH - 1;

// No tag has so many: only its size limits it.
constexpr std::uint64_t MANY_ATTRIBUTES = 100000;

struct Limits {
    std::uint64_t bytes = 0;
    std::uint64_t attributes = 0;
};

struct Reading {
    const char* name;
    bool wideInput;
    bool wideObserver;  // of 8-bit text in 28591, so that every token reaches it
    bool fromStream;
    bool scriptsAsText = false;
};

constexpr Reading READINGS[] = {
    {"8-bit parser, 8-bit observer, stream", false, false, true},
    {"8-bit parser, wide observer, stream", false, true, true},
    {"wide parser, wide observer, stream", true, true, true},
    {"8-bit parser, 8-bit observer, buffers", false, false, false},
    {"8-bit parser, wide observer, buffers", false, true, false},
    {"wide parser, wide observer, buffers", true, true, false},
    {"8-bit parser, wide observer, buffers, scripts as text", false, true, false, true},
    {"wide parser, wide observer, stream, scripts as text", true, true, true, true},
};

/// What became of a document.
struct Outcome {
    Lines lines;
    std::vector<std::string> places;  // of the lines
    std::vector<TokenPlace> tokens;   // those with bytes
    std::uint32_t result = 0;         // of the call that ended it
    std::uint64_t end = 0;            // where the last token ended, after that call
    std::string next;                 // line and column after it
    std::size_t timesOver = 0;        // how often a token went over
};

std::string Show(const TokenPlace& place) {
    return std::to_string(place.begin) + "-" + std::to_string(place.end) + "@" + std::to_string(place.line) + ":" +
           std::to_string(place.column);
}

/// Reads a document once.
template <typename C, typename S>
class Reader {
public:
    /// @param documentBytes  borrowed, like the cuts, which are in bytes
    Reader(const Reading& reading, StringNS::CharSet::Code charset, std::string_view documentBytes,
           const Cuts& pieceCuts, Limits tokenLimits)
        : bytes(documentBytes),
          cuts(pieceCuts),
          limits(tokenLimits),
          fromStream(reading.fromStream),
          observer(&outcome.lines) {
        parser.SetObserver(&observer, false);
        SetLimits(limits);
        observer.hook = [this](const std::string& line) {
            const TokenPlace place = parser.GetTokenPlace();
            outcome.places.push_back(line.substr(0, line.find('(')) + Show(place));
            if (place.begin < place.end && (outcome.tokens.empty() || outcome.tokens.back().end <= place.begin)) {
                outcome.tokens.push_back(place);
                if (outcome.timesOver > 0)
                    SetLimits(limits);
            }
        };
        parser.SetSelfCheck(GenericParser::SELF_CHECK_CRC);
        parser.SetScriptMode(reading.scriptsAsText ? GenericParser::SCRIPT_AS_TEXT : GenericParser::SCRIPT_AS_TOKENS);
        parser.StartParse(charset,
                          reading.wideInput ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT);
    }

    /// Reads up to what ends it.
    Outcome Read() {
        outcome.result = FeedFrom(0);
        return TakeOutcome();
    }

    /// Whenever a token goes over, goes on at its first byte without limits, which come back with
    /// the next token.
    Outcome ReadAll() {
        outcome.result = FeedFrom(0);
        while (outcome.result == HTML::PARSER_LIMIT_EXCEEDED && outcome.timesOver <= bytes.size()) {
            ++outcome.timesOver;
            EXPECT_EQ(parser.EndParse(), 0U);
            SetLimits({});
            outcome.result = FeedFrom(parser.GetTokenPlace().end);
        }
        return TakeOutcome();
    }

private:
    void SetLimits(const Limits& newLimits) {
        parser.SetMaxTokenSize(newLimits.bytes);
        parser.SetMaxAttributes(newLimits.attributes);
    }

    std::uint32_t FeedFrom(std::uint64_t begin) {
        std::uint32_t result = 0;
        if (fromStream) {
            stream.Reset(bytes, cuts);
            EXPECT_EQ(stream.Seek(begin), 0U);
            result = parser.ParseStream(&stream, false);
        } else {
            for (const auto& [from, to] : PiecesOf(cuts, bytes.size())) {
                const std::size_t first = std::max(from, static_cast<std::size_t>(begin));
                if (first >= to || result != 0)
                    continue;
                const auto piece = std::make_unique<char[]>(to - first);
                std::memcpy(piece.get(), bytes.data() + first, to - first);
                result = parser.ParseBuffer(piece.get(), to - first);
            }
        }
        return result != 0 ? result : parser.EndParse();
    }

    Outcome TakeOutcome() {
        outcome.end = parser.GetTokenPlace().end;
        outcome.next = std::to_string(parser.GetLine()) + ":" + std::to_string(parser.GetColumn());
        return outcome;
    }

    std::string_view bytes;
    const Cuts& cuts;
    Limits limits;
    bool fromStream;
    Outcome outcome;
    CutInputStream stream;
    GenericParser parser;
    HookedObserver<C, S> observer;
};

/// Calls `run` with a reader of the flavour that a reading observes.
template <typename Run>
Outcome ReadBy(const Reading& reading, StringNS::CharSet::Code charset, std::string_view bytes, const Cuts& cuts,
               Limits limits, Run run) {
    const Cuts byteCuts = Scaled(cuts, reading.wideInput ? 2 : 1);
    if (reading.wideObserver) {
        Reader<WideChar, WideString> reader(reading, 28591, bytes, byteCuts, limits);
        return run(reader);
    }
    Reader<char, std::string> reader(reading, charset, bytes, byteCuts, limits);
    return run(reader);
}

std::string OneByOne(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

/// The first line of a document that differs from that of another one.
std::string FirstDifference(const Outcome& one, const Outcome& other) {
    std::size_t i = 0;
    while (i < std::min(one.lines.size(), other.lines.size()) && one.lines[i] == other.lines[i] &&
           one.places[i] == other.places[i])
        ++i;
    const auto show = [i](const Outcome& outcome) {
        return i < outcome.lines.size() ? outcome.lines[i] + " " + outcome.places[i]
                                        : "result " + std::to_string(outcome.result);
    };
    return show(one) + "\n" + show(other);
}

/// What is wrong with a document that was read by going on, or nothing. The self-check begins anew
/// whenever it goes on, and then does not see a fault before that.
std::string FaultOfGoingOn(Outcome goneOn, const Outcome& full, bool comparesLines) {
    if (full.result == HTML::PARSER_SELF_CHECK_FAILED && goneOn.result == 0 && goneOn.timesOver > 0) {
        goneOn.result = full.result;
        goneOn.lines.pop_back();
        goneOn.places.pop_back();
    }
    if (goneOn.result != full.result || goneOn.places != full.places || (comparesLines && goneOn.lines != full.lines))
        return "gone on, it has other tokens, or another result: " + std::to_string(goneOn.result) + "\n" +
               FirstDifference(goneOn, full);
    return "";
}

constexpr auto READ = [](auto& reader) { return reader.Read(); };
constexpr auto READ_ALL = [](auto& reader) { return reader.ReadAll(); };

template <typename T>
bool IsPrefix(const std::vector<T>& prefix, const std::vector<T>& whole) {
    return prefix.size() <= whole.size() && std::equal(prefix.begin(), prefix.end(), whole.begin());
}

/// Whether a declaration begins here that may have more items than a limit of the size allows.
bool HasManyItems(std::string_view bytes) {
    constexpr std::ptrdiff_t FEWEST_ITEMS = 32;
    if (bytes.substr(0, 2) != "<!" && bytes.substr(0, 3) != std::string_view("<\0!", 3))
        return false;
    const std::string_view declaration = bytes.substr(0, bytes.find('>'));
    return std::count_if(declaration.begin(), declaration.end(),
                         [](char c) { return c == ' ' || c == '\n' || c == '\'' || c == '"'; }) > FEWEST_ITEMS;
}

/// How many documents went over, so that a test can tell that some did and some did not.
struct Seen {
    std::size_t over = 0;
    std::size_t whole = 0;
    std::size_t goneOn = 0;
};

/// @return what is wrong with a document that is cut in some way, or nothing
std::string FaultOfLimits(const Reading& reading, StringNS::CharSet::Code charset, std::string_view bytes,
                          Limits limits, const std::vector<Cuts>& waysToCut, Seen* seen) {
    const Outcome full = ReadBy(reading, charset, bytes, {}, {}, READ);
    const Outcome limited = ReadBy(reading, charset, bytes, {}, limits, READ);
    const bool isOver = limited.result == HTML::PARSER_LIMIT_EXCEEDED;
    ++(isOver ? seen->over : seen->whole);
    if (!isOver && (limited.result != full.result || limited.lines != full.lines))
        return "nothing goes over, and yet it reads otherwise";
    if (!IsPrefix(limited.lines, full.lines) || !IsPrefix(limited.places, full.places))
        return "the tokens before the one that goes over are others\n" + OneByOne(limited.lines);
    if (limited.tokens.empty() ? limited.end != 0 && reading.wideObserver && isOver
                               : limited.end < limited.tokens.back().end)
        return "the place is not the end of the last token";
    for (const TokenPlace& token : limited.tokens) {
        if (limits.bytes != 0 && token.end - token.begin > limits.bytes)
            return "a token goes over and is delivered: " + Show(token);
    }
    if (reading.wideObserver &&
        (limits.attributes == 0 || limits.attributes == MANY_ATTRIBUTES)) {  // every token is seen
        const auto first = std::find_if(full.tokens.begin(), full.tokens.end(), [&limits](const TokenPlace& token) {
            return token.end - token.begin > limits.bytes;
        });
        if (first != full.tokens.end() && (!isOver || limited.end != first->begin) &&
            !(isOver && HasManyItems(bytes.substr(static_cast<std::size_t>(limited.end)))))
            return "it does not end before " + Show(*first);
        if (first == full.tokens.end() && isOver && full.result == 0 &&
            !HasManyItems(bytes.substr(static_cast<std::size_t>(limited.end))))
            return "nothing is too long, and yet it goes over";
        if (first != full.tokens.end() && limited.end > first->begin)
            return "it ends after " + Show(*first);
    }
    for (const Cuts& cuts : waysToCut) {
        // A cut decides about a few records, and so about the self-check, but never about what goes
        // over.
        const Outcome cutFull = ReadBy(reading, charset, bytes, cuts, {}, READ);
        const Outcome cut = ReadBy(reading, charset, bytes, cuts, limits, READ);
        const Outcome& expected = isOver ? limited : cutFull;
        const bool isSame = cut.result == expected.result && cut.places == expected.places && cut.end == limited.end &&
                            cut.next == limited.next;
        if (!isSame || !IsPrefix(cut.lines, cutFull.lines))
            return "cut at " + Describe(cuts) + " it ends with " + std::to_string(cut.result) + " at " +
                   std::to_string(cut.end) + ", " + cut.next + "; whole with " + std::to_string(limited.result) +
                   " at " + std::to_string(limited.end) + ", " + limited.next + "; cut, without limits, with " +
                   std::to_string(cutFull.result) + "\n" + OneByOne(cut.lines) + OneByOne(cut.places) +
                   OneByOne(limited.places);
        const Outcome goneOn = ReadBy(reading, charset, bytes, cuts, limits, READ_ALL);
        seen->goneOn += goneOn.timesOver;
        const std::string fault = FaultOfGoingOn(goneOn, cutFull, false);
        if (!fault.empty())
            return "cut at " + Describe(cuts) + " and " + fault;
    }
    const Outcome goneOn = ReadBy(reading, charset, bytes, {}, limits, READ_ALL);
    seen->goneOn += goneOn.timesOver;
    // A stream that is read from another place on has other reads, which decide about the tail of a
    // section.
    return FaultOfGoingOn(goneOn, full, !reading.fromStream || bytes.size() <= GenericParser::BUFFER_SIZE);
}

bool Check(const Reading& reading, StringNS::CharSet::Code charset, std::string_view latin1, Limits limits,
           const std::vector<Cuts>& waysToCut, Seen* seen) {
    const std::string bytes = reading.wideInput ? ToUtf16LE(latin1) : std::string(latin1);
    if (reading.wideInput)
        limits.bytes *= 2;
    const std::string fault = FaultOfLimits(reading, charset, bytes, limits, waysToCut, seen);
    if (fault.empty())
        return true;
    ADD_FAILURE() << Trace::Escape(latin1) << "\n"
                  << reading.name << ", at most " << limits.bytes << " bytes, " << limits.attributes << " attributes\n"
                  << fault;
    return false;
}

class LimitTest : public ShardTest {};

TEST_P(LimitTest, RandomDocuments) {
    const SilentDetector detector;
    Seen seen;
    ForEachSeed(DOCUMENTS, [&](std::uint64_t seed) {
        const Reading& reading = READINGS[seed / SHARDS % std::size(READINGS)];
        const MadeDocument made = reading.scriptsAsText ? maker.MakeWithContents(seed) : maker.Make(seed);
        const StringNS::CharSet::Code charset = made.charset == 0 ? StringNS::CharSet::WINDOWS_1252 : made.charset;
        Dice dice(seed);
        const std::size_t size = made.bytes.size();
        const std::vector<Cuts> waysToCut = {CutsOfShortReads(size, &dice), CutsEvery(dice.Between(1, 40), size)};
        Limits limits;
        if (!dice.OneIn(6))
            limits.bytes = dice.OneIn(3) ? dice.Between(1, 2000) : dice.Between(1, 60);
        if (limits.bytes == 0 || dice.OneIn(4))
            limits.attributes = dice.Between(1, 4);
        else
            limits.attributes = MANY_ATTRIBUTES;
        ASSERT_TRUE(Check(reading, charset, made.bytes, limits, waysToCut, &seen));
    });
    EXPECT_GT(seen.over, 50U);
    EXPECT_GT(seen.whole, 50U);
    EXPECT_GT(seen.goneOn, seen.over);
}

INSTANTIATE_TEST_SUITE_P(Shards, LimitTest, ALL_SHARDS);

class EnumeratedLimitTest : public FirstCharacterTest {};

TEST_P(EnumeratedLimitTest, CutIntoCharacters) {
    constexpr std::string_view CONTEXTS[] = {"", "<script>", "<script>//b", "<p a=b", "<script>a</scri"};
    const SilentDetector detector;
    Seen seen;
    std::size_t turn = 0;
    ForEachDocument(CONTEXTS, ENUMERATED_LENGTH, [&](std::string_view document, std::string_view context) {
        ++turn;
        const Cuts characters = CutsEvery(1, document.size());
        const Limits limits = {context == "<script>" || context.empty() ? 1 + turn % 3 : context.size() + turn % 4, 0};
        return Check(READINGS[turn / 4 % std::size(READINGS)], 1252, document,
                     context == "<script>" ? Limits{8 + turn % 2, 0} : limits, {characters}, &seen);
    });
    EXPECT_GT(seen.over, 0U);
}

INSTANTIATE_TEST_SUITE_P(FirstCharacter, EnumeratedLimitTest, ALL_FIRST_CHARACTERS);

}  // namespace
}  // namespace Kestra::Test
