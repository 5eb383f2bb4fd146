#include "tests/reference/DocumentTests.h"
#include "tests/reference/PlaceCheck.h"

namespace Kestra::Test {
namespace {

constexpr std::uint64_t DOCUMENTS = 20000;
constexpr std::uint64_t DOCUMENTS_WITH_CONTENTS = 12000;

/// Before the enumerated strings.
constexpr std::string_view CONTEXTS[] = {"", "<script>", "<style>", "<p a=b", "<script>//"};

/// Whoever reads and whoever observes. The parsers with observers of their own flavour come first.
constexpr PlacedReading READINGS[] = {
    {1252, false, false, true},  {1252, true, true, true},  {1252, false, true, true},  {1252, true, false, true},
    {1252, false, false, false}, {1252, true, true, false}, {1252, false, true, false}, {1252, true, false, false},
};

bool Check(PlaceChecker* checker, std::string_view document, const PlacedReading& reading, const Cuts& cuts,
           PlacesSeen* seen) {
    const std::string fault = checker->Fault(document, reading, cuts, seen);
    if (fault.empty())
        return true;
    const bool isAlways = !PlaceChecker().Fault(document, reading, cuts, seen).empty();
    ADD_FAILURE() << (isAlways ? "" : "only after other documents: ") << Trace::Escape(document) << "\ncut at "
                  << Describe(cuts) << (reading.wideInput ? ", wide parser" : ", 8-bit parser")
                  << (reading.wideObserver ? ", wide observer" : ", 8-bit observer")
                  << (reading.fromStream ? ", stream" : ", buffers")
                  << (reading.scriptsAsText ? ", scripts as text" : "") << "\n"
                  << fault;
    return false;
}

class PlaceTest : public ShardTest {};

TEST_P(PlaceTest, RandomDocuments) {
    const SilentDetector detector;
    PlaceChecker checker;
    PlacesSeen seen;
    ForEachSeed(DOCUMENTS, [&](std::uint64_t seed) {
        const MadeDocument made = maker.Make(seed);
        Dice dice(seed);
        const Cuts shortReads = CutsOfShortReads(made.bytes.size(), &dice);
        // Each of the two by turns from a stream and from buffers, and one of the others.
        const std::size_t feed = seed / SHARDS % 2 * 4;
        for (const std::size_t index : {feed, 5 - feed, seed / SHARDS % 8}) {
            PlacedReading reading = READINGS[index];
            reading.charset = made.charset;
            ASSERT_TRUE(Check(&checker, made.bytes, reading, {}, &seen));
            ASSERT_TRUE(Check(&checker, made.bytes, reading, shortReads, &seen));
        }
    });
    // It has seen all that it is for.
    EXPECT_GT(seen.tokens, 50000U);
    EXPECT_GT(seen.exact, seen.tokens / 2);
    EXPECT_GT(seen.attributes, 5000U);
    EXPECT_GT(seen.words, 1000U);
    EXPECT_GT(seen.holes, 0U);
}

TEST_P(PlaceTest, DocumentsWithContents) {
    const SilentDetector detector;
    PlaceChecker checker;
    PlacesSeen seen;
    ForEachSeed(DOCUMENTS_WITH_CONTENTS, [&](std::uint64_t seed) {
        const MadeDocument made = maker.MakeWithContents(seed);
        Dice dice(seed);
        PlacedReading reading = READINGS[seed / SHARDS % 8];
        reading.charset = made.charset;
        reading.scriptsAsText = true;
        ASSERT_TRUE(Check(&checker, made.bytes, reading, {}, &seen));
        ASSERT_TRUE(Check(&checker, made.bytes, reading, CutsOfShortReads(made.bytes.size(), &dice), &seen));
    });
    EXPECT_GT(seen.tokens, DOCUMENTS_WITH_CONTENTS / SHARDS * 4);
    EXPECT_GT(seen.exact, seen.tokens / 2);
    EXPECT_EQ(seen.holes, 0U);
}

INSTANTIATE_TEST_SUITE_P(Shards, PlaceTest, ALL_SHARDS);

class EnumeratedPlaceTest : public FirstCharacterTest {};

TEST_P(EnumeratedPlaceTest, WholeAndInShortReads) {
    PlaceChecker checker;
    PlacesSeen seen;
    Dice dice(GetParam());
    ForEachDocument(CONTEXTS, ENUMERATED_LENGTH, [&](std::string_view document, std::string_view) {
        const Cuts shortReads = CutsOfShortReads(document.size(), &dice);
        bool isGood = true;
        for (const PlacedReading& reading : {READINGS[0], READINGS[1], READINGS[2]})
            isGood = isGood && Check(&checker, document, reading, {}, &seen) &&
                     Check(&checker, document, reading, shortReads, &seen);
        return isGood;
    });
}

TEST_P(EnumeratedPlaceTest, CutInEveryWay) {
    PlaceChecker checker;
    PlacesSeen seen;
    ForEachDocument(CONTEXTS, CUT_LENGTH, [&](std::string_view document, std::string_view context) {
        bool isGood = true;
        ForEverySplitOfTheTail(document.size(), document.size() - context.size(), [&](const Cuts& cuts) {
            for (const PlacedReading& reading : READINGS)
                isGood = isGood && Check(&checker, document, reading, cuts, &seen);
            return isGood;
        });
        return isGood;
    });
}

INSTANTIATE_TEST_SUITE_P(FirstCharacter, EnumeratedPlaceTest, ALL_FIRST_CHARACTERS);

TEST(PagePlaceTest, ExamplePages) {
    const SilentDetector detector;
    PlaceChecker checker;
    PlacesSeen seen;
    for (const std::string& page : Pages()) {
        for (const PlacedReading& reading : READINGS) {
            EXPECT_TRUE(Check(&checker, page, reading, {}, &seen));
            for (const std::size_t size : {1U, 7U, 64U, 4096U})
                EXPECT_TRUE(Check(&checker, page, reading, CutsEvery(size, page.size()), &seen));
        }
    }
    EXPECT_GT(seen.tokens, 1000U);
}

/// Keeps the place of the last start tag, and that of its attribute.
class LastTag final : public HTML::ParserObserver<char, std::string> {
public:
    explicit LastTag(const HTML::GenericParser* observedParser) : parser(observedParser) {}

    void OnStartTag(HTML::StartTagData<char, std::string>*) override {
        place = parser->GetTokenPlace();
        parser->GetAttributePlace(0, &attribute);
    }

    HTML::TokenPlace place;
    HTML::AttributePlace attribute;

private:
    const HTML::GenericParser* parser;
};

TEST(LongPlaceTest, BeyondFourGiB) {
    constexpr std::uint64_t BLOCK = 65536;
    constexpr std::uint64_t BLOCKS = (std::uint64_t{1} << 32) / BLOCK + 3;
    for (const bool wide : {false, true}) {
        std::string block = wide ? ToUtf16LE(std::string_view("<p>\n")) : "<p>\n";
        while (block.size() < BLOCK)
            block += wide ? std::string("x\0", 2) : "x";
        const std::string end = "<a b=c>";
        const std::string endBytes = wide ? ToUtf16LE(std::string_view(end)) : end;
        const std::uint64_t size = wide ? 2 : 1;
        HTML::GenericParser parser;
        LastTag observer(&parser);
        parser.StartParse(1252, wide ? HTML::GenericParser::DATA_STREAM_UTF16 : HTML::GenericParser::DATA_STREAM_8BIT);
        for (std::uint64_t i = 0; i < BLOCKS; ++i)
            ASSERT_EQ(parser.ParseBuffer(block.data(), block.size()), 0U);
        parser.SetObserver(&observer, false);
        ASSERT_EQ(parser.ParseBuffer(endBytes.data(), endBytes.size()), 0U);
        EXPECT_EQ(observer.place.begin, BLOCKS * BLOCK);
        EXPECT_EQ(observer.place.end, BLOCKS * BLOCK + 7 * size);
        EXPECT_EQ(observer.place.line, BLOCKS + 1);
        EXPECT_EQ(observer.place.column, (BLOCK - 4 * size) / size + 1);
        EXPECT_EQ(observer.attribute.nameBegin, BLOCKS * BLOCK + 3 * size);
        EXPECT_EQ(observer.attribute.valueEnd, BLOCKS * BLOCK + 6 * size);
    }
}

}  // namespace
}  // namespace Kestra::Test
