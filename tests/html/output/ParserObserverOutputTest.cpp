#include "html/output/ParserObserverOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/Flavours.h"
#include "tests/support/NotedRecord.h"
#include "tests/support/RecordWriter.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;

struct Piece {
    std::string bytes;
    bool isMarkup = false;
};

/// Keeps the pieces apart.
class PieceSink final : public HTML::ParserObserverOutputHandler {
public:
    void Write(const void* data, std::uint64_t byteCount, bool isMarkup) override {
        std::string bytes;
        if (byteCount > 0)
            bytes.assign(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
        pieces.push_back({bytes, isMarkup});
    }

    std::vector<Piece> pieces;
};

/// A serializer that keeps the pieces apart.
template <typename C, typename S>
class PieceOutput final : public HTML::ParserObserverOutput<C, S> {
public:
    void OnOutput(const void* data, std::uint64_t byteCount, bool isMarkup) override {
        sink.Write(data, byteCount, isMarkup);
    }

    PieceSink sink;
};

/// Each piece in brackets, one that is no markup in braces. A wide piece must be whole characters,
/// one that is no markup need not be: its bytes are shown.
template <typename Flavour>
std::string Show(const std::vector<Piece>& pieces) {
    std::string line;
    for (const Piece& piece : pieces) {
        if (!piece.isMarkup) {
            line += "{" + Trace::Escape(piece.bytes) + "}";
        } else if (Flavour::WIDE) {
            WideString text;
            for (std::size_t i = 0; i + 1 < piece.bytes.size(); i += 2) {
                text.push_back(static_cast<WideChar>(static_cast<unsigned char>(piece.bytes[i]) |
                                                     static_cast<unsigned char>(piece.bytes[i + 1]) << 8));
            }
            line += "[" + Trace::Escape(text) + (piece.bytes.size() % 2 == 0 ? "]" : " and a half]");
        } else {
            line += "[" + Trace::Escape(piece.bytes) + "]";
        }
    }
    return line;
}

/// The pieces that a static writer gives for a record.
template <typename Flavour, template <typename, typename> class Record>
std::string Written(const Record<typename Flavour::C, typename Flavour::S>& record) {
    PieceSink sink;
    WriteRecord(record, &sink);
    return Show<Flavour>(sink.pieces);
}

/// The same for the record that a line of the trace language tells.
template <typename Flavour>
std::string WrittenLine(std::string_view line) {
    std::string written;
    UseNotedRecord<typename Flavour::C, typename Flavour::S>(
        line, [&](const auto* record) { written = Written<Flavour>(*record); });
    return written;
}

/// What is written of a body: as many bytes as it has characters, so only the first half of a wide
/// one.
template <typename Flavour>
std::string ShowBodies(std::string_view expected) {
    std::string shown;
    while (!expected.empty()) {
        const std::size_t begin = std::min(expected.find('{'), expected.size());
        shown += expected.substr(0, begin);
        if (begin == expected.size())
            break;
        const std::size_t end = expected.find('}', begin);
        const auto body = To<typename Flavour::S>(expected.substr(begin + 1, end - begin - 1));
        shown += "{" + Trace::Escape(std::string(reinterpret_cast<const char*>(body.data()), body.size())) + "}";
        expected.remove_prefix(end + 1);
    }
    return shown;
}

template <typename Flavour>
class ParserObserverOutputTest : public testing::Test {
protected:
    template <template <typename, typename> class Record>
    using Noted = NotedRecord<Record, typename Flavour::C, typename Flavour::S>;
};

TYPED_TEST_SUITE(ParserObserverOutputTest, Flavours);

TYPED_TEST(ParserObserverOutputTest, Pieces) {
    struct Case {
        const char* note;
        std::string_view record;
        std::string_view expected;
    };
    const Case CASES[] = {
        {"text", "text(a<b)", "[a<b]"},
        {"empty text is an empty piece", "text()", "[]"},
        {"text with a NUL", "text(a\\x00b)", "[a\\x00b]"},
        {"a block comment", "c-comment( c )", "[/][*][ c ][*][/]"},
        {"an empty block comment", "c-comment()", "[/][*][][*][/]"},
        {"a line comment", "cpp-comment( c)", "[/][/][ c]"},
        {"a string in apostrophes", "s-string(s\\\\')", "['][s\\\\'][']"},
        {"a string in quotation marks", "d-string(d\\\\\")", "[\"][d\\\\\"][\"]"},

        {"a start tag", "start(|a||)", "[<][][a][][>]"},
        {"a start tag with white space", "start( |a||\\n)", "[<][ ][a][\\n][>]"},
        {"an unclosed tag loses its suffix together with its closing mark", "start( |a||\\n, open)", "[<][ ][a]"},
        {"a start tag with attributes", "start(|a|{ |b| = |'c'}{ |d}| )",
         "[<][][a][ ][b][ ][=][ ]['][c]['][ ][d][ ][>]"},
        {"unclosed", "start(|a|{ |b| = |'c'}{ |d}| , open)", "[<][][a][ ][b][ ][=][ ]['][c]['][ ][d]"},

        {"a short tag", "short(|br||)", "[<][][br][][/][>]"},
        {"a short tag with white space", "short( |br|| )", "[<][ ][br][ ][/][>]"},
        {"an unclosed short tag keeps its suffix and its slash", "short( |br|| , open)", "[<][ ][br][ ][/]"},
        {"a short tag with an attribute", "short(|br|{ |b|=|\"c\"}|)", "[<][][br][ ][b][][=][][\"][c][\"][][/][>]"},
        {"unclosed", "short(|br|{ |b|=|\"c\"}|, open)", "[<][][br][ ][b][][=][][\"][c][\"][][/]"},

        {"a bare value", "start(|a|{ |b|\\t=\\n|c}|)", "[<][][a][ ][b][\\t][=][\\n][c][][>]"},
        {"a value in apostrophes", "start(|a|{ |b|\\t=\\n|'c'}|)", "[<][][a][ ][b][\\t][=][\\n]['][c]['][][>]"},
        {"a value in quotation marks", "start(|a|{ |b|\\t=\\n|\"c\"}|)", "[<][][a][ ][b][\\t][=][\\n][\"][c][\"][][>]"},
        {"any other kind writes nothing for the value", "start(|a|{ |b|\\t=\\n|?c?}|)",
         "[<][][a][ ][b][\\t][=][\\n][][>]"},
        {"an empty bare value is an empty piece", "start(|a|{ |b|\\t=\\n|}|)", "[<][][a][ ][b][\\t][=][\\n][][][>]"},
        {"an empty quoted value is an empty piece", "start(|a|{ |b|\\t=\\n|\"\"}|)",
         "[<][][a][ ][b][\\t][=][\\n][\"][][\"][][>]"},

        {"an end tag", "end(|a| ||)", "[<][/][][a][ ][>]"},
        {"an unclosed end tag", "end( |a|||, open)", "[<][/][ ][a][]"},
        {"an end tag with a slash", "end(|a| ||, slash)", "[<][/][][a][ ][/][>]"},
        {"unclosed with a slash", "end(|a| ||, slash, open)", "[<][/][][a][ ][/]"},
        {"an empty list takes the suffix with it", "end(|a| ||\\n)", "[<][/][][a][ ][>]"},
        {"so does no list at all", "end(|a| |null|\\n)", "[<][/][][a][ ][>]"},
        {"an end tag with attributes", "end(|a| |{|x}{ |y|=|'z'}|\\n, slash)",
         "[<][/][][a][ ][][x][ ][y][][=][]['][z]['][\\n][/][>]"},
        {"an unclosed end tag keeps its suffix", "end(|a| |{|x}{ |y|=|'z'}|\\n, open)",
         "[<][/][][a][ ][][x][ ][y][][=][]['][z]['][\\n]"},

        {"a declaration", "entity(|DOCTYPE||)", "[<][!][][DOCTYPE][][>]"},
        {"with items", "entity( |DOCTYPE|{ |html}{\\n|'a'}{|\"b\"}|\\t)",
         "[<][!][ ][DOCTYPE][ ][html][\\n]['][a]['][][\"][b][\"][\\t][>]"},
        {"an XML declaration", "extern(|xml|{ |version|=|\"1.0\"}{ |x}| )",
         "[<][?][][xml][ ][version][][=][][\"][1.0][\"][ ][x][ ][?][>]"},

        {"a comment", "comment( x-y)", "[<][!][-][-]{ x-y}[-][-][>]"},
        {"an open comment", "comment( x-, open)", "[<][!][-][-]{ x-}"},
        {"an empty comment", "comment()", "[<][!][-][-]{}[-][-][>]"},
        {"a CDATA section", "cdata(CDATA|[x)", "[<][!][[][CDATA]{[x}[]][]][>]"},
        {"an open CDATA section", "cdata(cdata|[x], open)", "[<][!][[][cdata]{[x]}"},
        {"a conditional section", "conditional(if| IE 6| --)", "[<][!][[][if]{ IE 6}[]]{ --}[>]"},
        {"without its end", "conditional(if| IE 6| --, open)", "[<][!][[][if]{ IE 6}[]]"},
        {"without its bracket", "conditional(if| IE 6| --, no-bracket)", "[<][!][[][if]{ IE 6}{ --}[>]"},
        {"without either", "conditional(if| IE 6| --, no-bracket, open)", "[<][!][[][if]{ IE 6}"},

        {"null: text", "text(null)", "[]"},
        {"null: a block comment", "c-comment(null)", "[/][*][][*][/]"},
        {"null: a line comment", "cpp-comment(null)", "[/][/][]"},
        {"null: a string in apostrophes", "s-string(null)", "['][][']"},
        {"null: a string in quotation marks", "d-string(null)", "[\"][][\"]"},
        {"null: junk", "junk(null)", "{}"},
        {"null: a start tag", "start(null|null|null|null)", "[<][][][][>]"},
        {"null: a short tag", "short(null|null|null|null)", "[<][][][][/][>]"},
        {"null: an end tag", "end(null|null|null|null|null, slash)", "[<][/][][][][/][>]"},
        {"null: an end tag with an attribute", "end(null|null|null|{|x}|null)", "[<][/][][][][][x][][>]"},
        {"null: a CDATA section", "cdata(null|null)", "[<][!][[][]{}[]][]][>]"},
        {"null: a conditional section", "conditional(null|null|null)", "[<][!][[][]{}[]]{}[>]"},
        {"null: a comment", "comment(null)", "[<][!][-][-]{}[-][-][>]"},
        {"null: a declaration", "entity(null|null|null|null)", "[<][!][][][][>]"},
        {"null: an XML declaration", "extern(null|null|null|null)", "[<][?][][][][?][>]"},
        {"null: an instruction", "extern-text(null)", "[]"},
    };
    for (const Case& c : CASES) {
        SCOPED_TRACE(c.note);
        EXPECT_EQ(WrittenLine<TypeParam>(c.record), ShowBodies<TypeParam>(c.expected));
    }
}

/// What the notation cannot tell.
TYPED_TEST(ParserObserverOutputTest, FieldsThatMeanNothing) {
    typename TestFixture::template Noted<HTML::StartTagData> tag("start(|a|{ |b|\\t=\\n|c}|)");
    auto attributes = *tag.record.attributes;
    tag.record.attributes = &attributes;
    attributes.back().quote = 0xFFFFFFFF;
    EXPECT_EQ(Written<TypeParam>(tag.record), "[<][][a][ ][b][\\t][=][\\n][][>]")
        << "a huge kind writes nothing for the value";
    attributes.back().hasValue = false;
    EXPECT_EQ(Written<TypeParam>(tag.record), "[<][][a][ ][b][][>]")
        << "without a value only prefix and name mean something";

    const auto ignored = To<typename TypeParam::S>("ignored");
    typename TestFixture::template Noted<HTML::ExternTagData> declaration("extern( |xml||\\n)");
    declaration.record.text = &ignored;
    EXPECT_EQ(Written<TypeParam>(declaration.record), "[<][?][ ][xml][\\n][?][>]");
    typename TestFixture::template Noted<HTML::ExternTagData> slash("extern(|xml||, slash)");
    slash.record.text = &ignored;
    EXPECT_EQ(Written<TypeParam>(slash.record), "[<][?][][xml][][/][>]");
    typename TestFixture::template Noted<HTML::ExternTagData> instruction("extern-text(<?php a ?>)");
    instruction.record.prefix = instruction.record.name = instruction.record.suffix = &ignored;
    instruction.record.attributes = &attributes;
    instruction.record.slashBeforeClose = true;
    EXPECT_EQ(Written<TypeParam>(instruction.record), "[<?php a ?>]") << "free style is its text and nothing else";
}

TEST(ParserObserverOutputTest, OnlyTheFirstHalfOfAWideBodyIsWritten) {
    using Output = HTML::ParserObserverOutput<WideChar, WideString>;
    const WideString text = KESTRA_WIDE("abc");
    PieceSink sink;
    const HTML::CommentTagData<WideChar, WideString> comment = {&text, false};
    Output::GetCommentTagOutput(&comment, &sink);
    ASSERT_EQ(sink.pieces.size(), 5U);
    EXPECT_EQ(sink.pieces[3].bytes, "-\0"s);
    EXPECT_TRUE(sink.pieces[3].isMarkup);
    EXPECT_EQ(sink.pieces[4].bytes, "a\0b"s);
    EXPECT_FALSE(sink.pieces[4].isMarkup);
}

TYPED_TEST(ParserObserverOutputTest, JunkIsWrittenByteForByte) {
    EXPECT_EQ(WrittenLine<TypeParam>("junk(<b\\x00\\xE9\\x01)"), "{<b\\x00\\xE9\\x01}");
}

TYPED_TEST(ParserObserverOutputTest, EveryCallbackCallsItsWriter) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    const std::string_view LINES[] = {
        "text(t)",
        "c-comment(c)",
        "cpp-comment(p)",
        "s-string(s)",
        "d-string(d)",
        "start(|a|{ |x}| )",
        "short(|b|{ |x}| )",
        "end(|e| |{ |x}|, slash)",
        "cdata(CDATA|[x)",
        "conditional(if| c|t)",
        "comment(m)",
        "entity(|DOCTYPE|{ |'t'}| )",
        "extern(|xml|{ |x}|, slash)",
        "junk(<j)",
    };
    PieceOutput<C, S> output;
    for (const std::string_view line : LINES) {
        CallNoted<C, S>(&output, line);
        EXPECT_GT(output.sink.pieces.size(), 0U);
        EXPECT_EQ(Show<TypeParam>(output.sink.pieces), WrittenLine<TypeParam>(line));
        output.sink.pieces.clear();
    }
}

TYPED_TEST(ParserObserverOutputTest, AMarkIsWrittenAsItIs) {
    PieceOutput<typename TypeParam::C, typename TypeParam::S> output;
    output.OnBOM("\xEF\xBB\xBF", 3);
    output.OnBOM("\xFF\xFE", 2);
    output.OnBOM("x", 1);
    EXPECT_EQ(Show<TypeParam>(output.sink.pieces), "{\\xEF\\xBB\\xBF}{\\xFF\\xFE}{x}");
}

TYPED_TEST(ParserObserverOutputTest, TheOtherCallbacksWriteNothing) {
    PieceOutput<typename TypeParam::C, typename TypeParam::S> output;
    output.OnStartParsing();
    output.OnCharset(65001);
    output.OnJSTagStart();
    output.OnJSTagEnd();
    output.OnCSSTagStart();
    output.OnCSSTagEnd();
    output.OnEndParsing();
    EXPECT_TRUE(output.sink.pieces.empty());
}

TYPED_TEST(ParserObserverOutputTest, EachCopyWritesToItself) {
    using Output = PieceOutput<typename TypeParam::C, typename TypeParam::S>;
    typename TestFixture::template Noted<HTML::TextData> firstText("text(first)");
    typename TestFixture::template Noted<HTML::TextData> secondText("text(second)");
    auto& first = firstText.record;
    auto& second = secondText.record;
    auto original = std::make_unique<Output>();
    original->OnText(&first);
    Output copy(*original);
    Output assigned;
    assigned.OnStartParsing();
    assigned = *original;
    original->sink.pieces.clear();
    copy.sink.pieces.clear();
    assigned.sink.pieces.clear();

    copy.OnText(&first);
    assigned.OnText(&second);
    EXPECT_EQ(Show<TypeParam>(original->sink.pieces), "");
    EXPECT_EQ(Show<TypeParam>(copy.sink.pieces), "[first]");
    EXPECT_EQ(Show<TypeParam>(assigned.sink.pieces), "[second]");

    original.reset();
    copy.OnText(&second);
    assigned.OnText(&first);
    EXPECT_EQ(Show<TypeParam>(copy.sink.pieces), "[first][second]");
    EXPECT_EQ(Show<TypeParam>(assigned.sink.pieces), "[second][first]");

    copy.OnStartParsing();
    copy.OnText(&first);
    EXPECT_EQ(Show<TypeParam>(copy.sink.pieces), "[first][second][first]");
}

/// A host's observer over the wide records, as it derives from the class that is made for it.
class HostOutput final : public HTML::GenericParserObserverOutput {
public:
    void OnOutput(const void* data, std::uint64_t byteCount, bool isMarkup) override {
        sink.Write(data, byteCount, isMarkup);
    }

    PieceSink sink;
};

TEST(ParserObserverOutputTest, TheSerializerOfHosts) {
    static_assert(
        std::is_base_of_v<HTML::ParserObserverOutput<WideChar, WideString>, HTML::GenericParserObserverOutput>);
    static_assert(std::is_abstract_v<HTML::GenericParserObserverOutput>);
    const WideString text = KESTRA_WIDE("t");
    HTML::TextData<WideChar, WideString> record = {&text};
    auto original = std::make_unique<HostOutput>();
    original->OnText(&record);
    HostOutput copy(*original);
    HostOutput assigned;
    assigned = *original;
    original.reset();
    copy.OnText(&record);
    assigned.OnText(&record);
    EXPECT_EQ(Show<Wide>(copy.sink.pieces), "[t][t]");
    EXPECT_EQ(Show<Wide>(assigned.sink.pieces), "[t][t]");
}

TYPED_TEST(ParserObserverOutputTest, IsAbstract) {
    using Output = HTML::ParserObserverOutput<typename TypeParam::C, typename TypeParam::S>;
    static_assert(std::is_abstract_v<Output>);
    static_assert(std::is_base_of_v<HTML::ParserObserver<typename TypeParam::C, typename TypeParam::S>, Output>);
}

TEST(ParserObserverOutputHandlerTest, TheBaseDoesNothing) {
    HTML::ParserObserverOutputHandler handler;
    handler.Write("x", 1, true);
    handler.Write(nullptr, 0, false);
    HTML::ParserObserverOutputHandler copy(handler);
    copy = handler;
    copy.Write("x", 1, true);
    static_assert(std::has_virtual_destructor_v<HTML::ParserObserverOutputHandler>);
}

}  // namespace
}  // namespace Kestra::Test
