#include "tools/kestra-html/input/PipeSource.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "platform/Results.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/kestra-html/input/Input.h"

namespace Kestra::Test {
namespace {

using Tool::PipeSource;
using Tool::ReadResult;

/// A pipe that another thread writes some bytes into.
class Pipe : public testing::Test {
protected:
    ~Pipe() override {
        source.reset();
        if (writer.joinable())
            writer.join();
    }

    void Fill(std::string newContent, Tool::ReadingEvents events = {}) {
        content = std::move(newContent);
        const std::string name = (folder.GetPath() / "pipe").string();
        ASSERT_EQ(mkfifo(name.c_str(), 0600), 0);
        writer = std::thread([this, name] {
            std::ofstream file(name, std::ios::binary);
            file << content;
        });
        std::unique_ptr<Tool::RawInput> raw;
        ASSERT_EQ(Tool::RawInput::Open(name, &raw), ReadResult::READ);
        ASSERT_FALSE(raw->IsFile());
        source = std::make_unique<PipeSource>(std::move(raw), std::move(events));
    }

    std::string ReadAll() {
        std::string bytes;
        EXPECT_EQ(Tool::ReadRest(source.get(), SIZE_MAX, &bytes), ReadResult::READ);
        return bytes;
    }

    std::uint32_t Read(std::uint64_t size, std::string* bytes) {
        bytes->resize(size);
        std::uint64_t count = 0;
        const std::uint32_t result = source->Read(bytes->data(), size, &count);
        bytes->resize(count);
        return result;
    }

    static std::string Make(std::size_t size) {
        std::string bytes;
        while (bytes.size() < size)
            bytes += std::to_string(bytes.size()) + " ";
        bytes.resize(size);
        return bytes;
    }

    TemporaryFolder folder;
    std::string content;
    std::thread writer;
    std::unique_ptr<PipeSource> source;
};

TEST_F(Pipe, CanBeReadAgain) {
    for (const std::size_t size : {0, 1, 16384, 1048576, 1048577, 3000000}) {
        source.reset();
        if (writer.joinable())
            writer.join();
        std::filesystem::remove(folder.GetPath() / "pipe");
        int files = 0;
        Tool::ReadingEvents events;
        events.onFile = [&files] { ++files; };
        Fill(Make(size), events);
        EXPECT_EQ(source->GetSize(), std::nullopt);
        EXPECT_TRUE(ReadAll() == content) << size;
        EXPECT_EQ(source->GetSize(), size);
        EXPECT_EQ(source->Seek(0), RESULT_OK);
        EXPECT_TRUE(ReadAll() == content) << size;
        EXPECT_EQ(source->Seek(size / 2), RESULT_OK);
        EXPECT_TRUE(ReadAll() == content.substr(size / 2)) << size;
        EXPECT_NE(source->Seek(size + 1), RESULT_OK);
        EXPECT_EQ(files, size > PipeSource::MOST_IN_MEMORY ? 1 : 0) << size;
    }
}

TEST_F(Pipe, IsReadOnInTheMiddleOfASecondTime) {
    Fill(Make(3000000));
    std::string front;
    while (front.size() < 100000) {
        std::string more;
        ASSERT_EQ(Read(50000, &more), RESULT_OK);
        front += more;
    }
    source->ReadOnlyOnce();
    EXPECT_EQ(source->Seek(0), RESULT_OK);
    EXPECT_TRUE(ReadAll() == content);
}

TEST_F(Pipe, ForgetsWhatItIsToldToButForTheHead) {
    Fill(Make(3000000));
    source->ReadOnlyOnce();
    std::string bytes;
    std::uint64_t position = 0;
    while (position < 2000000) {
        ASSERT_EQ(Read(16384, &bytes), RESULT_OK);
        ASSERT_TRUE(content.compare(position, bytes.size(), bytes) == 0);
        position += bytes.size();
        source->Forget(position - 1000);
    }
    EXPECT_EQ(source->Seek(position - 1000), RESULT_OK);
    ASSERT_EQ(Read(500, &bytes), RESULT_OK);
    EXPECT_EQ(bytes, content.substr(position - 1000, 500));
    EXPECT_NE(source->Seek(1000000), RESULT_OK) << "that is gone";
    EXPECT_EQ(source->Seek(0), RESULT_OK);
    std::string head;
    while (head.size() < PipeSource::HEAD_SIZE) {
        ASSERT_EQ(Read(PipeSource::HEAD_SIZE - head.size(), &bytes), RESULT_OK);
        head += bytes;
    }
    EXPECT_EQ(head, content.substr(0, PipeSource::HEAD_SIZE));
    EXPECT_EQ(source->Seek(position), RESULT_OK);
    EXPECT_TRUE(ReadAll() == content.substr(position));
}

TEST_F(Pipe, WaitsAreAnnounced) {
    int waits = 0;
    Tool::ReadingEvents events;
    events.onWait = [&waits] { ++waits; };
    Fill("abc", events);
    EXPECT_EQ(ReadAll(), "abc");
    EXPECT_EQ(waits, 2) << "for the bytes, and for the end";
    source->Seek(0);
    EXPECT_EQ(ReadAll(), "abc");
    EXPECT_EQ(waits, 2);
}

}  // namespace
}  // namespace Kestra::Test
