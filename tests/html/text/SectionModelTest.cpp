#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/html/text/LiteralModel.h"

namespace Kestra::Test {
namespace {

constexpr int ROUNDS = 5000;
constexpr std::size_t NPOS = std::string_view::npos;

std::string ModelComment(std::string_view input, const ModelOptions&) {
    const std::size_t end = input.find("-->");
    if (end == NPOS)
        return "end 19 comment(" + Trace::Escape(input) + ", open)";
    return "19 comment(" + Trace::Escape(input.substr(0, end)) + ")" + ModelRest(input, end + 3);
}

std::string ModelCData(std::string_view input, const ModelOptions&) {
    const std::size_t end = input.find("]]");
    if (end == NPOS || end + 2 == input.size())
        return "end 19 cdata(|" + Trace::Escape(input) + ", open)";
    if (input[end + 2] == '>')
        return "19 cdata(|" + Trace::Escape(input.substr(0, end)) + ")" + ModelRest(input, end + 3);
    return "19 cdata(|" + Trace::Escape(input.substr(0, end + 2)) + ", open)" + ModelRest(input, end + 2);
}

std::string ModelConditional(std::string_view input, const Cuts& cuts) {
    const std::size_t bracket = input.find(']');
    if (bracket == NPOS)
        return "end 19 conditional(|" + Trace::Escape(input) + "|, no-bracket, open)";
    const std::string begin = "conditional(|" + Trace::Escape(input.substr(0, bracket)) + "|";
    const std::size_t end = input.find('>', bracket);
    if (end == NPOS)
        return "end 19 " + begin + ", open)";
    std::size_t tail = bracket + 1;
    for (const std::size_t cut : cuts) {
        if (cut > tail && cut <= end)
            tail = cut;
    }
    return "19 " + begin + Trace::Escape(input.substr(tail, end - tail)) + ")" + ModelRest(input, end + 1);
}

std::string ModelBlockComment(std::string_view input, const ModelOptions&) {
    const std::size_t end = input.find("*/");
    if (end != NPOS)
        return "19 text(" + Trace::Escape(input.substr(0, end)) + ")" + ModelRest(input, end + 2);
    if (input.ends_with('*'))
        input.remove_suffix(1);
    return "end 16 text(" + Trace::Escape(input) + ")";
}

std::string ModelLineComment(std::string_view input, const ModelOptions&) {
    std::string text;
    std::size_t place = 0;
    const auto line = [&](const std::string& begin, const std::string& end = "") {
        return begin + " text(" + Trace::Escape(text) + ")" + end + ModelRest(input, place);
    };
    for (;;) {
        text += ModelRun(input, &place, "\n<");
        if (place == input.size())
            return line("end 16");
        if (input[place] == '\n')
            return line("19");
        const std::string_view construct = input.substr(place);
        if (construct == "<" || construct == "<!" || construct == "<!-") {
            place = input.size();
            return line("end 16");
        }
        if (construct.starts_with("<!--")) {
            place += 4;
            return line("19", " next(CommentTagSimpleParser)");
        }
        if (construct.starts_with("<!-")) {
            place += 3;
            return line("11");
        }
        if (construct.starts_with("<![")) {
            place += 3;
            const std::string word(ModelRun(input, &place, "\t\n\v\f\r =[]<>"));
            if (place == input.size())
                return line("end 16");
            if (word == "cdata" || word == "CDATA")
                return line("19", " next(CDATATagSimpleParser) keyword(" + word + ")");
            if (word == "if" || word == "endif")
                return line("19", " next(ConditionalTagSimpleParser) keyword(" + word + ")");
            return line("11");
        }
        const std::size_t length = construct[1] == '/' || construct[1] == '?' || construct[1] == '!' ? 2 : 1;
        text += construct.substr(0, length);
        place += length;
    }
}

template <typename Flavour>
void CheckConditionals() {
    using Parser = HTML::ConditionalTagSimpleParser<typename Flavour::C, typename Flavour::S>;
    RandomInput random(23, {"]", ">", "]>", " IE", "a", "\n", "--", "[", "<"});
    for (int round = 0; round < 2 * ROUNDS; ++round) {
        const std::string ascii = random.Next(10);
        const auto text = To<typename Flavour::S>(ascii);
        const std::basic_string_view<typename Flavour::C> input(text);
        for (const Cuts& cuts : {Cuts(), random.NextCuts(input.size())}) {
            const auto outcome = RunRecognizer<Parser>(input, cuts);
            ASSERT_EQ(DescribeOutcome(outcome, input, true), ModelConditional(ascii, cuts))
                << "for " << Trace::Escape(ascii) << " cut at " << Describe(cuts);
            ASSERT_EQ((Place{outcome.line, outcome.column}), PlaceAfter(input, outcome.consumed))
                << "for " << Trace::Escape(ascii);
        }
    }
}

const RandomRow COMMENTS = {.rounds = ROUNDS,
                            .seed = 21,
                            .maxParts = 10,
                            .parts = {"-", "-", "--", ">", "-->", "a", "\n", "<!--", " ", "!"},
                            .alphabet = "->a",
                            .maxLength = 6};

const RandomRow CDATA_SECTIONS = {.rounds = ROUNDS,
                                  .seed = 22,
                                  .maxParts = 8,
                                  .parts = {"]", "]", "]]", ">", "]]>", "[", "a", "\n", " ", "<![CDATA["},
                                  .alphabet = "]>a",
                                  .maxLength = 6};

const RandomRow BLOCK_COMMENTS = {.rounds = ROUNDS,
                                  .seed = 24,
                                  .maxParts = 8,
                                  .parts = {"*", "*", "/", "*/", "/*", "a", "\n", "<!--", "'", "//"},
                                  .alphabet = "*/a",
                                  .maxLength = 6};

const RandomRow LINE_COMMENTS = {
    .rounds = 2 * ROUNDS,
    .seed = 25,
    .maxParts = 10,
    .parts = {"<",  "<",     "</", "<?", "<!", "!", "-",  "--", "<![", "[", "CDATA", "cdata",
              "if", "endif", " ",  "]",  "a",  ">", "\r", "\n", "/",   "=", "*/"},
    .alphabet = "<!-[/\n",
    .maxLength = 5};

const auto COMMENT_SUITE =
    MakeModelSuite<HTML::CommentTagSimpleParser>("SectionModelTest", "Comments", COMMENTS, ModelComment);
const auto CDATA_SUITE =
    MakeModelSuite<HTML::CDATATagSimpleParser>("SectionModelTest", "CDataSections", CDATA_SECTIONS, ModelCData);
const auto CONDITIONAL_SUITE =
    RecognizerSuite<HTML::ConditionalTagSimpleParser>("SectionModelTest")
        .Test("ConditionalSections", []<typename Flavour>() { CheckConditionals<Flavour>(); });
const auto BLOCK_COMMENT_SUITE =
    MakeModelSuite<HTML::CCommentSimpleParser>("SectionModelTest", "BlockComments", BLOCK_COMMENTS, ModelBlockComment);
const auto LINE_COMMENT_SUITE =
    MakeModelSuite<HTML::CPPCommentSimpleParser>("SectionModelTest", "LineComments", LINE_COMMENTS, ModelLineComment);

}  // namespace
}  // namespace Kestra::Test
