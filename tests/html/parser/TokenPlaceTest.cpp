#include <stdexcept>

#include "tests/html/parser/DocumentRows.h"

namespace Kestra::Test {
namespace {

using HTML::AttributePlace;
using HTML::TokenPlace;

std::string Show(const TokenPlace& place) {
    return std::to_string(place.begin) + "-" + std::to_string(place.end) + "@" + std::to_string(place.line) + ":" +
           std::to_string(place.column);
}

/// The lines of a parse, each with its place.
class PlacedRun : public FedParser {
public:
    explicit PlacedRun(Observed observed = Observed::NARROW) : FedParser(observed) {
        SetHook([this](const std::string& line) {
            placed += line + " " + Show(GetTokenPlace()) + "\n";
            if (line == throwingLine)
                throw std::runtime_error("an observer's own");
        });
    }

    std::string placed;
    std::string throwingLine;  // whose callback throws
};

TEST(TokenPlaceTest, Documents) {
    struct Row {
        const char* note;
        GenericParser::DataStreamType type;
        std::vector<std::string> pieces;
        const char* placed;
    };
    const auto utf16 = [](std::string_view text) { return ToUtf16LE(text); };
    const Row rows[] = {
        {"text and tags",
         DATA_STREAM_8BIT,
         {"ab\n<b>c</b>"},
         "start-parsing 0-0@1:1\ncharset(1252) 0-0@1:1\ntext(ab\\n) 0-3@1:1\nstart(|b||) 3-6@2:1\ntext(c) "
         "6-7@2:4\nend(|b|||) 7-11@2:5\n"
         "end-parsing 11-11@2:9\n"},
        {"openers that are cut",
         DATA_STREAM_8BIT,
         {"a<", "b", ">c<", "/", "b>"},
         "start-parsing 0-0@1:1\ncharset(1252) 0-0@1:1\ntext(a) 0-1@1:1\nstart(|b||) 1-4@1:2\ntext(c) "
         "4-5@1:5\nend(|b|||) 5-9@1:6\n"
         "end-parsing 9-9@1:10\n"},
        {"callbacks without a record have the place of their tag",
         DATA_STREAM_8BIT,
         {"<script>a</script>"},
         "start-parsing 0-0@1:1\ncharset(1252) 0-0@1:1\nstart(|script||) 0-8@1:1\njs-start 0-8@1:1\ntext(a) 8-9@1:9\n"
         "end(|script|||) 9-18@1:10\njs-end 9-18@1:10\nend-parsing 18-18@1:19\n"},
        {"an 8-bit observer is not given a line comment, which is a hole",
         DATA_STREAM_8BIT,
         {"<script>a//b\nc"},
         "start-parsing 0-0@1:1\ncharset(1252) 0-0@1:1\nstart(|script||) 0-8@1:1\njs-start 0-8@1:1\ntext(a) "
         "8-9@1:9\ntext(\\nc) "
         "12-14@1:13\n"
         "end-parsing 14-14@2:2\n"},
        {"the tokens of a script, and their openers",
         DATA_STREAM_8BIT,
         {"<script>a'b'c/*d*/e/f/g</p>"},
         "start-parsing 0-0@1:1\ncharset(1252) 0-0@1:1\nstart(|script||) 0-8@1:1\njs-start 0-8@1:1\ntext(a) "
         "8-9@1:9\ns-string(b) "
         "9-12@1:10\n"
         "text(c) 12-13@1:13\nc-comment(d) 13-18@1:14\ntext(e) 18-19@1:19\ntext(/f) 19-21@1:20\ntext(/g) "
         "21-23@1:22\ntext(</p>) "
         "23-27@1:24\nend-parsing "
         "27-27@1:28\n"},
        {"a UTF-8 mark",
         DATA_STREAM_AUTO,
         {"\xEF\xBB\xBF"
          "a<b>"},
         "start-parsing 0-0@1:1\nbom(EF BB BF) 0-3@1:1\ntext(a) 3-4@1:1\nstart(|b||) 4-7@1:2\nend-parsing 7-7@1:5\n"},
        {"a UTF-8 mark in pieces",
         DATA_STREAM_AUTO,
         {"\xEF", "\xBB", "\xBF", "a<b>"},
         "start-parsing 0-0@1:1\nbom(EF BB BF) 0-3@1:1\ntext(a) 3-4@1:1\nstart(|b||) 4-7@1:2\nend-parsing 7-7@1:5\n"},
        {"a UTF-16 mark",
         DATA_STREAM_AUTO,
         {"\xFF\xFE" + utf16("a<b>")},
         "start-parsing 0-0@1:1\nbom(FF FE) 0-2@1:1\ntext(a\\x00) 2-4@1:1\nstart(|b\\x00||) 4-10@1:2\nend-parsing "
         "10-10@1:5\n"},
        {"UTF-16, in bytes, lines and columns in characters",
         DATA_STREAM_UTF16,
         {utf16("a\n<b>")},
         "start-parsing 0-0@1:1\ncharset(1200) 0-0@1:1\ntext(a\\x00\\n\\x00) 0-4@1:1\nstart(|b\\x00||) "
         "4-10@2:1\nend-parsing 10-10@2:4\n"},
        {"a byte of a mark that is none, in an earlier piece, is in no token",
         DATA_STREAM_AUTO,
         {"\xEF", "a<b>"},
         "start-parsing 1-1@1:1\ntext(a) 1-2@1:1\nstart(|b||) 2-5@1:2\nend-parsing 5-5@1:5\n"},
        {"two bytes of one",
         DATA_STREAM_AUTO,
         {"\xEF", "\xBB", "a<b>"},
         "start-parsing 2-2@1:1\ntext(a) 2-3@1:1\nstart(|b||) 3-6@1:2\nend-parsing 6-6@1:5\n"},
        {"the byte of the other one",
         DATA_STREAM_AUTO,
         {"\xFF", "a<b>"},
         "start-parsing 1-1@1:1\ntext(a) 1-2@1:1\nstart(|b||) 2-5@1:2\nend-parsing 5-5@1:5\n"},
        {"in the piece itself they are text",
         DATA_STREAM_AUTO,
         {"\xEF\xBB"
          "a<b>"},
         "start-parsing 0-0@1:1\ntext(\\xEF\\xBBa) 0-3@1:1\nstart(|b||) 3-6@1:4\nend-parsing 6-6@1:7\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        PlacedRun run;
        run.Start(1252, row.type);
        for (const std::string& piece : row.pieces)
            EXPECT_EQ(run.Feed(piece), 0U);
        EXPECT_EQ(run.EndParse(), 0U);
        EXPECT_EQ(run.placed, row.placed);
    }
}

TEST(TokenPlaceTest, EveryDocumentBeginsAnew) {
    PlacedRun run;
    for (int document = 0; document < 2; ++document) {
        run.Start();
        run.placed.clear();
        EXPECT_EQ(run.Feed("ab<c>d"), 0U);
        EXPECT_EQ(run.EndParse(), 0U);
        EXPECT_EQ(run.placed, "text(ab) 0-2@1:1\nstart(|c||) 2-5@1:3\ntext(d) 5-6@1:6\nend-parsing 6-6@1:7\n");
    }
}

TEST(TokenPlaceTest, WhatIsLostAfterAnExceptionIsInNoToken) {
    PlacedRun run;
    run.Start();
    run.placed.clear();
    run.throwingLine = "start(|b||)";
    EXPECT_THROW(run.Feed("a<b>lost"), std::runtime_error);
    EXPECT_EQ(run.Feed("c<d>"), 0U);
    EXPECT_EQ(run.placed, "text(a) 0-1@1:1\nstart(|b||) 1-4@1:2\ntext(c) 8-9@1:5\nstart(|d||) 9-12@1:6\n");

    // An opener that has been read is lost as well.
    run.Start();
    run.placed.clear();
    run.throwingLine = "text(a)";
    EXPECT_THROW(run.Feed("a<"), std::runtime_error);
    EXPECT_EQ(run.Feed("c<d>"), 0U);
    EXPECT_EQ(run.placed, "text(a) 0-1@1:1\ntext(c) 2-3@1:3\nstart(|d||) 3-6@1:4\n");
}

/// So is the first piece when a callback throws before any of it is parsed.
TEST(TokenPlaceTest, WhatIsLostAtTheVeryBeginIsInNoToken) {
    PlacedRun run;
    run.Start(1252, DATA_STREAM_AUTO);
    run.throwingLine = "start-parsing";
    EXPECT_THROW(run.Feed("lost"), std::runtime_error);
    run.placed.clear();
    EXPECT_EQ(run.Feed("c<d>"), 0U);
    EXPECT_EQ(run.placed, "text(c) 4-5@1:1\nstart(|d||) 5-8@1:2\n");

    // With a mark that lies in two pieces.
    run.Start(1252, DATA_STREAM_AUTO);
    EXPECT_EQ(run.Feed("\xEF"), 0U);
    EXPECT_THROW(run.Feed("\xBB\xBFlost"), std::runtime_error);
    run.placed.clear();
    EXPECT_EQ(run.Feed("c<d>"), 0U);
    EXPECT_EQ(run.placed, "text(c) 7-8@1:1\nstart(|d||) 8-11@1:2\n");

    PlacedRun wide(Observed::WIDE);
    wide.Start(1252, DATA_STREAM_AUTO);
    wide.throwingLine = "start-parsing";
    EXPECT_THROW(wide.Feed("\xFF\xFE" + ToUtf16LE(std::string_view("lost"))), std::runtime_error);
    wide.placed.clear();
    EXPECT_EQ(wide.Feed(ToUtf16LE(std::string_view("c<d>"))), 0U);
    EXPECT_EQ(wide.placed, "text(c) 10-12@1:1\nstart(|d||) 12-18@1:2\n");
}

TEST(TokenPlaceTest, ARecordThatCannotBeConvertedIsAHole) {
    PlacedRun run(Observed::WIDE);
    run.Start(99999, DATA_STREAM_8BIT);
    run.placed.clear();
    EXPECT_EQ(run.Feed("ab<!-- -->"), 0U);
    EXPECT_EQ(run.EndParse(), 0U);
    EXPECT_EQ(run.placed, "end-parsing 10-10@1:11\n");
}

TEST(TokenPlaceTest, WithoutARunningParserItIsTheBegin) {
    const GenericParser parser;
    EXPECT_EQ(Show(parser.GetTokenPlace()), "0-0@1:1");
    AttributePlace place;
    EXPECT_EQ(parser.GetAttributePlace(0, &place), 2U);
    EXPECT_EQ(parser.GetAttributePlace(0, nullptr), 2U);
    std::vector<AttributePlace> parts(3);
    EXPECT_EQ(parser.GetAttributeParts(0, &parts), 2U);
    EXPECT_EQ(parts.size(), 3U);
    EXPECT_EQ(parser.GetAttributeParts(0, nullptr), 2U);
}

TEST(TokenPlaceTest, ACopyGoesOnWithThem) {
    PlacedRun run;
    run.Start();
    EXPECT_EQ(run.Feed("ab<c d"), 0U);
    GenericParser copy(run);
    Lines lines;
    NarrowObserver observer(&lines);
    std::string place;
    observer.hook = [&](const std::string&) { place = Show(copy.GetTokenPlace()); };
    copy.SetObserver(&observer, false);
    EXPECT_EQ(copy.ParseBuffer(">", 1), 0U);
    EXPECT_EQ(place, "2-7@1:3");
}

/// What `find` says in each callback of a document.
std::string FindByRoute(const Route& route, std::string_view document, StringNS::CharSet::Code charset,
                        const std::function<std::string(const GenericParser& parser)>& find) {
    FedParser parser(route.observed);
    std::string found;
    parser.SetHook([&](const std::string&) { found += find(parser); });
    parser.Start(charset, TypeFor(route.wideInput));
    EXPECT_EQ(parser.Feed(BytesFor(document, route.wideInput)), 0U);
    return found;
}

/// "BEGIN NAME-NAME VALUE-VALUE END" of each attribute, as they are asked for.
std::string AttributesOf(const Route& route, std::string_view document, const std::vector<std::uint64_t>& order) {
    return FindByRoute(route, document, 1252, [&order](const GenericParser& parser) {
        std::string found;
        for (const std::uint64_t index : order) {
            AttributePlace place;
            if (parser.GetAttributePlace(index, &place) == 0)
                found += std::to_string(place.begin) + " " + std::to_string(place.nameBegin) + "-" +
                         std::to_string(place.nameEnd) + " " + std::to_string(place.valueBegin) + "-" +
                         std::to_string(place.valueEnd) + " " + std::to_string(place.end) + "\n";
        }
        return found;
    });
}

TEST(AttributePlaceTest, Tags) {
    struct Row {
        const char* note;
        const char* document;
        const char* places;
    };
    const Row rows[] = {
        {"no tag", "a<!-- b=c -->", ""},
        {"a tag without attributes", "<a>", ""},
        {"one of each quote", "<a b=c d='e' f=\"g\">", "2 3-4 5-6 6\n6 7-8 10-11 12\n12 13-14 16-17 18\n"},
        {"white space everywhere", "< a  b = 'c' >", "3 5-6 10-11 12\n"},
        {"no value, and an empty one", "<a b c=''>", "2 3-4 4-4 4\n4 5-6 8-8 9\n"},
        {"a value with bare words", "<a href=\"/one\" download>", "2 3-7 8-23 23\n"},
        {"a short tag", "<a b=c />", "2 3-4 5-6 6\n"},
        {"an end tag", "</a b=c>", "4 4-5 6-7 7\n"},
        {"an XML declaration", "x<?xml version='1.0' encoding=\"a\"?>", "6 7-14 16-19 20\n20 21-29 31-32 33\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        const std::vector<std::uint64_t> order = {0, 1, 2, 3};
        EXPECT_EQ(AttributesOf(NARROW_TO_NARROW, row.document, order), row.places);
        EXPECT_EQ(AttributesOf(NARROW_TO_WIDE, row.document, order), row.places);
        // In UTF-16 every offset is twice as far.
        std::string twice;
        std::string number;
        for (const char character : std::string(row.places)) {
            if (character >= '0' && character <= '9') {
                number += character;
                continue;
            }
            twice += std::to_string(2 * std::stoul(number)) + character;
            number.clear();
        }
        EXPECT_EQ(AttributesOf(WIDE_TO_WIDE, row.document, order), twice);
        EXPECT_EQ(AttributesOf(WIDE_TO_NARROW, row.document, order), twice);
    }
}

/// "NAME-NAME VALUE-VALUE" of each part of each attribute.
std::string PartsOf(const Route& route, std::string_view document, StringNS::CharSet::Code charset) {
    return FindByRoute(route, document, charset, [](const GenericParser& parser) {
        std::string found;
        std::vector<AttributePlace> parts;
        AttributePlace whole;
        for (std::uint64_t index = 0; parser.GetAttributeParts(index, &parts) == 0; ++index) {
            EXPECT_EQ(parser.GetAttributePlace(index, &whole), 0U);
            EXPECT_EQ(parts.front().begin, whole.begin);
            EXPECT_EQ(parts.back().end, whole.end);
            for (std::size_t i = 0; i < parts.size(); ++i) {
                EXPECT_EQ(parts[i].begin, i == 0 ? whole.begin : parts[i - 1].end);
                found += std::to_string(parts[i].nameBegin) + "-" + std::to_string(parts[i].nameEnd) + " " +
                         std::to_string(parts[i].valueBegin) + "-" + std::to_string(parts[i].valueEnd) + "\n";
            }
        }
        return found;
    });
}

TEST(AttributePlaceTest, Parts) {
    struct Row {
        const char* note;
        std::string document;
        std::string places;
    };
    const std::string runOfQuotes = "\x1B$B\"\"\x1B(B";
    const Row rows[] = {
        {"nothing taken up", "<a b='c d' e>", "3-4 6-9\n11-12 12-12\n"},
        {"one word", "<a href=\"/one\" download>", "3-7 9-13\n15-23 23-23\n"},
        {"several", "<a b='c'd e  f=g h />", "3-4 6-7\n8-9 9-9\n10-11 11-11\n13-14 15-16\n17-18 18-18\n"},
        {"an end tag", "</a b=c d>", "4-5 6-7\n8-9 9-9\n"},
        {"an instruction folds nothing", "<?xml a='1' b?>", "6-7 9-10\n12-13 13-13\n"},
        {"white space that only wide text knows",
         "<a b=c\xA0"
         "d e>",
         "3-4 5-8\n9-10 10-10\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        EXPECT_EQ(PartsOf(NARROW_TO_NARROW, row.document, 1252), row.places);
        EXPECT_EQ(PartsOf(NARROW_TO_WIDE, row.document, 1252), row.places);
    }
    const Row iso2022[] = {
        {"a value with an escape run", "<a b=\"" + runOfQuotes + "\" c>", "3-4 6-14\n16-17 17-17\n"},
        {"after a value without quotes there are none", "<a b=c d=\"" + runOfQuotes + "\" e>",
         "3-4 5-6\n7-8 10-13\n14-19 19-19\n20-21 21-21\n"},
        {"after a word there are", "<a b=c x d=\"" + runOfQuotes + "\" e>",
         "3-4 5-6\n7-8 8-8\n9-10 12-20\n22-23 23-23\n"},
        {"so there are in an end tag", "</a b=c d=\"" + runOfQuotes + "\" e>", "4-5 6-7\n8-9 11-19\n21-22 22-22\n"},
    };
    for (const Row& row : iso2022) {
        SCOPED_TRACE(row.note);
        EXPECT_EQ(PartsOf(NARROW_TO_NARROW, row.document, 50221), row.places);
    }
}

TEST(AttributePlaceTest, NothingIsKeptFromTheDocumentBefore) {
    FedParser parser;
    AttributePlace place;
    parser.SetHook([&](const std::string&) { parser.GetAttributePlace(1, &place); });
    for (const std::string_view document : {"<a b=c d=e>", "<a long=c d=e>"}) {
        parser.Start();
        EXPECT_EQ(parser.Feed(document), 0U);
        EXPECT_EQ(place.nameBegin, document.find('d'));
    }
}

TEST(AttributePlaceTest, InAnyOrder) {
    EXPECT_EQ(AttributesOf(NARROW_TO_NARROW, "<a b=c d=e f=g><h i=j>", {2, 0, 1, 1, 9, 0}),
              "10 11-12 13-14 14\n2 3-4 5-6 6\n6 7-8 9-10 10\n6 7-8 9-10 10\n2 3-4 5-6 6\n17 18-19 20-21 21\n17 18-19 "
              "20-21 21\n");
}

}  // namespace
}  // namespace Kestra::Test
