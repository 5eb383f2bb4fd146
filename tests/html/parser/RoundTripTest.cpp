#include <algorithm>
#include <string>
#include <string_view>

#include "tests/html/parser/DocumentRows.h"
#include "tests/support/RandomGrammar.h"
#include "tests/support/RecognizerRun.h"

namespace Kestra::Test {
namespace {

/// Documents per flavour, in shards that can run side by side.
constexpr std::uint64_t DOCUMENTS = 20000;
constexpr std::uint64_t SHARDS = 8;
constexpr int SPLITTINGS = 3;

// The whole grammar, whole and broken.
const RandomGrammar GRAMMAR({
    {"name", "p|a|br|DIV|h1|x:y|b/|\xE9|scripts||a[b]"},
    {"script", "3:script|SCRIPT|Script"},
    {"style", "2:style|STYLE"},
    {"word", "a|word|x y|\n|\r\n|1>0|it's|\"|=|/|\xE9\xFF|\t|a/b|&amp;|[|-|\x1B$B"},
    {"space", " |\n|\t |  |\r\n| \f"},
    {"rare-space", "7:|{space}"},
    {"value", "v||a b|x/|/|<p>|a='b|\\|\n|\xE9|<|it's"},
    {"quoted", "'{value}'|\"{value}\"|{value}"},
    {"text", "{word*1-4}"},
    {"attribute", "{space}{word}{|2:{3:|{space}}={3:|{space}}{quoted}}"},
    {"start-tag-end", "3:>|/>| />| >|/ >||<"},
    {"end-tag-end", "3:>| >| />|/ >||<"},
    {"start-opener", "<{rare-space}"},
    {"end-opener", "</{rare-space}"},
    {"start-tag", "{start-opener}{name}{attribute*0-3}{start-tag-end}"},
    {"end-of-tag", "{5:|{attribute*0-3}}{end-tag-end}"},
    {"end-tag", "{end-opener}{name}{end-of-tag}"},
    {"script-element",
     "{start-opener}{script}{attribute*0-3}{start-tag-end}{script-item*0-7}{end-opener}{script}{end-of-tag}"},
    {"style-element",
     "{start-opener}{style}{attribute*0-3}{start-tag-end}{script-item*0-7}{end-opener}{style}{end-of-tag}"},
    {"script-item", "{script-part}{7:|{end-tag}}"},
    {"script-part",
     "x=1;|'a\\'b'|\"a\\\"b\"|if(a<b)|x=/ab+/g;|'|\"|\\|/|\n|</b>|<b>|'</script>'|a/b/c|/[/]/|<|<!|<?|"
     "</style>|</script x>|<!-|<![x[|/*a*/|/* ' */|//a\n|// '\r\n|//<a</b>\n|//<!--a-->|/*|*/|//|**/|"
     "<!--a-->|//<![CDATA[a]]>|//<![endif]>|<![CDATA[a]]>|/*<!--*/|//<!-"},
    {"comment", "<!--{text}{3:-->|--->|--|->|}"},
    {"cdata", "{<![CDATA[|<![cdata[|<![CDATA |<![CDATA}{text}{3:]]>|]]|]]]>|]|}"},
    {"conditional", "{<![if !IE|<![if |<![endif|<![EndIf|<![IF >}{4:]>|]-->|] >|]|2:}"},
    {"section", "2:{comment}|{cdata}|{conditional}"},
    {"declaration", "<!{rare-space}{DOCTYPE|doctype|ELEMENT|a[||\xE9}{item-of-declaration*0-3}{3:>| >||<}"},
    {"item-of-declaration", "{space}{quoted}"},
    {"instruction",
     "<?{rare-space}{{xml|XML|xml-stylesheet|xml:a}{attribute*0-3}|{php|a|xmla|=|a?|}{free-part*0-5}}"
     "{3:?>| ?>|/>| />|/ >|>|?|}"},
    {"free-part", " |'?>'|\"?>\"|'a\\'b'|/* > */|/**|//?>\n|?|/|*|a|\n|\xFF"},
    {"broken",
     "<|<!|<?|<!-|<!--|<![|<![CDATA[|<![if x]>|<![if y|</|</ |<>|</>|< |<a / >|<a b=/>|</a / >|<a b='|"
     "<a b=\"|/>|-->|]]>|<<|<!DOCTYPE html>|<?xml x?>"},
    {"item",
     "2:{text}|2:{start-tag}|{end-tag}|{script-element}|{style-element}|{broken}|{broken}{text}|2:{section}|"
     "{declaration}|{instruction}|{byte}"},
});

/// Any byte but "|", which separates the parts of a trace.
char AnyByte(Dice* dice) {
    const char byte = dice->Byte();
    return byte == '|' ? '!' : byte;
}

void Mutate(std::string* document, Dice* dice) {
    constexpr std::string_view SIGNS = "</>'\"= \n!-[]?\\s";
    const std::size_t at = dice->Below(document->size());
    const std::size_t length = 1 + dice->Below(std::min<std::size_t>(6, document->size() - at));
    switch (dice->Below(5)) {
        case 0:
            document->erase(at, length);
            return;
        case 1:
            document->insert(at, GRAMMAR.Make("broken", dice));
            return;
        case 2:
            (*document)[at] = SIGNS[dice->Below(SIGNS.size())];
            return;
        case 3:
            document->insert(dice->Below(document->size()), document->substr(at, length));
            return;
        default:
            document->insert(at, 1, AnyByte(dice));
            return;
    }
}

/// @return at most a few hundred characters of Latin-1
std::string MakeDocument(Dice* dice) {
    std::string document;
    for (std::size_t items = dice->Below(14); items > 0; --items)
        GRAMMAR.Append("item", dice, &document);
    std::replace(document.begin(), document.end(), '|', '!');
    for (std::size_t mutations = dice->OneIn(2) ? dice->Below(6) : 0; mutations > 0 && !document.empty(); --mutations)
        Mutate(&document, dice);
    if (dice->OneIn(8) && !document.empty())
        document.resize(dice->Below(document.size()));
    return document;
}

/// The wide document: one character for each byte, or now and then another one in its place.
WideString Widen(std::string_view latin1, Dice* dice) {
    WideString wide = To<WideString>(latin1);
    for (WideChar& character : wide) {
        if (dice->OneIn(40))
            character = static_cast<WideChar>(dice->Below(0x10000));
    }
    return wide;
}

Cuts RandomCuts(std::size_t length, Dice* dice) {
    Cuts cuts;
    for (std::size_t i = 1; i < length; ++i) {
        if (dice->OneIn(4))
            cuts.push_back(i);
    }
    // Now and then every character comes alone.
    return dice->OneIn(8) ? CutsEvery(1, length) : cuts;
}

std::string Shown(const DocumentRun& run) {
    return run.Lines() + "results " + std::to_string(run.startResult) + ", " + std::to_string(run.parseResult) + ", " +
           std::to_string(run.endResult) + ", place " + std::to_string(run.line) + ", " + std::to_string(run.column) +
           "\n";
}

/// The part of a line of a conditional section before its tail, and the part after it.
struct ConditionalLine {
    explicit ConditionalLine(std::string_view line) {
        if (!line.starts_with("conditional("))
            return;
        isConditional = true;
        const std::size_t tail = line.rfind('|') + 1;
        isClosed = !line.ends_with(", open)");
        hasBracket = !line.ends_with(", no-bracket, open)");
        const std::size_t end = line.size() - (isClosed ? 1 : hasBracket ? 7 : 19);
        hasTail = end > tail;
        front = line.substr(0, tail);
    }

    bool isConditional = false;
    bool isClosed = false;
    bool hasBracket = false;
    bool hasTail = false;
    std::string_view front;
};

/// The bytes of a comment of a script that became junk, in either flavour.
bool IsJunkComment(std::string_view line) {
    return line.starts_with("junk(//") || line.starts_with("junk(/*") || line.starts_with("junk(/\\x00/") ||
           line.starts_with("junk(/\\x00*");
}

/// The bytes of junk without the slashes before them: a comment in a script that begins with
/// several loses only one at a cut.
std::string WithoutSlashes(std::string bytes) {
    while (bytes.starts_with("/"))
        bytes.erase(0, bytes.starts_with("/\\x00") ? 5 : 1);
    return bytes;
}

/// What lets tokens differ from the document they were read from. All of it shows in the lines of
/// the uncut document.
struct Oddities {
    explicit Oddities(const std::vector<std::string>& lines) {
        for (const std::string& line : lines) {
            const ConditionalLine conditional(line);
            losesTail = losesTail || (conditional.isConditional && !conditional.isClosed && conditional.hasBracket);
            hasTail = hasTail || conditional.hasTail;
            movesBlank = movesBlank ||
                         (line.starts_with("extern(") && line.ends_with(", slash)") && !line.ends_with("|, slash)"));
            hasJunkComment = hasJunkComment || IsJunkComment(line);
            hasBody = hasBody ||
                      (line.starts_with("comment(") && !line.starts_with("comment()") &&
                       !line.starts_with("comment(, open)")) ||
                      (line.starts_with("cdata(") && !line.ends_with("|)") && !line.ends_with("|, open)")) ||
                      (conditional.isConditional && (conditional.hasTail || !conditional.front.ends_with("||")));
        }
    }

    bool losesTail = false;       ///< a conditional section is open after its bracket
    bool hasTail = false;         ///< a conditional section has a tail, which a cut may shorten
    bool movesBlank = false;      ///< an XML declaration with a blank after, or before, its slash
    bool hasJunkComment = false;  ///< a comment of a script became junk, whose opener may be cut
    bool hasBody = false;  ///< a comment, CDATA or conditional section has a body, which the wide serializer halves
};

/// The lines without what a cut may change: the tails of conditional sections and the slashes
/// before junk.
std::string WhatNoCutChanges(const DocumentRun& run) {
    std::string text;
    for (const std::string& line : run.trace) {
        const ConditionalLine conditional(line);
        if (line == "end-parsing")
            continue;
        if (conditional.isConditional)
            text += std::string(conditional.front) + (conditional.isClosed ? "" : "open");
        else if (line.starts_with("junk(/"))
            text += "junk(" + WithoutSlashes(line.substr(5));
        else
            text += line;
        text += "\n";
    }
    return text + "place " + std::to_string(run.line) + ", " + std::to_string(run.column) + "\n";
}

/// What is wrong with the results of one run, or nothing.
template <typename Text>
std::string FaultOf(const DocumentRun& run, const std::string& bytes, const Oddities& oddities, bool cut) {
    constexpr bool WIDE = std::is_same_v<Text, WideString>;
    if (run.startResult != 0 || run.parseResult != 0)
        return "a result is not 0";
    const bool mayDiffer =
        oddities.losesTail || oddities.movesBlank || (cut && (oddities.hasTail || oddities.hasJunkComment));
    const bool mustDiffer = (WIDE && oddities.hasBody);
    if (run.endResult != 0 && run.endResult != 704)
        return "the end has another result";
    if (run.endResult == 704 && !mayDiffer && !mustDiffer)
        return "the self-check finds a difference";
    if (run.endResult == 0 && mustDiffer)
        return "the self-check misses the halved body";
    // Of an empty document whose parser was never chosen nothing is told.
    if (!run.trace.empty() && (run.trace.back() == "end-parsing") != (run.endResult == 0))
        return "the end of parsing is told in the wrong case";
    // The 8-bit observer is not given line comments.
    const bool allHeard = WIDE || bytes.find("//") == std::string::npos;
    if (run.endResult == 0 && allHeard && run.output != bytes)
        return "the tokens written back differ: " + Trace::Escape(std::string_view(run.output));
    return "";
}

/// @param text  in bytes, or in wide characters
/// @return what is wrong with the document, or nothing
template <typename Text>
std::string Fault(const Text& text, DocumentSettings settings, std::uint64_t cutSeed) {
    settings.selfCheck = SELF_CHECK_COPY;
    std::string bytes;
    if constexpr (std::is_same_v<Text, WideString>)
        bytes = ToUtf16LE(WideStringView(text));
    else
        bytes = text;
    const DocumentRun whole = ParseDocument(text, {}, settings);
    const Oddities oddities(whole.trace);
    const std::string fault = FaultOf<Text>(whole, bytes, oddities, false);
    if (!fault.empty())
        return fault + ":\n" + Shown(whole);
    if (Place{whole.line, whole.column} !=
        PlaceAfter(std::basic_string_view<typename Text::value_type>(text), text.size()))
        return "the place is wrong:\n" + Shown(whole);
    Dice dice(cutSeed);
    for (int i = 0; i < SPLITTINGS; ++i) {
        const Cuts cuts = RandomCuts(text.size(), &dice);
        const DocumentRun run = ParseDocument(text, cuts, settings);
        const std::string where = "cut at " + Describe(cuts) + ", ";
        const std::string cutFault = FaultOf<Text>(run, bytes, oddities, true);
        if (!cutFault.empty())
            return where + cutFault + ":\n" + Shown(run);
        if (WhatNoCutChanges(run) != WhatNoCutChanges(whole))
            return where + "the tokens differ:\n" + Shown(run) + "uncut:\n" + Shown(whole);
    }
    return "";
}

/// Removes what the fault does not need, in ever smaller pieces.
template <typename Text>
Text Shorten(Text text, const std::function<bool(const Text&)>& isFaulty) {
    for (std::size_t length = std::max<std::size_t>(text.size() / 2, 1); length > 0; length /= 2) {
        for (std::size_t at = 0; at + length <= text.size();) {
            Text shorter = text;
            shorter.erase(at, length);
            if (isFaulty(shorter))
                text = shorter;
            else
                at += length;
        }
    }
    return text;
}

template <typename Text>
void Check(const Text& text, const DocumentSettings& settings, std::uint64_t seed) {
    if (Fault(text, settings, seed).empty())
        return;
    const Text shortest =
        Shorten<Text>(text, [&](const Text& candidate) { return !Fault(candidate, settings, seed).empty(); });
    ADD_FAILURE() << "seed " << seed << ", charset " << settings.charset
                  << ", the shortest document with a fault: " << Trace::Escape(shortest) << "\n"
                  << Fault(shortest, settings, seed);
}

class RoundTripTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(RoundTripTest, EightBitDocuments) {
    for (std::uint64_t seed = GetParam(); seed < DOCUMENTS; seed += SHARDS) {
        Dice dice(seed);
        const std::string document = MakeDocument(&dice);
        DocumentSettings settings = SettingsFor(NARROW_TO_NARROW, dice.OneIn(4) ? Feed::OWNED_STREAM : Feed::STREAM);
        if (dice.OneIn(8))
            settings.charset = 50221;
        const bool mayBeginAMark = !document.empty() && (document[0] == '\xEF' || document[0] == '\xFF');
        if (dice.OneIn(2) && !mayBeginAMark)
            settings.type = DATA_STREAM_AUTO;
        Check(document, settings, seed);
        if (HasFailure())
            return;
    }
}

TEST_P(RoundTripTest, WideDocuments) {
    for (std::uint64_t seed = GetParam(); seed < DOCUMENTS; seed += SHARDS) {
        Dice dice(seed);
        const WideString document = Widen(MakeDocument(&dice), &dice);
        const DocumentSettings settings = SettingsFor(WIDE_TO_WIDE, dice.OneIn(4) ? Feed::OWNED_STREAM : Feed::STREAM);
        Check(document, settings, seed);
        if (HasFailure())
            return;
    }
}

INSTANTIATE_TEST_SUITE_P(Shards, RoundTripTest, testing::Range<std::uint64_t>(0, SHARDS));

// The check itself must see a document that loses a character: here between the stream and the
// parser.
TEST(RoundTripCheckTest, SeesALostCharacter) {
    DocumentSettings settings = SettingsFor(NARROW_TO_NARROW, Feed::STREAM);
    const std::string document = "<p>text</p><script>a/*b*/</script>";
    EXPECT_EQ(Fault(document, settings, 1), "");
    settings.makeStream = [](const std::string& bytes, const Cuts&) {
        std::string shorter = bytes;
        shorter.erase(std::min<std::size_t>(shorter.find('b'), shorter.size()), 1);
        return MakeCutStream(shorter, {});
    };
    EXPECT_NE(Fault(document, settings, 1), "");
    const std::string shortest = Shorten<std::string>(
        document, [&](const std::string& candidate) { return !Fault(candidate, settings, 1).empty(); });
    EXPECT_EQ(shortest, "b");
}

// What may differ is the exception: most documents have to come back byte by byte, however they are
// cut.
TEST(RoundTripCheckTest, FewDocumentsMayDiffer) {
    int exact = 0;
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        Dice dice(seed);
        const Oddities oddities(
            ParseDocument(MakeDocument(&dice), {}, SettingsFor(NARROW_TO_WIDE, Feed::STREAM)).trace);
        if (!oddities.losesTail && !oddities.hasTail && !oddities.movesBlank && !oddities.hasJunkComment)
            ++exact;
    }
    EXPECT_GE(exact, 700);
}

TEST(RoundTripCheckTest, TheDocumentsHoldEveryKindOfToken) {
    const char* const kinds[] = {"text(",   "start(",   "short(",       "end(",       "s-string(",    "d-string(",
                                 "junk(",   "js-start", "js-end",       "css-start",  "css-end",      ", open)",
                                 ", slash", "|'",       "|\"",          "comment(",   "cdata(",       "conditional(",
                                 "entity(", "extern(",  "extern-text(", "c-comment(", "cpp-comment(", ", no-bracket",
                                 "junk(/*", "junk(//",  "junk(<?",      "junk(<!"};
    std::vector<std::size_t> counts(std::size(kinds));
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        Dice dice(seed);
        const std::string lines =
            ParseDocument(MakeDocument(&dice), {}, SettingsFor(NARROW_TO_WIDE, Feed::STREAM)).Lines();
        for (std::size_t i = 0; i < std::size(kinds); ++i)
            counts[i] += lines.find(kinds[i]) != std::string::npos ? 1 : 0;
    }
    for (std::size_t i = 0; i < std::size(kinds); ++i)
        EXPECT_GE(counts[i], 10U) << kinds[i];
}

}  // namespace
}  // namespace Kestra::Test
