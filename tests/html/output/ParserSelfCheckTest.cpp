#include "html/output/ParserSelfCheck.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "html/framework/RecordFields.h"
#include "html/output/Crc32.h"
#include "html/output/SelfCheckSink.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecordWriter.h"
#include "tests/support/TestStreams.h"

// The two ways into a self-check, its callbacks and the parser's short way, against the serializer
// that writes to a string.

namespace Kestra::Test {
namespace {

/// All output in one string.
class ByteHandler final : public HTML::ParserObserverOutputHandler {
public:
    void Write(const void* data, std::uint64_t byteCount, bool) override {
        bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
    }

    std::string bytes;
};

template <typename Flavour>
class ParserSelfCheckTest : public testing::Test {
protected:
    using Char = typename Flavour::C;
    using String = typename Flavour::S;
    using Output = HTML::ParserObserverOutput<Char, String>;
    using SelfCheck = HTML::ParserSelfCheck<Char, String>;

    ParserSelfCheckTest() {
        called.Reset(true);
        written.Reset(true);
    }

    /// Takes a record in all three ways.
    template <typename Record>
    void Take(Record record) {
        HTML::CallObserver(static_cast<HTML::ParserObserver<Char, String>*>(&called), &record);
        HTML::WriteToSelfCheck(&written, record);
        WriteRecord(record, &expected);
    }

    void MoveText(const String& text) {
        Take(HTML::TextData<Char, String>{&text});
    }

    /// A string of any characters, mostly short.
    String MakeString() {
        const std::size_t limits[] = {1, 2, 2, 5, 20, 70, 300};
        return Repeated(engine() % limits[engine() % std::size(limits)]);
    }

    String Repeated(std::size_t length) {
        String text;
        for (std::size_t i = 0; i < length; ++i)
            text.push_back(static_cast<Char>(engine() % 0xFFFF));
        return text;
    }

    bool Chance() {
        return engine() % 2 == 0;
    }

    // The fields of records of any kind, each string and list null now and then, as in records that
    // hosts make.

    void Fill(bool* flag) {
        *flag = Chance();
    }

    void Fill(std::uint32_t* quote) {
        *quote = static_cast<std::uint32_t>(engine() % 4);
    }

    void Fill(String* text) {
        *text = MakeString();
    }

    template <typename Text>
    void Fill(const std::basic_string<Text>** text) {
        if (engine() % 20 == 0)
            return;
        const String made = MakeString();
        std::list<std::basic_string<Text>>& kept = GetKept<Text>();
        kept.emplace_back();
        for (const Char character : made)
            kept.back().push_back(static_cast<Text>(character));
        *text = &kept.back();
    }

    template <typename Text>
    auto& GetKept() {
        if constexpr (std::is_same_v<Text, char>)
            return keptBytes;
        else
            return keptWide;
    }

    template <typename Part>
    void Fill(const Vector<Part>** parts) {
        if (engine() % 20 == 0)
            return;
        Vector<Part>& list = std::get<Vector<Part>>(lists);
        list.clear();
        for (auto count = engine() % 5; count > 0; --count)
            HTML::ForEachField(&list.emplace_back(), [this](const char*, auto* field) { this->Fill(field); });
        *parts = &list;
    }

    /// A record of a kind from 0 to 13.
    void TakeRandom(std::size_t kind) {
        std::size_t number = 0;
        HTML::ForEachKind([&]<template <typename, typename> class Record>() {
            if (number++ != kind)
                return;
            keptBytes.clear();
            keptWide.clear();
            Record<Char, String> record{};
            HTML::ForEachField(&record, [this](const char*, auto* field) { this->Fill(field); });
            Take(record);
        });
    }

    void ExpectSame() {
        const std::uint32_t crc = HTML::UpdateCrc32ByTables(0, expected.bytes.data(), expected.bytes.size());
        for (SelfCheck* const selfCheck : {&called, &written}) {
            ASSERT_EQ(selfCheck->GetOutputCrc(), crc);
            VFS::InputStream* const stream = selfCheck->GetSelfCheckStream();
            ASSERT_NE(stream, nullptr);
            ASSERT_TRUE(ReadAll(stream, 100000).bytes == expected.bytes);
        }
    }

    void Reset() {
        called.Reset(true);
        written.Reset(true);
        expected.bytes.clear();
    }

    std::mt19937 engine{7};
    std::tuple<Vector<HTML::Attribute<Char, String>>, Vector<HTML::EntityToken<Char, String>>> lists;
    std::list<std::string> keptBytes;
    std::list<WideString> keptWide;
    SelfCheck called;
    SelfCheck written;
    ByteHandler expected;
};

TYPED_TEST_SUITE(ParserSelfCheckTest, Flavours);

TYPED_TEST(ParserSelfCheckTest, RecordsOfEveryKind) {
    for (std::size_t kind = 0; kind < 14; ++kind) {
        SCOPED_TRACE(kind);
        for (int i = 0; i < 300; ++i) {
            this->Reset();
            this->TakeRandom(kind);
            this->TakeRandom(kind);
            this->ExpectSame();
        }
    }
    EXPECT_FALSE(this->expected.bytes.empty());
}

TYPED_TEST(ParserSelfCheckTest, ManyRecords) {
    for (int i = 0; i < 20000; ++i)
        this->TakeRandom(this->engine() % 14);
    EXPECT_GT(this->expected.bytes.size(), std::size_t{1} << 20);
    this->ExpectSame();
}

TYPED_TEST(ParserSelfCheckTest, LongStringsBesideShortOnes) {
    // Around the sizes of a buffer, with what lies in it before.
    const std::size_t character = sizeof(typename TypeParam::C);
    for (const std::size_t buffer : {4096, 8192, 16384}) {
        for (const std::size_t before : {0, 1, 2, 33}) {
            for (std::size_t length = buffer / character - before - 3; length <= buffer / character + 3; ++length) {
                SCOPED_TRACE(testing::Message() << before << " and " << length << " characters");
                this->Reset();
                this->MoveText(this->Repeated(before));
                this->MoveText(this->Repeated(length));
                this->MoveText(this->Repeated(1));
                this->TakeRandom(5);
                this->ExpectSame();
            }
        }
    }
    this->Reset();
    this->MoveText(this->Repeated(100000));
    this->MoveText(this->Repeated(7));
    this->ExpectSame();
}

TYPED_TEST(ParserSelfCheckTest, BothWaysGatherInOneBuffer) {
    for (int i = 0; i < 3000; ++i) {
        const typename TypeParam::S text = this->MakeString();
        HTML::TextData<typename TypeParam::C, typename TypeParam::S> record = {&text};
        const bool swapped = this->Chance();
        (swapped ? this->written : this->called).OnText(&record);
        HTML::WriteToSelfCheck(swapped ? &this->called : &this->written, record);
        const std::string mark(this->engine() % 3, '\xFE');
        this->called.OnBOM(mark.data(), mark.size());
        this->written.OnBOM(mark.data(), mark.size());
        TestFixture::Output::GetTextOutput(&record, &this->expected);
        this->expected.bytes += mark;
    }
    this->ExpectSame();
}

TYPED_TEST(ParserSelfCheckTest, ACopyGoesOnByItself) {
    using Check = HTML::ParserSelfCheck<typename TypeParam::C, typename TypeParam::S>;
    const auto crcOf = [](const std::string& bytes) {
        return HTML::UpdateCrc32ByTables(0, bytes.data(), bytes.size());
    };
    for (const std::size_t length : {0, 3, 5000, 20000}) {
        this->Reset();
        this->MoveText(this->Repeated(length));
        Check copy(this->written);
        Check assigned;
        assigned.OnOutput("other", 5, true);
        assigned = this->written;
        EXPECT_EQ(copy.GetSelfCheckStream(), nullptr);
        copy.OnOutput("copy", 4, true);
        assigned.OnOutput("assigned", 8, true);
        const std::string before = this->expected.bytes;
        this->MoveText(this->Repeated(9));
        EXPECT_EQ(copy.GetOutputCrc(), crcOf(before + "copy"));
        EXPECT_EQ(assigned.GetOutputCrc(), crcOf(before + "assigned"));
        this->ExpectSame();
    }
}

TYPED_TEST(ParserSelfCheckTest, NothingIsNothing) {
    this->written.OnOutput(nullptr, 0, true);
    EXPECT_EQ(this->written.GetOutputCrc(), 0U);
    this->written.OnOutput("a", 1, true);
    this->written.OnOutput(nullptr, 0, true);
    EXPECT_EQ(this->written.GetOutputCrc(), 0xE8B7BE43U);
    this->written.Reset(false);
    EXPECT_EQ(this->written.GetOutputCrc(), 0U);
}

}  // namespace
}  // namespace Kestra::Test
