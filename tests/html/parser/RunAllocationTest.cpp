#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "html/framework/ResultCodes.h"
#include "html/framework/SimpleParserContext.h"
#include "html/parser/GenericParser.h"
#include "html/tags/AttributeSimpleParser.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagFreeStyleSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/IdentifierSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/tags/TokenSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/Escape2022SimpleParser.h"
#include "html/text/JSRegExSimpleParser.h"
#include "html/text/JunkSimpleParser.h"
#include "html/text/SQuoteStringSimpleParser.h"
#include "html/text/TextSimpleParser.h"
#include "html/text/WhiteSpaceSimpleParser.h"
#include "tests/html/parser/CountedAllocations.h"
#include "tests/support/Flavours.h"

// A run is appended in one operation. A new string then allocates once for it, whatever its length;
// one that grows character by character allocates a dozen times on its way to a hundred thousand.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

constexpr std::size_t LONG = 100000;

/// A run of one character, and what it takes to be read as one.
struct LongRun {
    const char* note;
    const char* before;
    char character;
    const char* after;
    std::size_t growths = 1;  ///< of strings: for the run, and where more follows it in the same string, for that

    template <typename S>
    S Input(std::size_t length) const {
        return To<S>(before + std::string(length, character) + after);
    }
};

/// Prepares nothing.
constexpr auto AS_BEGUN = [](auto*) {};

/// The allocations of a new recognizer that reads the run in one piece.
template <typename Parser, typename C, typename S, typename Prepare>
std::size_t CountIn(const LongRun& run, std::size_t length, Prepare prepare) {
    const S input = run.Input<S>(length);
    Parser parser;
    typename Parser::Data data;
    parser.BeginParse(&data);
    prepare(&data);
    HTML::SimpleParserContext<C, S> context;
    context.buffer = input.data();
    context.length = input.size();
    std::uint32_t result = HTML::SP_NEED_MORE_DATA;
    const std::size_t before = CountAllocations();
    while (result == HTML::SP_NEED_MORE_DATA && context.position < context.length)
        result = parser.Parse(&context, &data);
    const std::size_t count = CountAllocations() - before;
    EXPECT_TRUE(result == HTML::SP_TOKEN_COMPLETE || context.position == context.length) << run.note << ": " << result;
    return count;
}

template <template <typename, typename> typename Parser, typename C, typename S, typename Prepare>
void CheckFlavour(const LongRun& run, Prepare prepare) {
    using OfFlavour = Parser<C, S>;
    const std::size_t few = CountIn<OfFlavour, C, S>(run, 1, prepare);
    const std::size_t many = CountIn<OfFlavour, C, S>(run, LONG, prepare);
    EXPECT_GT(many, few) << run.note;
    EXPECT_LE(many, few + run.growths) << run.note << (sizeof(C) > 1 ? ", wide" : ", 8-bit");
}

template <template <typename, typename> typename Parser, typename Prepare = decltype(AS_BEGUN)>
void Check(const LongRun& run, Prepare prepare = AS_BEGUN) {
    CheckFlavour<Parser, char, std::string>(run, prepare);
    CheckFlavour<Parser, WideChar, WideString>(run, prepare);
}

TEST(RunAllocationTest, Text) {
    const auto inScript = [](auto* data) {
        data->allowCComment = data->allowCPPComment = data->allowSQuoteString = data->allowDQuoteString =
            data->allowJSRegEx = true;
    };
    const auto inIso2022 = [](auto* data) { data->allowEscape2022 = true; };
    Check<HTML::TextSimpleParser>({"text", "", 'a', "<"});
    Check<HTML::TextSimpleParser>({"text of a script", "", 'a', "<"}, inScript);
    Check<HTML::TextSimpleParser>({"text beside escape runs", "", 'a', "<"}, inIso2022);
    Check<HTML::TextSimpleParser>({"an escape run in text", "\x1B$B", 'a', "\x1B(B<", 3}, inIso2022);
    Check<HTML::Escape2022SimpleParser>({"an escape run", "$B", 'a', "\x1B(Bb", 2});
    Check<HTML::WhiteSpaceSimpleParser>({"white space", "", ' ', "a"});
    Check<HTML::JunkSimpleParser>({"junk", "", 'a', "<"});
}

TEST(RunAllocationTest, Literals) {
    const auto inIso2022 = [](auto* data) { data->allowEscape2022 = true; };
    Check<HTML::SQuoteStringSimpleParser>({"a string in single quotes", "", 'a', "'"});
    Check<HTML::DQuoteStringSimpleParser>({"a string in double quotes", "", 'a', "\""});
    Check<HTML::DQuoteStringSimpleParser>({"an escape run in a string", "\x1B$B", 'a', "\x1B(B\"", 3}, inIso2022);
    Check<HTML::JSRegExSimpleParser>({"a regular expression", "", 'a', "\n"});
    Check<HTML::CCommentSimpleParser>({"a block comment", "", 'a', "*/"});
    Check<HTML::CPPCommentSimpleParser>({"a line comment", "", 'a', "\n"});
}

TEST(RunAllocationTest, Sections) {
    Check<HTML::CommentTagSimpleParser>({"a comment", "", 'a', "-->"});
    Check<HTML::CDATATagSimpleParser>({"a CDATA section", "", 'a', "]]>"});
    Check<HTML::ConditionalTagSimpleParser>({"a condition", "", 'a', "]>"});
    Check<HTML::ConditionalTagSimpleParser>({"the tail of a conditional section", "a]", 'a', ">"});
}

TEST(RunAllocationTest, NamesAndValues) {
    const auto ofAttribute = [](auto* data) { data->attributeNameMode = true; };
    Check<HTML::IdentifierSimpleParser>({"a name", "", 'a', ">"});
    Check<HTML::IdentifierSimpleParser>({"the name of an attribute", "", 'a', ">"}, ofAttribute);
    Check<HTML::TokenSimpleParser>({"a value", "", 'a', ">"});
    Check<HTML::TokenSimpleParser>({"a value in single quotes", "'", 'a', "'>"});
    Check<HTML::TokenSimpleParser>({"a value in double quotes", "\"", 'a', "\">"});
    Check<HTML::AttributeSimpleParser>({"white space and an attribute", "", ' ', "a=b>"});
    Check<HTML::AttributeSimpleParser>({"an attribute's name", "", 'a', "=b>"});
    Check<HTML::AttributeSimpleParser>({"white space before an equals sign", "a", ' ', "=b>"});
    Check<HTML::AttributeSimpleParser>({"white space after an equals sign", "a=", ' ', "b>"});
    Check<HTML::AttributeSimpleParser>({"an attribute's value", "a=", 'a', ">"});
}

TEST(RunAllocationTest, Tags) {
    Check<HTML::StartTagSimpleParser>({"white space in a start tag", "", ' ', "a>"});
    Check<HTML::StartTagSimpleParser>({"the name of a start tag", "", 'a', ">"});
    Check<HTML::StartTagSimpleParser>({"white space at the end of a start tag", "a a=b", ' ', ">"});
    Check<HTML::EndTagSimpleParser>({"white space in an end tag", "", ' ', "a>"});
    Check<HTML::EndTagSimpleParser>({"the name of an end tag", "", 'a', ">"});
    Check<HTML::EntityTagSimpleParser>({"white space in a declaration", "", ' ', "a>"});
    Check<HTML::EntityTagSimpleParser>({"the name of a declaration", "", 'a', ">"});
    Check<HTML::EntityTagSimpleParser>({"an item of a declaration", "a ", 'a', ">"});
    Check<HTML::EntityTagSimpleParser>({"a quoted item of a declaration", "a '", 'a', "'>"});
    Check<HTML::ExternTagSimpleParser>({"white space in an instruction", "", ' ', "xml ?>"});
    Check<HTML::ExternTagSimpleParser>({"a value of an XML declaration", "xml a='", 'a', "'?>"});
    Check<HTML::ExternTagFreeStyleSimpleParser>({"an instruction", "", 'a', "?>", 2});
    Check<HTML::ExternTagFreeStyleSimpleParser>({"a block comment of an instruction", "/*", 'a', "*/?>", 2});
    Check<HTML::ExternTagFreeStyleSimpleParser>({"a line comment of an instruction", "//", 'a', "\n?>", 2});
    Check<HTML::ExternTagFreeStyleSimpleParser>({"a string of an instruction", "'", 'a', "'?>", 3});
    Check<HTML::ExternTagFreeStyleSimpleParser>({"a string of an instruction in double quotes", "\"", 'a', "\"?>", 3});
}

/// The allocations of a new parser that reads a document in one piece.
template <typename C, typename S>
std::size_t CountInDocument(const LongRun& run, std::size_t length) {
    const std::string narrow = run.Input<std::string>(length);
    const std::string bytes = sizeof(C) > 1 ? ToUtf16LE(narrow) : narrow;
    HTML::ParserObserver<C, S> observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    EXPECT_EQ(
        parser.StartParse(1252, sizeof(C) > 1 ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT),
        0U);
    const std::size_t before = CountAllocations();
    EXPECT_EQ(parser.ParseBuffer(bytes.data(), bytes.size()), 0U);
    const std::size_t count = CountAllocations() - before;
    EXPECT_EQ(parser.EndParse(), 0U);
    return count;
}

void CheckDocument(const LongRun& run) {
    EXPECT_EQ((CountInDocument<char, std::string>(run, LONG)),
              (CountInDocument<char, std::string>(run, 1)) + run.growths)
        << run.note;
    EXPECT_EQ((CountInDocument<WideChar, WideString>(run, LONG)),
              (CountInDocument<WideChar, WideString>(run, 1)) + run.growths)
        << run.note << ", wide";
}

// Without a recognizer.
TEST(RunAllocationTest, TextAndTagsThatLieInThePiece) {
    const LongRun runs[] = {
        {"text before a tag", "", 'a', "<b>"},
        {"text at the end of the piece", "", 'a', ""},
        {"white space in a start tag", "<", ' ', "a>"},
        {"the name of a start tag", "<", 'a', ">"},
        {"white space at the end of a start tag", "<a a=b", ' ', ">"},
        {"white space before an attribute", "<a", ' ', "a>"},
        {"an attribute's name", "<a ", 'a', ">"},
        {"white space before an equals sign", "<a a", ' ', "=b>"},
        {"white space after an equals sign", "<a a=", ' ', "b>"},
        {"a value", "<a a=", 'a', ">"},
        {"a value in single quotes", "<a a='", 'a', "'>"},
        {"a value in double quotes", "<a a=\"", 'a', "\">"},
        {"a value of a short tag", "<a a=\"", 'a', "\"/>"},
        {"white space in an end tag", "</", ' ', "a>"},
        {"the name of an end tag", "</", 'a', ">"},
        {"white space at the end of an end tag", "</a", ' ', ">"},
    };
    for (const LongRun& run : runs)
        CheckDocument(run);
}

}  // namespace
}  // namespace Kestra::Test
