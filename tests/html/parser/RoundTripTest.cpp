#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/html/parser/DocumentRows.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerRun.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

/// Documents per flavour, in shards that can run side by side.
constexpr std::uint64_t DOCUMENTS = 20000;
constexpr std::uint64_t SHARDS = 8;
constexpr int SPLITTINGS = 3;

/// Random choices that are the same on every platform for the same seed.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : engine(seed) {}

    std::size_t Below(std::size_t bound) {
        return static_cast<std::size_t>(engine() % bound);
    }

    bool OneIn(std::size_t bound) {
        return Below(bound) == 0;
    }

    template <std::size_t N>
    const char* Pick(const char* const (&choices)[N]) {
        return choices[Below(N)];
    }

private:
    std::mt19937_64 engine;
};

/// Makes documents of the whole grammar, whole and broken.
class DocumentMaker {
public:
    explicit DocumentMaker(Dice* documentDice) : dice(documentDice) {}

    /// @return at most a few hundred characters of Latin-1
    std::string Make() {
        document.clear();
        for (std::size_t items = dice->Below(14); items > 0; --items)
            AddItem();
        for (std::size_t mutations = dice->OneIn(2) ? dice->Below(6) : 0; mutations > 0; --mutations)
            Mutate();
        if (dice->OneIn(8) && !document.empty())
            document.resize(dice->Below(document.size()));
        WithoutScriptComments();
        return document;
    }

private:
    void AddItem() {
        switch (dice->Below(10)) {
            case 0:
            case 1:
                AddText();
                return;
            case 2:
            case 3:
                AddStartTag(dice->Pick(NAMES));
                return;
            case 4:
                AddEndTag(dice->Pick(NAMES));
                return;
            case 5:
                AddStartTag(dice->Pick(SCRIPTS));
                AddScript();
                AddEndTag(dice->Pick(SCRIPTS));
                return;
            case 6:
                AddStartTag(dice->Pick(STYLES));
                AddScript();
                AddEndTag(dice->Pick(STYLES));
                return;
            case 7:
                document += dice->Pick(BROKEN);
                return;
            case 8:
                document += dice->Pick(BROKEN);
                AddText();
                return;
            default:
                document += static_cast<char>(dice->Below(256));
                return;
        }
    }

    void AddText() {
        for (std::size_t words = 1 + dice->Below(4); words > 0; --words)
            document += dice->Pick(WORDS);
    }

    void AddSpace() {
        document += dice->Pick(SPACES);
    }

    void AddStartTag(const char* name) {
        document += '<';
        if (dice->OneIn(8))
            AddSpace();
        document += name;
        AddAttributes();
        document += dice->Pick(START_TAG_ENDS);
    }

    void AddEndTag(const char* name) {
        document += "</";
        if (dice->OneIn(8))
            AddSpace();
        document += name;
        if (dice->OneIn(6))
            AddAttributes();
        document += dice->Pick(END_TAG_ENDS);
    }

    void AddAttributes() {
        for (std::size_t count = dice->Below(4); count > 0; --count) {
            AddSpace();
            document += dice->Pick(WORDS);
            if (dice->OneIn(3))
                continue;
            if (dice->OneIn(4))
                AddSpace();
            document += '=';
            if (dice->OneIn(4))
                AddSpace();
            const char* const quote = dice->Pick(QUOTES);
            document += quote;
            document += dice->Pick(VALUES);
            document += quote;
        }
    }

    void AddScript() {
        for (std::size_t parts = dice->Below(8); parts > 0; --parts) {
            document += dice->Pick(SCRIPT_PARTS);
            if (dice->OneIn(8))
                AddEndTag(dice->Pick(NAMES));
        }
    }

    void Mutate() {
        if (document.empty())
            return;
        const std::size_t at = dice->Below(document.size());
        const std::size_t length = 1 + dice->Below(std::min<std::size_t>(6, document.size() - at));
        switch (dice->Below(5)) {
            case 0:
                document.erase(at, length);
                return;
            case 1:
                document.insert(at, dice->Pick(BROKEN));
                return;
            case 2:
                document[at] = dice->Pick(SIGNS)[0];
                return;
            case 3:
                document.insert(dice->Below(document.size()), document.substr(at, length));
                return;
            default:
                document.insert(at, 1, static_cast<char>(dice->Below(256)));
                return;
        }
    }

    /// Nothing recognizes the comments of script and style yet: cut between its two characters, an opener loses the first one.
    void WithoutScriptComments() {
        std::string folded = document;
        std::transform(folded.begin(), folded.end(), folded.begin(), FoldAscii<char>);
        if (folded.find("script") == std::string::npos && folded.find("style") == std::string::npos)
            return;
        for (std::size_t i = 1; i < document.size(); ++i) {
            if (document[i - 1] == '/' && (document[i] == '/' || document[i] == '*'))
                document[i] = '-';
        }
    }

    static constexpr const char* NAMES[] = {"p", "a", "br", "DIV", "h1", "x:y", "b/", "\xE9", "scripts", "", "a[b]"};
    static constexpr const char* SCRIPTS[] = {"script", "SCRIPT", "Script", "script", "script"};
    static constexpr const char* STYLES[] = {"style", "STYLE", "style"};
    static constexpr const char* WORDS[] = {"a", "word",     "x y", "\n",  "\r\n",  "1>0", "it's", "\"",    "=",
                                            "/", "\xE9\xFF", "\t",  "a/b", "&amp;", "[",   "-",    "\x1B$B"};
    static constexpr const char* SPACES[] = {" ", "\n", "\t ", "  ", "\r\n", " \f"};
    static constexpr const char* QUOTES[] = {"'", "\"", ""};
    static constexpr const char* VALUES[] = {"v", "", "a b", "x/", "/", "<p>", "a='b", "\\", "\n", "\xE9", "<", "it's"};
    static constexpr const char* START_TAG_ENDS[] = {">", ">", ">", "/>", " />", " >", "/ >", "", "<"};
    static constexpr const char* END_TAG_ENDS[] = {">", ">", ">", " >", " />", "/ >", "", "<"};
    static constexpr const char* SCRIPT_PARTS[] = {"x=1;", "'a\\'b'", "\"a\\\"b\"", "if(a<b)",     "x=/ab+/g;",   "'",     "\"",    "\\",
                                                   "/",    "\n",      "</b>",       "<b>",         "'</script>'", "a/b/c", "/[/]/", "<",
                                                   "<!",   "<?",      "</style>",   "</script x>", "<!-",         "<![x["};
    static constexpr const char* BROKEN[] = {"<",      "<!",      "<?", "<!-", "<!--", "<![",    "<![CDATA[",       "<![if x]>",
                                             "</",     "</ ",     "<>", "</>", "< ",   "<a / >", "<a b=/>",         "</a / >",
                                             "<a b='", "<a b=\"", "/>", "-->", "]]>",  "<<",     "<!DOCTYPE html>", "<?xml x?>"};
    static constexpr const char* SIGNS[] = {"<", ">", "/", "'", "\"", "=", " ", "\n", "!", "-", "[", "]", "?", "\\", "s"};

    Dice* dice;
    std::string document;
};

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
           std::to_string(run.endResult) + ", place " + std::to_string(run.line) + ", " + std::to_string(run.column) + "\n";
}

/// @param text  in bytes, or in wide characters
/// @return what is wrong with the document, or nothing
template <typename Text>
std::string Fault(const Text& text, const DocumentSettings& settings, std::uint64_t cutSeed) {
    std::string bytes;
    if constexpr (std::is_same_v<Text, WideString>)
        bytes = ToUtf16LE(WideStringView(text));
    else
        bytes = text;
    const DocumentRun whole = ParseDocument(text, {}, settings);
    if (whole.output != bytes)
        return "the tokens written back differ: " + Trace::Escape(std::string_view(whole.output)) + "\n" + Shown(whole);
    if (whole.startResult != 0 || whole.parseResult != 0 || whole.endResult != 0)
        return "a result is not 0:\n" + Shown(whole);
    if (Place{whole.line, whole.column} != PlaceAfter(std::basic_string_view<typename Text::value_type>(text), text.size()))
        return "the place is wrong:\n" + Shown(whole);
    Dice dice(cutSeed);
    for (int i = 0; i < SPLITTINGS; ++i) {
        const Cuts cuts = RandomCuts(text.size(), &dice);
        const DocumentRun run = ParseDocument(text, cuts, settings);
        if (Shown(run) != Shown(whole))
            return "cut at " + Describe(cuts) + ":\n" + Shown(run) + "uncut:\n" + Shown(whole);
        if (run.output != bytes)
            return "cut at " + Describe(cuts) + ", the tokens written back differ: " + Trace::Escape(std::string_view(run.output));
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
    const Text shortest = Shorten<Text>(text, [&](const Text& candidate) { return !Fault(candidate, settings, seed).empty(); });
    ADD_FAILURE() << "seed " << seed << ", charset " << settings.charset
                  << ", the shortest document with a fault: " << Trace::Escape(shortest) << "\n"
                  << Fault(shortest, settings, seed);
}

class RoundTripTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(RoundTripTest, EightBitDocuments) {
    for (std::uint64_t seed = GetParam(); seed < DOCUMENTS; seed += SHARDS) {
        Dice dice(seed);
        const std::string document = DocumentMaker(&dice).Make();
        DocumentSettings settings = SettingsFor(NARROW_TO_NARROW, dice.OneIn(4) ? Feed::OWNED_STREAM : Feed::STREAM);
        if (dice.OneIn(8))
            settings.charset = 50221;
        const bool mayBeginAMark = !document.empty() && (document[0] == '\xEF' || document[0] == '\xFF');
        if (dice.OneIn(2) && !mayBeginAMark)
            settings.type = GenericParser::DATA_STREAM_AUTO;
        Check(document, settings, seed);
        if (HasFailure())
            return;
    }
}

TEST_P(RoundTripTest, WideDocuments) {
    for (std::uint64_t seed = GetParam(); seed < DOCUMENTS; seed += SHARDS) {
        Dice dice(seed);
        const WideString document = Widen(DocumentMaker(&dice).Make(), &dice);
        const DocumentSettings settings = SettingsFor(WIDE_TO_WIDE, dice.OneIn(4) ? Feed::OWNED_STREAM : Feed::STREAM);
        Check(document, settings, seed);
        if (HasFailure())
            return;
    }
}

INSTANTIATE_TEST_SUITE_P(Shards, RoundTripTest, testing::Range<std::uint64_t>(0, SHARDS));

// The check itself must see a document that loses a character: the cut opener of a script comment does.
TEST(RoundTripCheckTest, SeesALostCharacter) {
    const DocumentSettings settings = SettingsFor(NARROW_TO_NARROW, Feed::STREAM);
    const std::string document = "<p>text</p><script>a//b</script>";
    std::uint64_t seed = 0;
    while (seed < 100 && Fault(document, settings, seed).empty())
        ++seed;
    ASSERT_LT(seed, 100U);
    const std::string shortest =
        Shorten<std::string>(document, [&](const std::string& candidate) { return !Fault(candidate, settings, seed).empty(); });
    EXPECT_LE(shortest.size(), document.size());
    EXPECT_FALSE(Fault(shortest, settings, seed).empty());
}

TEST(RoundTripCheckTest, TheDocumentsHoldEveryKindOfToken) {
    const char* const kinds[] = {"text(",  "start(",    "short(",  "end(",    "s-string(", "d-string(", "junk(", "js-start",
                                 "js-end", "css-start", "css-end", ", open)", ", slash",   "|'",        "|\""};
    std::vector<std::size_t> counts(std::size(kinds));
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        Dice dice(seed);
        const std::string lines = ParseDocument(DocumentMaker(&dice).Make(), {}, SettingsFor(NARROW_TO_NARROW, Feed::STREAM)).Lines();
        for (std::size_t i = 0; i < std::size(kinds); ++i)
            counts[i] += lines.find(kinds[i]) != std::string::npos ? 1 : 0;
    }
    for (std::size_t i = 0; i < std::size(kinds); ++i)
        EXPECT_GE(counts[i], 10U) << kinds[i];
}

}  // namespace
}  // namespace Kestra::Test
