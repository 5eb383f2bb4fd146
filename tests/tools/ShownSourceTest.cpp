#include "tools/kestra-html/view/ShownSource.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "platform/Results.h"
#include "tests/tools/TextSource.h"

namespace Kestra::Test {
namespace {

std::string Read(Tool::ShownSource* source, std::size_t size) {
    std::string bytes(size, '?');
    std::uint64_t count = 0;
    if (source->Read(bytes.data(), size, &count) != RESULT_OK)
        count = 0;
    return bytes.substr(0, static_cast<std::size_t>(count));
}

TEST(ShownSource, KeepsWhatHasBeenRead) {
    TextSource text("abcdefghij");
    Tool::ShownSource source(&text);
    EXPECT_EQ(source.GetReadEnd(), 0U);
    EXPECT_EQ(Read(&source, 4), "abcd");
    EXPECT_EQ(source.GetReadEnd(), 4U);
    EXPECT_EQ(source.GetBytes(1, 3), "bc");
    EXPECT_EQ(source.GetBytes(2, 9), "cd") << "no more than has been read";
    source.Seek(2);
    EXPECT_EQ(Read(&source, 4), "cdef") << "bytes that are read again are kept once";
    EXPECT_EQ(source.GetReadEnd(), 6U);
    EXPECT_EQ(source.GetBytes(0, 6), "abcdef");
    source.Seek(0);
    EXPECT_EQ(Read(&source, 2), "ab");
    EXPECT_EQ(source.GetBytes(0, 6), "abcdef");
}

TEST(ShownSource, ReleasedBytesGo) {
    const std::string content(100000, 'x');
    TextSource text(content + "abcdef");
    Tool::ShownSource source(&text);
    EXPECT_EQ(Read(&source, 100000).size(), 100000U);
    EXPECT_EQ(source.GetBytes(0, 100000).size(), 100000U);
    source.Release(99999);
    source.Release(5);  // has no effect
    EXPECT_EQ(Read(&source, 3), "abc");
    EXPECT_EQ(source.GetBytes(0, 200000), "xabc");
    source.Release(200000);
    EXPECT_EQ(Read(&source, 3), "def");
    EXPECT_EQ(source.GetBytes(100000, 100006), "def");
    EXPECT_EQ(source.GetReadEnd(), 100006U);
    EXPECT_EQ(Read(&source, 3), "");
    EXPECT_EQ(source.GetReadEnd(), 100006U);
}

}  // namespace
}  // namespace Kestra::Test
