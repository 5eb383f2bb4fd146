#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "html/parser/GenericParser.h"
#include "platform/InputStream.h"
#include "tests/platform/windows/SystemCalls.h"
#include "tests/support/Flavours.h"
#include "tests/support/TestStreams.h"

// The copy of the self-check on a disk that is full, and from a file that is spoilt: it is whole,
// or there is none.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

constexpr std::size_t KEPT_IN_MEMORY = std::size_t{4} << 20;
constexpr DWORD SPOILT_AT = 1000000;  ///< a place in the file

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

/// No file grows above `size` bytes while it lives.
class SmallDisk {
public:
    explicit SmallDisk(DWORD size) {
        system->writeFile = [size](HANDLE handle, const void* data, DWORD count, DWORD* written,
                                   OVERLAPPED* place) -> BOOL {
            if (place->OffsetHigh != 0 || place->Offset >= size) {
                *written = 0;
                SetLastError(ERROR_DISK_FULL);
                return FALSE;
            }
            return RealSystem::Write(handle, data, std::min(count, size - place->Offset), written, place);
        };
    }

private:
    HookedSystem system;
};

/// One document, from the start to a look at the copy.
template <typename C, typename S>
class CopiedDocument {
public:
    CopiedDocument() {
        parser.SetObserver(&observer, false);
        parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
        parser.StartParse(1252, sizeof(C) == 1 ? GenericParser::DATA_STREAM_8BIT : GenericParser::DATA_STREAM_UTF16);
    }

    void Feed(std::string_view bytes) {
        EXPECT_EQ(parser.ParseBuffer(bytes.data(), bytes.size()), 0U);
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
    }

    EndCounter<C, S> observer;
    GenericParser parser;
};

template <typename C, typename S>
void CheckWithoutADisk() {
    const SmallDisk none(0);
    {
        const std::string bytes = MakeDocument<C>(KEPT_IN_MEMORY);
        CopiedDocument<C, S> document;
        document.Feed(bytes);
        document.ExpectKept(bytes);
    }
    CopiedDocument<C, S> document;
    document.Feed(MakeDocument<C>(KEPT_IN_MEMORY + 2));  // one character more needs a file
    document.ExpectLost();
}

TEST(WindowsSelfCheckCopyTest, WithoutADiskACopyUpToFourMebibytesIsKept) {
    CheckWithoutADisk<char, std::string>();
    CheckWithoutADisk<WideChar, WideString>();
}

TEST(WindowsSelfCheckCopyTest, ADiskThatFillsUpLaterTakesTheCopyAway) {
    const SmallDisk disk(6 << 20);
    {
        const std::string bytes = MakeDocument<char>(5 << 20);
        CopiedDocument<char, std::string> document;
        document.Feed(bytes);
        document.ExpectKept(bytes);
    }
    CopiedDocument<char, std::string> document;
    document.Feed(MakeDocument<char>(8 << 20));
    document.ExpectLost();
}

TEST(WindowsSelfCheckCopyTest, ACopyThatIsLostBeforeItIsAskedForIsNull) {
    const SmallDisk none(0);
    CopiedDocument<char, std::string> document;
    document.Feed(MakeDocument<char>(6 << 20));
    EXPECT_EQ(document.parser.GetSelfCheckStream(), nullptr);
    document.ExpectLost();
}

TEST(WindowsSelfCheckCopyTest, TheNextDocumentHasItsCopyAgain) {
    const SmallDisk none(0);
    CopiedDocument<char, std::string> document;
    document.Feed(MakeDocument<char>(5 << 20));
    document.ExpectLost();
    document.parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
    document.Feed("<a>");
    document.ExpectKept("<a>");
}

TEST(WindowsSelfCheckCopyTest, TheChecksumAloneNeedsNoDisk) {
    const SmallDisk none(0);
    CopiedDocument<char, std::string> document;
    document.parser.EndParse();
    document.parser.SetSelfCheck(GenericParser::SELF_CHECK_CRC);
    document.parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
    document.Feed(MakeDocument<char>(6 << 20));
    EXPECT_EQ(document.parser.EndParse(), 0U);
}

using ReadHook = decltype(SystemHooks::readFile);

/// The file is one byte short of what was written to it.
BOOL ReadCutShort(HANDLE handle, void* buffer, DWORD size, DWORD* count, OVERLAPPED* place) {
    if (place->Offset >= SPOILT_AT) {
        *count = 0;
        SetLastError(ERROR_HANDLE_EOF);
        return FALSE;
    }
    return RealSystem::Read(handle, buffer, std::min(size, SPOILT_AT - place->Offset), count, place);
}

BOOL ReadChanged(HANDLE handle, void* buffer, DWORD size, DWORD* count, OVERLAPPED* place) {
    const BOOL isRead = RealSystem::Read(handle, buffer, size, count, place);
    if (isRead != 0 && place->Offset <= SPOILT_AT && SPOILT_AT - place->Offset < *count)
        static_cast<char*>(buffer)[SPOILT_AT - place->Offset] = '?';
    return isRead;
}

BOOL ReadNothing(HANDLE, void*, DWORD, DWORD*, OVERLAPPED*) {
    SetLastError(ERROR_CRC);
    return FALSE;
}

const ReadHook SPOILT[] = {ReadCutShort, ReadChanged, ReadNothing};

TEST(WindowsSelfCheckCopyTest, AFileThatIsSpoiltIsNoCopy) {
    for (const ReadHook& read : SPOILT) {
        CopiedDocument<char, std::string> document;
        document.Feed(MakeDocument<char>(6 << 20));
        HookedSystem system;
        system->readFile = read;
        document.ExpectLost();
    }
}

TEST(WindowsSelfCheckCopyTest, ACopyThatIsSpoiltWhenItIsTakenEarlyIsNone) {
    for (const ReadHook& read : SPOILT) {
        CopiedDocument<char, std::string> document;
        document.Feed(MakeDocument<char>(6 << 20));
        HookedSystem system;
        system->readFile = read;
        EXPECT_EQ(document.parser.GetSelfCheckStream(), nullptr);
        document.ExpectLost();
    }
}

TEST(WindowsSelfCheckCopyTest, BytesAfterTheEndAreReadBackToo) {
    const std::string bytes = MakeDocument<char>(6 << 20);
    const std::string more = MakeDocument<char>(1 << 20);
    CopiedDocument<char, std::string> document;
    document.Feed(bytes);
    EXPECT_EQ(document.parser.EndParse(), 0U);
    document.Feed(more);
    EXPECT_EQ(document.parser.EndParse(), 0U);
    ASSERT_NE(document.parser.GetSelfCheckStream(), nullptr);
    EXPECT_TRUE(ReadAll(document.parser.GetSelfCheckStream(), 100000).bytes == bytes + more);
}

}  // namespace
}  // namespace Kestra::Test
