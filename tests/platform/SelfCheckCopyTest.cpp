#include "tests/platform/FileCheck.h"
#include "tests/support/Flavours.h"

// The copy of the self-check on a disk that is full, and from a file that is spoilt: it is whole,
// or there is none.

namespace Kestra::Test {
namespace {

constexpr std::size_t KEPT_IN_MEMORY = std::size_t{4} << 20;
constexpr std::uint64_t SPOILT_AT = 1000000;  ///< a place in the file

/// Counts the ends of parsing.
template <typename C, typename S>
struct EndCounter final : HTML::ParserObserver<C, S> {
    void OnEndParsing() override {
        ++ends;
    }
    int ends = 0;
};

/// A document of exactly `size` bytes: tags and text.
template <typename C>
std::string MakeDocument(std::size_t size) {
    const std::string_view tag = "<p class='some value'>text";
    std::string text;
    while (text.size() + tag.size() <= size / sizeof(C))
        text += tag;
    text.append(size / sizeof(C) - text.size(), 'x');
    return sizeof(C) == 1 ? text : ToUtf16LE(std::string_view(text));
}

/// One document, from the start to a look at the copy.
template <typename C, typename S>
class CopiedDocument {
public:
    CopiedDocument() {
        parser.SetObserver(&observer, false);
        parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
        parser.StartParse(1252, sizeof(C) == 1 ? GenericParser::DATA_STREAM_8BIT : GenericParser::DATA_STREAM_UTF16);
    }

    /// In two pieces.
    void Feed(std::string_view bytes) {
        const std::size_t half = bytes.size() / 4 * 2;
        EXPECT_EQ(parser.ParseBuffer(bytes.data(), half), 0U);
        EXPECT_EQ(parser.ParseBuffer(bytes.data() + half, bytes.size() - half), 0U);
    }

    void ExpectKept(const std::string& bytes) {
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(observer.ends, 1);
        ASSERT_NE(parser.GetSelfCheckStream(), nullptr);
        EXPECT_TRUE(ReadAll(parser.GetSelfCheckStream(), 100000).bytes == bytes);
    }

    void ExpectLost() {
        EXPECT_EQ(parser.EndParse(), 704U);
        EXPECT_EQ(observer.ends, 0) << "the observer hears of no end";
        EXPECT_EQ(parser.GetSelfCheckStream(), nullptr);
        EXPECT_EQ(CountTemporaryFiles(), 0U);
    }

    EndCounter<C, S> observer;
    GenericParser parser;
};

using NarrowDocument = CopiedDocument<char, std::string>;

/// No file grows above `size` bytes while it lives.
struct SmallDisk : FileCalls {
    explicit SmallDisk(std::uint64_t size) {
        endOfDisk = size;
    }
};

template <typename C, typename S>
void CheckKeptAndLost(std::uint64_t diskSize, std::size_t kept, std::size_t lost) {
    const SmallDisk disk(diskSize);
    {
        const std::string bytes = MakeDocument<C>(kept);
        CopiedDocument<C, S> document;
        document.Feed(bytes);
        document.ExpectKept(bytes);
    }
    CopiedDocument<C, S> document;
    document.Feed(MakeDocument<C>(lost));
    document.ExpectLost();
}

TEST(SelfCheckCopyTest, WithoutADiskACopyUpToFourMebibytesIsKept) {
    CheckKeptAndLost<char, std::string>(0, KEPT_IN_MEMORY, KEPT_IN_MEMORY + 2);
    CheckKeptAndLost<WideChar, WideString>(0, KEPT_IN_MEMORY, KEPT_IN_MEMORY + 2);  // one character more needs a file
}

TEST(SelfCheckCopyTest, ADiskThatFillsUpLaterTakesTheCopyAway) {
    CheckKeptAndLost<char, std::string>(6 << 20, 5 << 20, 8 << 20);
}

TEST(SelfCheckCopyTest, ACopyThatIsLostBeforeItIsAskedForIsNull) {
    const SmallDisk none(0);
    NarrowDocument document;
    document.Feed(MakeDocument<char>(6 << 20));
    EXPECT_EQ(document.parser.GetSelfCheckStream(), nullptr);
    document.ExpectLost();
}

TEST(SelfCheckCopyTest, AnEarlyLookAtTheCopySettlesWhatBecomesOfIt) {
    const struct {
        std::size_t size;  ///< bytes, half of which have come when the copy is asked for
        bool isKept;
    } rows[] = {{6 << 20, true}, {12 << 20, false}};
    const SmallDisk none(0);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.size);
        const std::string bytes = MakeDocument<char>(row.size);
        const std::size_t half = bytes.size() / 4 * 2;
        NarrowDocument document;
        document.Feed(std::string_view(bytes).substr(0, half));
        EXPECT_EQ(document.parser.GetSelfCheckStream() != nullptr, row.isKept);
        document.Feed(std::string_view(bytes).substr(half));
        EXPECT_EQ(document.parser.EndParse(), row.isKept ? 0U : 704U);
        EXPECT_EQ(document.observer.ends, row.isKept ? 1 : 0);
    }
}

TEST(SelfCheckCopyTest, TheNextDocumentHasItsCopyAgain) {
    const SmallDisk none(0);
    NarrowDocument document;
    document.Feed(MakeDocument<char>(5 << 20));
    document.ExpectLost();
    EXPECT_EQ(document.parser.EndParse(), 0U);
    document.parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
    document.Feed("<a>");
    document.ExpectKept("<a>");
}

TEST(SelfCheckCopyTest, TheChecksumAloneNeedsNoDisk) {
    const SmallDisk none(0);
    GenericParser parser;
    parser.SetSelfCheck(GenericParser::SELF_CHECK_CRC);
    parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
    const std::string document = MakeDocument<char>(6 << 20);
    EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
}

TEST(SelfCheckCopyTest, AFileThatIsSpoiltIsNoCopy) {
    const struct {
        const char* note;
        std::uint64_t FileCalls::*place;
        std::uint64_t value;
    } rows[] = {
        {"the file is cut short", &FileCalls::endOfFile, SPOILT_AT},
        {"another byte is read", &FileCalls::changedByte, SPOILT_AT},
        {"nothing can be read", &FileCalls::badPlace, 0},
    };
    for (const auto& row : rows) {
        for (const bool isTakenEarly : {false, true}) {
            SCOPED_TRACE(row.note);
            NarrowDocument document;
            document.Feed(MakeDocument<char>(6 << 20));
            EXPECT_EQ(CountTemporaryFiles(), 1U);
            FileCalls calls;
            calls.*row.place = row.value;
            if (isTakenEarly) {
                EXPECT_EQ(document.parser.GetSelfCheckStream(), nullptr);
                EXPECT_EQ(CountTemporaryFiles(), 0U);
            }
            document.ExpectLost();
        }
    }
}

TEST(SelfCheckCopyTest, TheNextDocumentDropsTheCopyWhateverItsFlavour) {
    CopiedDocument<WideChar, WideString> document;
    GenericParser& parser = document.parser;
    document.Feed(MakeDocument<WideChar>(6 << 20));
    EXPECT_EQ(CountTemporaryFiles(), 1U);
    EXPECT_EQ(parser.EndParse(), 0U);
    parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
    EXPECT_EQ(CountTemporaryFiles(), 0U);
    parser.EndParse();
    parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
    document.Feed(MakeDocument<char>(6 << 20));
    EXPECT_EQ(CountTemporaryFiles(), 1U);
    EXPECT_EQ(parser.EndParse(), 0U);
    parser.StartParse(1252, GenericParser::DATA_STREAM_UTF16);
    EXPECT_EQ(CountTemporaryFiles(), 0U);
}

TEST(SelfCheckCopyTest, BytesAfterTheEndAreReadBackToo) {
    const std::string bytes = MakeDocument<char>(6 << 20);
    const std::string more = MakeDocument<char>(1 << 20);
    NarrowDocument document;
    document.Feed(bytes);
    EXPECT_EQ(document.parser.EndParse(), 0U);
    document.Feed(more);
    EXPECT_EQ(document.parser.EndParse(), 0U);
    ASSERT_NE(document.parser.GetSelfCheckStream(), nullptr);
    EXPECT_TRUE(ReadAll(document.parser.GetSelfCheckStream(), 100000).bytes == bytes + more);
}

}  // namespace
}  // namespace Kestra::Test
