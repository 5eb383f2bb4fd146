#include <array>
#include <memory>
#include <stdexcept>

#include "html/framework/ParserObserver.h"
#include "html/output/ParserObserverOutputHandler.h"
#include "html/rewrite/Rewriter.h"
#include "tests/reference/DocumentTests.h"
#include "tests/reference/EditedDocument.h"
#include "tests/support/Pieces.h"

/// What goes in comes out: documents of every kind through a rewriter that is asked for nothing.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using HTML::Rewriter;

constexpr std::uint64_t DOCUMENTS = 20000;
constexpr std::uint64_t DOCUMENTS_WITH_CONTENTS = 12000;
constexpr std::size_t CUT_LENGTH = KESTRA_ENUMERATED_LENGTH - 2;  // of those that are cut in every way

/// In bytes, where it is limited: short enough for most documents to go over.
constexpr std::uint64_t LONGEST_TOKEN = 18;

/// Before the enumerated strings.
constexpr std::string_view CONTEXTS[] = {"", "<script>", "<style>", "<p a=b", "<script>//"};

/// Before those that are cut: the middle of every construct as well.
constexpr std::string_view CUT_CONTEXTS[] = {
    "",           "<script>",    "<style>",    "<p a",
    "<p a=b",     "<p b='c",     "</p",        "</p a/",
    "<?xml a",    "<?xml a/",    "<?xml b/c",  "<?xml b='c'",
    "<?p",        "<!D",         "<!--",       "<![",
    "<![CDATA",   "<![CDATA[x",  "<![if",      "<![if x]y",
    "<![endif]",  "<script>/",   "<script>//", "<script>//<!",
    "<script>/*", "<script>'",   "<script>/x", "<style>/*",
    "<style>\"",  "<script></p", "<title>",    "<script><!--<script",
};

class CollectingHandler final : public HTML::ParserObserverOutputHandler {
public:
    void Write(const void* data, std::uint64_t byteCount, bool) override {
        bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
    }

    std::string bytes;
};

/// Who listens, and what happens then.
enum class Listener { NOBODY, NARROW, WIDE, CONTENT, ELEMENTS, THROWING, STOPPING, LIMITING, COUNT };

enum class Input { NARROW, NARROW_AUTO, WIDE, WIDE_AUTO, COUNT };

enum class Feeding { BUFFERS, STREAM, COUNT };

struct Reading {
    Listener listener = Listener::NOBODY;
    Input input = Input::NARROW;
    Feeding feeding = Feeding::BUFFERS;
    StringNS::CharSet::Code charset = StringNS::CharSet::WINDOWS_1252;
    bool checksItself = false;
    bool scriptsAsText = false;
};

std::string DescribeReading(const Reading& reading) {
    return "listener " + std::to_string(static_cast<int>(reading.listener)) + ", input " +
           std::to_string(static_cast<int>(reading.input)) + ", feeding " +
           std::to_string(static_cast<int>(reading.feeding)) + (reading.checksItself ? ", self-check" : "") +
           (reading.scriptsAsText ? ", scripts as text" : "");
}

/// What was seen in all documents, so that a test can tell that it saw anything.
struct Seen {
    std::uint64_t tokens = 0;
    std::uint64_t failures = 0;
    std::uint64_t exceptions = 0;
};

/// Looks at each token, and throws now and then.
class Listening {
public:
    Listening(Rewriter* observedRewriter, Listener listener)
        : rewriter(observedRewriter), throws(listener == Listener::THROWING), stops(listener == Listener::STOPPING) {}

    void Begin(Seen* counters) {
        seen = counters;
        wrong = false;
        calls = 0;
    }

    void Look() {
        const HTML::RewriterToken token = rewriter->GetToken();
        const HTML::TokenPlace place = token.GetPlace();
        ++seen->tokens;
        wrong = wrong || token.IsOver() || token.GetBytes().size() != place.end - place.begin;
        ++calls;
        if (stops && calls % 3 == 0)
            rewriter->Stop();
        if (throws && calls % 5 == 0) {
            ++seen->exceptions;
            throw std::runtime_error("the host has had enough");
        }
    }

    bool wrong = false;

private:
    Rewriter* rewriter;
    bool throws;
    bool stops;
    Seen* seen = nullptr;
    unsigned calls = 0;
};

template <typename C, typename S>
class LookingObserver final : public HTML::ParserObserver<C, S> {
public:
    explicit LookingObserver(Listening* sharedListening) : listening(sharedListening) {}

    void OnText(HTML::TextData<C, S>*) override {
        listening->Look();
    }
    void OnCPPComment(HTML::CPPCommentData<C, S>*) override {
        listening->Look();
    }
    void OnSQuoteString(HTML::SQuoteStringData<C, S>*) override {
        listening->Look();
    }
    void OnStartTag(HTML::StartTagData<C, S>*) override {
        listening->Look();
    }
    void OnEndTag(HTML::EndTagData<C, S>*) override {
        listening->Look();
    }
    void OnCommentTag(HTML::CommentTagData<C, S>*) override {
        listening->Look();
    }
    void OnJSTagStart() override {
        listening->Look();
    }
    void OnJunkData(HTML::JunkData<C, S>*) override {
        listening->Look();
    }

private:
    Listening* listening;
};

/// A rewriter with its listener, for one document after the other.
class CopyingRewriter {
public:
    explicit CopyingRewriter(Listener listener)
        : rewriter(&output), listening(&rewriter, listener), narrow(&listening), wide(&listening) {
        if (listener == Listener::NARROW || listener == Listener::THROWING || listener == Listener::STOPPING)
            rewriter.SetObserver(&narrow);
        else if (listener == Listener::WIDE)
            rewriter.SetObserver(&wide);
        else if (listener == Listener::CONTENT)
            rewriter.OnContent("", [this](HTML::RewriterToken) { listening.Look(); });
        else if (listener == Listener::ELEMENTS)
            rewriter.OnElement("p > [a], .b a", [this](HTML::RewriterElement) { listening.Look(); });
        if (listener == Listener::LIMITING) {
            rewriter.OnContent("", [this](HTML::RewriterToken) { listening.Look(); });
            rewriter.SetMaxTokenSize(LONGEST_TOKEN);
            rewriter.SetMaxAttributes(2);
            rewriter.SetMaxDepth(3);
        }
    }

    /// @param document  in bytes, like the cuts
    /// @return what is wrong, or nothing
    std::string Fault(std::string_view document, const Reading& reading, const Cuts& cuts, Seen* seen) {
        output.bytes.clear();
        listening.Begin(seen);
        rewriter.SetSelfCheck(reading.checksItself ? GenericParser::SELF_CHECK_CRC : GenericParser::SELF_CHECK_OFF);
        rewriter.SetScriptMode(reading.scriptsAsText ? GenericParser::SCRIPT_AS_TEXT : GenericParser::SCRIPT_AS_TOKENS);
        const bool isAuto = reading.input == Input::NARROW_AUTO || reading.input == Input::WIDE_AUTO;
        const GenericParser::DataStreamType type = isAuto                         ? GenericParser::DATA_STREAM_AUTO
                                                   : reading.input == Input::WIDE ? GenericParser::DATA_STREAM_UTF16
                                                                                  : GenericParser::DATA_STREAM_8BIT;
        rewriter.StartParse(reading.charset, type);
        const auto call = [&](auto&& feed) {
            try {
                seen->failures += feed() != 0 ? 1 : 0;
            } catch (const std::runtime_error&) {
            }
        };
        if (reading.feeding == Feeding::STREAM) {
            CutInputStream stream;
            stream.Reset(document, cuts);
            // After an exception the stream goes on where it stands.
            do {
                call([&] { return rewriter.ParseStream(&stream, false); });
            } while (!stream.IsEnd());
        } else {
            for (const auto& [begin, end] : PiecesOf(cuts, document.size())) {
                const HeapPiece<char> piece(document.substr(begin, end - begin));
                call([&] { return rewriter.ParseBuffer(piece.Data(), piece.Size()); });
            }
        }
        call([&] { return rewriter.EndParse(); });
        if (listening.wrong)
            return "a token is not as long as its place";
        return output.bytes == document ? "" : "came out as\n" + Trace::Escape(output.bytes);
    }

private:
    CollectingHandler output;
    Rewriter rewriter;
    Listening listening;
    LookingObserver<char, std::string> narrow;
    LookingObserver<WideChar, WideString> wide;
};

/// A rewriter for each listener, which may have copied other documents before.
class CopyChecker {
public:
    CopyChecker() {
        for (std::size_t i = 0; i < std::size(rewriters); ++i)
            rewriters[i] = std::make_unique<CopyingRewriter>(static_cast<Listener>(i));
    }

    std::string Fault(std::string_view document, const Reading& reading, const Cuts& cuts, Seen* seen) {
        return rewriters[static_cast<std::size_t>(reading.listener)]->Fault(document, reading, cuts, seen);
    }

private:
    std::unique_ptr<CopyingRewriter> rewriters[static_cast<std::size_t>(Listener::COUNT)];
};

std::string InputBytes(std::string_view latin1, Input input) {
    switch (input) {
        case Input::WIDE:
            return ToUtf16LE(latin1);
        case Input::WIDE_AUTO:
            return "\xFF\xFE" + ToUtf16LE(latin1);
        case Input::NARROW_AUTO:
            return "\xEF\xBB\xBF" + std::string(latin1);
        case Input::NARROW:
        case Input::COUNT:
            break;
    }
    return std::string(latin1);
}

bool Check(CopyChecker* checker, std::string_view document, const Reading& reading, const Cuts& cuts, Seen* seen) {
    const std::string fault = checker->Fault(document, reading, cuts, seen);
    if (fault.empty())
        return true;
    const bool isAlways = !CopyChecker().Fault(document, reading, cuts, seen).empty();
    ADD_FAILURE() << (isAlways ? "" : "only after other documents: ") << Trace::Escape(document) << "\ncut at "
                  << Describe(cuts) << ", " << DescribeReading(reading) << "\n"
                  << fault;
    return false;
}

/// The readings by turns.
Reading MakeReading(std::uint64_t number) {
    Reading reading;
    const auto turn = [&number](auto count) {
        const auto choice = static_cast<decltype(count)>(number % static_cast<std::uint64_t>(count));
        number /= static_cast<std::uint64_t>(count);
        return choice;
    };
    reading.listener = turn(Listener::COUNT);
    reading.input = turn(Input::COUNT);
    reading.feeding = turn(Feeding::COUNT);
    reading.checksItself = number % 4 == 0;
    reading.scriptsAsText = number % 3 == 0;
    return reading;
}

constexpr std::uint64_t READINGS = 8 * 4 * 2;
constexpr std::uint64_t STEP = 7;  // has no factor in common with the numbers of choices

/// The next reading, and the same of a document in the other flavour.
std::array<Reading, 2> MakeReadingsOfBothFlavours(std::uint64_t* number) {
    const Reading reading = MakeReading(*number += STEP);
    Reading narrow = reading;
    Reading wide = reading;
    const bool isAuto = reading.input == Input::NARROW_AUTO || reading.input == Input::WIDE_AUTO;
    narrow.input = isAuto ? Input::NARROW_AUTO : Input::NARROW;
    wide.input = isAuto ? Input::WIDE_AUTO : Input::WIDE;
    return {narrow, wide};
}

class CopyTest : public ShardTest {};

TEST_P(CopyTest, RandomDocuments) {
    CopyChecker checker;
    Seen seen;
    ForEachSeed(DOCUMENTS, [&](std::uint64_t seed) {
        const MadeDocument made = maker.Make(seed);
        Dice dice(seed);
        for (std::uint64_t i = 0; i < 2; ++i) {
            Reading reading = MakeReading(seed / SHARDS * 2 * STEP + i * STEP);
            reading.charset = made.charset;
            const std::string bytes = InputBytes(made.bytes, reading.input);
            ASSERT_TRUE(
                Check(&checker, bytes, reading, i == 0 ? Cuts() : CutsOfShortReads(bytes.size(), &dice), &seen));
        }
    });
    EXPECT_GT(seen.tokens, 10000U);
    EXPECT_GT(seen.failures, 0U);
    EXPECT_GT(seen.exceptions, 100U);
}

TEST_P(CopyTest, DocumentsWithContents) {
    CopyChecker checker;
    Seen seen;
    std::uint64_t number = GetParam();
    ForEachSeed(DOCUMENTS_WITH_CONTENTS, [&](std::uint64_t seed) {
        const MadeDocument made = maker.MakeWithContents(seed);
        Dice dice(seed);
        for (Reading reading : MakeReadingsOfBothFlavours(&number)) {
            reading.charset = made.charset;
            reading.scriptsAsText = true;
            const std::string bytes = InputBytes(made.bytes, reading.input);
            ASSERT_TRUE(Check(&checker, bytes, reading, {}, &seen));
            ASSERT_TRUE(Check(&checker, bytes, reading, CutsOfShortReads(bytes.size(), &dice), &seen));
        }
    });
    EXPECT_GT(seen.tokens, DOCUMENTS_WITH_CONTENTS / SHARDS * 4);
    EXPECT_GT(seen.exceptions, 100U);
}

INSTANTIATE_TEST_SUITE_P(Shards, CopyTest, ALL_SHARDS);

class EnumeratedCopyTest : public FirstCharacterTest {};

TEST_P(EnumeratedCopyTest, WholeAndByteByByte) {
    CopyChecker checker;
    Seen seen;
    std::uint64_t number = GetParam();
    ForEachDocument(CONTEXTS, ENUMERATED_LENGTH, [&](std::string_view document, std::string_view) {
        bool isGood = true;
        for (const Reading& reading : MakeReadingsOfBothFlavours(&number)) {
            const std::string bytes = InputBytes(document, reading.input);
            isGood = isGood && Check(&checker, bytes, reading, {}, &seen) &&
                     Check(&checker, bytes, reading, CutsEvery(1, bytes.size()), &seen);
        }
        return isGood;
    });
    EXPECT_GT(seen.tokens, 0U);
}

/// In UTF-16 in the middle of characters too.
TEST_P(EnumeratedCopyTest, CutInEveryWay) {
    CopyChecker checker;
    Seen seen;
    std::uint64_t number = GetParam();
    ForEachDocument(CUT_CONTEXTS, CUT_LENGTH, [&](std::string_view document, std::string_view context) {
        bool isGood = true;
        for (const Reading& reading : MakeReadingsOfBothFlavours(&number)) {
            const std::string bytes = InputBytes(document, reading.input);
            const std::size_t tail = bytes.size() - InputBytes(context, reading.input).size();
            ForEverySplitOfTheTail(bytes.size(), tail, [&](const Cuts& cuts) {
                return isGood = isGood && Check(&checker, bytes, reading, cuts, &seen);
            });
        }
        return isGood;
    });
    EXPECT_GT(seen.tokens, 0U);
}

INSTANTIATE_TEST_SUITE_P(FirstCharacter, EnumeratedCopyTest, ALL_FIRST_CHARACTERS);

TEST(PageCopyTest, ExamplePages) {
    CopyChecker checker;
    Seen seen;
    for (const std::string& page : Pages()) {
        for (std::uint64_t i = 0; i < READINGS; ++i) {
            const Reading reading = MakeReading(i);
            const std::string bytes = InputBytes(page, reading.input);
            EXPECT_TRUE(Check(&checker, bytes, reading, {}, &seen));
            for (const std::size_t size : {7U, 4097U})
                EXPECT_TRUE(Check(&checker, bytes, reading, CutsEvery(size, bytes.size()), &seen));
        }
    }
    EXPECT_GT(seen.tokens, 1000U);
}

// -------------------------------------------------------------------------------------------------
// edits

/// Does the edits of a document when their tokens come.
class Editing {
public:
    Editing(Rewriter* editedRewriter, const EditedDocument* editedDocument, std::size_t bytesOfUnit)
        : rewriter(editedRewriter), document(editedDocument), unit(bytesOfUnit) {}

    void DoEdits(HTML::RewriterToken token) {
        for (; IsAt(token) && document->edits[next].ofToken != nullptr; ++next)
            wrongAnswers += document->edits[next].ofToken(token) ? 0 : 1;
    }

    void DoEdits() {
        DoEdits(rewriter->GetToken());
    }

    void DoEdits(HTML::RewriterElement element) {
        for (; IsAt(element.GetStartTag()) && document->edits[next].ofElement != nullptr; ++next)
            wrongAnswers += document->edits[next].ofElement(element) ? 0 : 1;
    }

    std::size_t next = 0;
    std::size_t wrongAnswers = 0;

private:
    bool IsAt(HTML::RewriterToken token) const {
        return next < document->edits.size() && document->edits[next].tokenBegin * unit == token.GetPlace().begin;
    }

    Rewriter* rewriter;
    const EditedDocument* document;
    std::size_t unit;
};

template <typename C, typename S>
class EditingObserver final : public HTML::ParserObserver<C, S> {
public:
    explicit EditingObserver(Editing* sharedEditing) : editing(sharedEditing) {}

    void OnText(HTML::TextData<C, S>*) override {
        editing->DoEdits();
    }
    void OnStartTag(HTML::StartTagData<C, S>*) override {
        editing->DoEdits();
    }
    void OnShortTag(HTML::ShortTagData<C, S>*) override {
        editing->DoEdits();
    }
    void OnEndTag(HTML::EndTagData<C, S>*) override {
        editing->DoEdits();
    }
    void OnCommentTag(HTML::CommentTagData<C, S>*) override {
        editing->DoEdits();
    }

private:
    Editing* editing;
};

class EditTest : public ShardTest {};

/// An edit changes exactly its place.
TEST_P(EditTest, RandomEdits) {
    EditsSeen seen;
    ForEachSeed(DOCUMENTS, [&](std::uint64_t seed) {
        const EditedDocument document = MakeEditedDocument(seed, &seen);
        const bool isWide = seed / SHARDS % 2 == 1;
        const std::string bytes = isWide ? ToUtf16LE(document.bytes) : document.bytes;
        const std::string spliced = ApplySplices(document.bytes, document.splices);
        Dice dice(seed);
        const Cuts cuts = CutsOfShortReads(bytes.size(), &dice);
        CollectingHandler output;
        Rewriter rewriter(&output);
        Editing editing(&rewriter, &document, isWide ? 2 : 1);
        EditingObserver<char, std::string> narrow(&editing);
        EditingObserver<WideChar, WideString> wide(&editing);
        const std::size_t listener = dice.Below(3);
        if (listener == 0)
            rewriter.SetObserver(&narrow);
        else if (listener == 1)
            rewriter.SetObserver(&wide);
        else
            rewriter.OnContent("", [&](HTML::RewriterToken token) { editing.DoEdits(token); });
        rewriter.OnElement("*", [&](HTML::RewriterElement element) { editing.DoEdits(element); });
        rewriter.StartParse(StringNS::CharSet::ISO_8859_1,
                            isWide ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT);
        for (const auto& [begin, end] : PiecesOf(dice.OneIn(2) ? cuts : Cuts(), bytes.size())) {
            const HeapPiece<char> piece(std::string_view(bytes).substr(begin, end - begin));
            ASSERT_EQ(rewriter.ParseBuffer(piece.Data(), piece.Size()), 0U);
        }
        ASSERT_EQ(rewriter.EndParse(), 0U);
        ASSERT_EQ(output.bytes, isWide ? ToUtf16LE(spliced) : spliced) << "seed " << seed << "\n"
                                                                       << Trace::Escape(document.bytes);
        ASSERT_EQ(editing.next, document.edits.size()) << "seed " << seed;
        ASSERT_EQ(editing.wrongAnswers, 0U) << "seed " << seed << "\n" << Trace::Escape(document.bytes);
    });
    // It has asked for everything.
    EXPECT_GT(seen.ofTokens, 1000U);
    EXPECT_GT(seen.ofAttributes, 500U);
    EXPECT_GT(seen.ofTexts, 500U);
    for (const std::uint64_t number : seen.ofElements)
        EXPECT_GT(number, 200U);
    EXPECT_GT(seen.refused, 200U);
    EXPECT_GT(seen.inRemovedContent, 200U);
}

INSTANTIATE_TEST_SUITE_P(Shards, EditTest, ALL_SHARDS);

}  // namespace
}  // namespace Kestra::Test
