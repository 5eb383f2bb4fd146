#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include "html/parser/GenericParser.h"
#include "platform/InputStream.h"
#include "tests/support/Flavours.h"
#include "tests/support/TestStreams.h"

// The copy of the self-check on a disk that is full, and from a file that is spoilt: it is whole,
// or there is none.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

constexpr std::size_t KEPT_IN_MEMORY = std::size_t{4} << 20;

/// Counts the ends of parsing.
template <typename C, typename S>
struct EndCounter final : HTML::ParserObserver<C, S> {
    void OnEndParsing() override {
        ++ends;
    }
    int ends = 0;
};

/// What became of a document.
struct Outcome {
    std::uint32_t endResult = 0;
    bool ended = false;  ///< the observer was told
    bool hasCopy = false;
    bool isWhole = false;  ///< and the copy equals the document
};

/// Parses a document of one tag after the other, and takes a look at the copy.
/// @param askEarly  for the copy, when half of the document has been fed
template <typename C, typename S>
Outcome ParseWithCopy(const std::string& bytes, bool askEarly = false) {
    EndCounter<C, S> observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
    parser.StartParse(1252, sizeof(C) == 1 ? GenericParser::DATA_STREAM_8BIT : GenericParser::DATA_STREAM_UTF16);
    Outcome outcome;
    const std::size_t half = bytes.size() / 4 * 2;
    if (parser.ParseBuffer(bytes.data(), half) != 0)
        return outcome;
    if (askEarly)
        outcome.hasCopy = parser.GetSelfCheckStream() != nullptr;
    if (parser.ParseBuffer(bytes.data() + half, bytes.size() - half) != 0)
        return outcome;
    outcome.endResult = parser.EndParse();
    outcome.ended = observer.ends == 1;
    VFS::InputStream* const stream = parser.GetSelfCheckStream();
    if (askEarly)
        return outcome;
    outcome.hasCopy = stream != nullptr;
    if (stream != nullptr)
        outcome.isWhole = ReadAll(stream, 100000).bytes == bytes;
    return outcome;
}

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

/// Runs `check` in a process of its own, in which no file may grow above `limit` bytes. It answers
/// 0 when all is well.
template <typename Check>
void OnADiskOf(rlim_t size, Check check) {
    const auto run = [&check, size] {
        const rlimit limit = {size, size};
        signal(SIGXFSZ, SIG_IGN);  // the write fails instead
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            _exit(99);
        _exit(check());
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

template <typename C, typename S>
int CheckOnAFullDisk() {
    // Without a file nothing is lost up to the limit.
    const Outcome kept = ParseWithCopy<C, S>(MakeDocument<C>(KEPT_IN_MEMORY));
    if (kept.endResult != 0 || !kept.ended || !kept.isWhole)
        return 1;
    // One character more needs a file.
    const Outcome lost = ParseWithCopy<C, S>(MakeDocument<C>(KEPT_IN_MEMORY + 2));
    if (lost.endResult != 704 || lost.ended || lost.hasCopy)
        return 2;
    return 0;
}

TEST(SelfCheckCopyTest, WithoutADiskACopyUpToFourMebibytesIsKept) {
    OnADiskOf(0, CheckOnAFullDisk<char, std::string>);
    OnADiskOf(0, CheckOnAFullDisk<WideChar, WideString>);
}

TEST(SelfCheckCopyTest, ADiskThatFillsUpLaterTakesTheCopyAway) {
    OnADiskOf(6 << 20, [] {
        const Outcome kept = ParseWithCopy<char, std::string>(MakeDocument<char>(5 << 20));
        if (kept.endResult != 0 || !kept.ended || !kept.isWhole)
            return 1;
        const Outcome lost = ParseWithCopy<char, std::string>(MakeDocument<char>(8 << 20));
        if (lost.endResult != 704 || lost.ended || lost.hasCopy)
            return 2;
        return 0;
    });
}

TEST(SelfCheckCopyTest, ACopyThatIsLostBeforeItIsAskedForIsNull) {
    OnADiskOf(0, [] {
        const Outcome lost = ParseWithCopy<char, std::string>(MakeDocument<char>(12 << 20), true);
        return lost.endResult == 704 && !lost.ended && !lost.hasCopy ? 0 : 1;
    });
}

TEST(SelfCheckCopyTest, ACopyThatIsTakenBeforeTheDiskIsFullIsKept) {
    OnADiskOf(0, [] {
        const Outcome kept = ParseWithCopy<char, std::string>(MakeDocument<char>(6 << 20), true);
        return kept.endResult == 0 && kept.ended && kept.hasCopy ? 0 : 1;
    });
}

TEST(SelfCheckCopyTest, TheNextDocumentHasItsCopyAgain) {
    OnADiskOf(0, [] {
        EndCounter<char, std::string> observer;
        GenericParser parser;
        parser.SetObserver(&observer, false);
        parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        const std::string document = MakeDocument<char>(5 << 20);
        parser.ParseBuffer(document.data(), document.size());
        if (parser.EndParse() != 704 || parser.GetSelfCheckStream() != nullptr || parser.EndParse() != 0)
            return 1;
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        parser.ParseBuffer("<a>", 3);
        if (parser.EndParse() != 0 || observer.ends != 1 || parser.GetSelfCheckStream() == nullptr)
            return 2;
        return ReadAll(parser.GetSelfCheckStream(), 10).bytes == "<a>" ? 0 : 3;
    });
}

TEST(SelfCheckCopyTest, TheChecksumAloneNeedsNoDisk) {
    OnADiskOf(0, [] {
        GenericParser parser;
        parser.SetSelfCheck(GenericParser::SELF_CHECK_CRC);
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
        const std::string document = MakeDocument<char>(6 << 20);
        parser.ParseBuffer(document.data(), document.size());
        return parser.EndParse() == 0 ? 0 : 1;
    });
}

/// The descriptor of the one temporary file that is open, or -1.
int FindTemporaryFile() {
    int found = -1;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(entry.path(), error).string();
        if (!error && target.find("/kestra-") != std::string::npos && target.find("(deleted)") != std::string::npos)
            found = std::stoi(entry.path().filename().string());
    }
    return found;
}

/// Feeds a document of 6 MiB, spoils the file of the copy, and ends the document.
template <typename Spoil>
void ExpectLost(Spoil spoil) {
    EndCounter<char, std::string> observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
    parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
    const std::string document = MakeDocument<char>(6 << 20);
    ASSERT_EQ(parser.ParseBuffer(document.data(), document.size()), 0U);
    const int file = FindTemporaryFile();
    ASSERT_GE(file, 0);
    spoil(file);
    EXPECT_EQ(parser.EndParse(), 704U);
    EXPECT_EQ(observer.ends, 0);
    EXPECT_EQ(parser.GetSelfCheckStream(), nullptr);
    EXPECT_EQ(FindTemporaryFile(), -1);
}

TEST(SelfCheckCopyTest, AFileThatIsCutShortIsNoCopy) {
    ExpectLost([](int file) { ASSERT_EQ(ftruncate(file, 1000000), 0); });
}

TEST(SelfCheckCopyTest, AFileWithOtherBytesIsNoCopy) {
    ExpectLost([](int file) { ASSERT_EQ(pwrite(file, "?", 1, 1000000), 1); });
}

TEST(SelfCheckCopyTest, AFileThatCannotBeReadIsNoCopy) {
    // In its place stands a file that is open for writing only.
    ExpectLost([](int file) {
        const int unreadable = open("/dev/null", O_WRONLY);
        ASSERT_GE(unreadable, 0);
        ASSERT_EQ(dup2(unreadable, file), file);
        ASSERT_EQ(close(unreadable), 0);
    });
}

/// Feeds a document of 6 MiB whose copy is being written to a file.
void FeedLongDocument(GenericParser* parser, GenericParser::DataStreamType type) {
    parser->SetSelfCheck(GenericParser::SELF_CHECK_COPY);
    parser->StartParse(1252, type);
    const std::string document =
        type == GenericParser::DATA_STREAM_UTF16 ? MakeDocument<WideChar>(6 << 20) : MakeDocument<char>(6 << 20);
    ASSERT_EQ(parser->ParseBuffer(document.data(), document.size()), 0U);
    ASSERT_GE(FindTemporaryFile(), 0);
}

TEST(SelfCheckCopyTest, ACopyThatIsSpoiltWhenItIsTakenEarlyIsNone) {
    GenericParser parser;
    FeedLongDocument(&parser, GenericParser::DATA_STREAM_8BIT);
    ASSERT_EQ(ftruncate(FindTemporaryFile(), 1000000), 0);
    EXPECT_EQ(parser.GetSelfCheckStream(), nullptr);
    EXPECT_EQ(FindTemporaryFile(), -1);
    EXPECT_EQ(parser.EndParse(), 704U);
}

TEST(SelfCheckCopyTest, TheNextDocumentDropsTheCopyWhateverItsFlavour) {
    GenericParser parser;
    FeedLongDocument(&parser, GenericParser::DATA_STREAM_UTF16);
    EXPECT_EQ(parser.EndParse(), 0U);
    parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
    EXPECT_EQ(FindTemporaryFile(), -1);
    FeedLongDocument(&parser, GenericParser::DATA_STREAM_8BIT);
    EXPECT_EQ(parser.EndParse(), 0U);
    parser.StartParse(1252, GenericParser::DATA_STREAM_UTF16);
    EXPECT_EQ(FindTemporaryFile(), -1);
}

TEST(SelfCheckCopyTest, BytesAfterTheEndAreReadBackToo) {
    GenericParser parser;
    FeedLongDocument(&parser, GenericParser::DATA_STREAM_8BIT);
    EXPECT_EQ(parser.EndParse(), 0U);
    const std::string more = MakeDocument<char>(1 << 20);
    ASSERT_EQ(parser.ParseBuffer(more.data(), more.size()), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    ASSERT_NE(parser.GetSelfCheckStream(), nullptr);
    EXPECT_EQ(ReadAll(parser.GetSelfCheckStream(), 100000).bytes, MakeDocument<char>(6 << 20) + more);
}

}  // namespace
}  // namespace Kestra::Test
