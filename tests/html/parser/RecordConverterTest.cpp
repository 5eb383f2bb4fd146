#include "html/parser/RecordConverter.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/Results.h"
#include "platform/Services.h"
#include "platform/StringHelper.h"
#include "tests/platform/ConverterCheck.h"
#include "tests/support/NotedRecord.h"
#include "tools/trace/TokenTrace.h"

// Strings that need no call of a converter, and that such a call would give the same.

namespace Kestra::Test {
namespace {

using HTML::RecordConverter;

/// The bytes that count of a string with its NUL; in 1200, of the string alone.
std::uint64_t CountBytes(CharSet::Code code, const std::string& text) {
    return code == CharSet::UTF16_LE ? text.size()
                                     : CharSetConverter::LeaveOutTerminator(code, text.c_str(), text.size() + 1);
}

std::uint32_t CallService(CharSetConverter* converter, CharSet::Code code, const std::string& from, WideString* to) {
    return Base::PLATFORM_SERVICES.toWide(converter, code, from.data(), CountBytes(code, from), to);
}

std::uint32_t CallService(CharSetConverter* converter, CharSet::Code code, const WideString& from, std::string* to) {
    return Base::PLATFORM_SERVICES.fromWide(converter, code, from.data(), from.size(), to);
}

/// Converts texts of one code page, each by the record converter and by the service itself.
template <typename C, typename S>
class Comparison {
public:
    using OtherCharacter = typename HTML::OtherFlavour<C>::Character;
    using OtherString = typename HTML::OtherFlavour<C>::String;

    explicit Comparison(CharSet::Code codeOfTexts) : code(codeOfTexts) {}

    void Check(const S& text) {
        HTML::TextData<OtherCharacter, OtherString> converted{};
        records.Begin(code, false);
        records.Convert(HTML::TextData<C, S>{&text}, &converted);
        const std::uint32_t result = CallService(&converter, code, text, &expected);
        ASSERT_EQ(records.GetResult(), result) << code << ": " << Dump(text);
        ASSERT_TRUE(records.HasConverted());
        if (result == 0) {
            ASSERT_TRUE(*converted.text == expected) << code << ": " << Dump(text) << "is " << Dump(*converted.text);
        }
    }

private:
    CharSet::Code code;
    RecordConverter<C, S> records;
    CharSetConverter converter;
    OtherString expected;
};

/// 0, the named code pages, and some that are none.
std::set<CharSet::Code> GetCodes() {
    std::set<CharSet::Code> codes = GetNamedCodes();
    codes.insert({0, 1, 42, 4711, 65002});
    return codes;
}

TEST(RecordConverterTest, EveryAsciiByteAloneAndBeforeEveryByte) {
    for (const CharSet::Code code : GetCodes()) {
        Comparison<char, std::string> comparison(code);
        comparison.Check("");
        for (unsigned first = 0; first < 0x80; ++first) {
            std::string text(1, static_cast<char>(first));
            comparison.Check(text);
            for (unsigned second = 0; second < 0x100; ++second) {
                text.resize(1);
                text += static_cast<char>(static_cast<unsigned char>(second));
                comparison.Check(text);
            }
        }
    }
}

TEST(RecordConverterTest, EveryAsciiUnitAloneAndBeforeOthers) {
    for (const CharSet::Code code : GetCodes()) {
        Comparison<WideChar, WideString> comparison(code);
        comparison.Check(WideString());
        for (unsigned first = 0; first < 0x80; ++first) {
            WideString text(1, static_cast<WideChar>(first));
            comparison.Check(text);
            for (unsigned second = 0; second < 0x100; ++second) {
                text.resize(1);
                text += static_cast<WideChar>(second < 0xF0 ? second : second * 0x111);
                comparison.Check(text);
            }
        }
    }
}

TEST(RecordConverterTest, RunsAfterAndBeforeWhatIsNotAscii) {
    const std::string_view parts[] = {
        "0123456789abcdef",
        "~",
        "{",
        "\\",
        "\x1B(J",
        "\x1B$B",
        "\x0E",
        "\x0F",
        "+",
        "&AOk-",
        "\n",
        "\x80",
        "\x81\x5C",
        "\x83~",
        "\xA4\xA2",
        "\xC3\xA9",
        "\xE3\x81\x82",
        "\xF0\x9F\x98\x80",
        "\xF0",
        "\xFF",
    };
    for (const CharSet::Code code : GetCodes()) {
        Comparison<char, std::string> narrow(code);
        Comparison<WideChar, WideString> wide(code);
        for (const std::string_view first : parts) {
            for (const std::string_view second : parts) {
                for (const std::string_view third : parts) {
                    const std::string text = std::string(first).append(second).append(third);
                    narrow.Check(text);
                    wide.Check(ToWide(CharSet::UTF8, text));
                }
            }
        }
    }
}

/// Strings that end in the middle of a unit or character, and others at random.
std::vector<std::string> MakeTails() {
    std::vector<std::string> texts = {""};
    for (unsigned byte = 0; byte < 0x100; ++byte) {
        const std::string text(1, static_cast<char>(static_cast<unsigned char>(byte)));
        texts.push_back(text);
        texts.push_back("a" + text);
        texts.push_back(std::string("\0\0", 2) + text);
    }
    std::mt19937 random(5);
    for (std::size_t i = 0; i < 200; ++i) {
        std::string text;
        for (std::size_t length = random() % 10; length > 0; --length)
            text += static_cast<char>(static_cast<unsigned char>(random() % 4 == 0 ? random() % 4 : random() % 0x100));
        texts.push_back(text);
    }
    return texts;
}

/// The terminator is left out before the conversion: a NUL completes a unit of 1201, 12000 and
/// 12001, and no character of several bytes.
TEST(RecordConverterTest, AStringIsWhatTheServiceMakesOfItWithItsTerminator) {
    const std::vector<std::string> texts = MakeTails();
    std::size_t converted = 0;
    for (const CharSet::Code code : GetCodes()) {
        RecordConverter<char, std::string> records;
        WideString expected;
        // Where there is no converter, an empty string finds that out as well, and a system may
        // search for long each time.
        const std::uint32_t resultOfEmpty = StringNS::StringHelper::GetWideFromGeneric(code, "", 1, &expected);
        ASSERT_TRUE(resultOfEmpty == RESULT_OK || resultOfEmpty == RESULT_UNSUPPORTED_CHARSET) << code;
        for (const std::string& text : texts) {
            HTML::TextData<WideChar, WideString> record{};
            records.Begin(code, false);
            records.Convert(HTML::TextData<char, std::string>{&text}, &record);
            const std::uint32_t result =
                resultOfEmpty == RESULT_OK
                    ? StringNS::StringHelper::GetWideFromGeneric(code, text.c_str(), text.size() + 1, &expected)
                    : resultOfEmpty;
            ASSERT_EQ(records.GetResult(), result) << code << ": " << Dump(text);
            if (result != 0)
                continue;
            ++converted;
            if (code == CharSet::UTF16_LE && text.size() % 2 != 0)
                ASSERT_EQ(record.text->back(), 0xFFFD) << Dump(text);
            else
                ASSERT_TRUE(*record.text == expected) << code << ": " << Dump(text) << "is " << Dump(*record.text);
        }
    }
    EXPECT_GT(converted, 50 * texts.size());
}

int calls = 0;

std::uint32_t CountToWide(CharSetConverter* converter, CharSet::Code code, const char* data, std::uint64_t size,
                          WideString* output) {
    ++calls;
    return Base::PLATFORM_SERVICES.toWide(converter, code, data, size, output);
}

/// A converter that has seen the real services asks others that come later, and forgets them with
/// their end.
TEST(RecordConverterTest, OtherServicesAreAskedForEveryString) {
    RecordConverter<char, std::string> records;
    const std::string text = "text";
    HTML::TextData<WideChar, WideString> converted{};
    const auto convert = [&] {
        calls = 0;
        records.Begin(CharSet::UTF8, false);
        records.Convert(HTML::TextData<char, std::string>{&text}, &converted);
        EXPECT_EQ(*converted.text, KESTRA_WIDE("text"));
        return calls;
    };
    EXPECT_EQ(convert(), 0);
    {
        Base::Services services = Base::PLATFORM_SERVICES;
        services.toWide = CountToWide;
        const Base::ServicesOverride replacement(services);
        EXPECT_EQ(convert(), 1);
    }
    EXPECT_EQ(convert(), 0);
}

TEST(RecordConverterTest, EachRecordIsInTheCodePageOfItsOwn) {
    RecordConverter<char, std::string> records;
    const auto convert = [&](CharSet::Code code, const std::string& text) {
        HTML::TextData<WideChar, WideString> converted{};
        records.Begin(code, false);
        records.Convert(HTML::TextData<char, std::string>{&text}, &converted);
        return records.GetResult() == 0 ? Dump(*converted.text) : "unsupported";
    };
    EXPECT_EQ(convert(65001, "+MEI-"), "002B 004D 0045 0049 002D ");
    EXPECT_EQ(convert(65000, "+MEI-"), "3042 ");
    EXPECT_EQ(convert(1252, "+M"), "002B 004D ");
    EXPECT_EQ(convert(4711, "+M"), "unsupported");
    EXPECT_EQ(convert(4711, ""), "unsupported");
    EXPECT_EQ(convert(0, "a"), "0061 ");
    EXPECT_EQ(convert(37, "\xC1"), "0041 ");
    EXPECT_EQ(convert(37, "A").size(), 5U);
    EXPECT_NE(convert(37, "A"), "0041 ");
    EXPECT_EQ(convert(1200, "ab"), "6261 ");
    EXPECT_EQ(convert(932, "ab"), "0061 0062 ");
}

TEST(RecordConverterTest, StringsOfAnyLengthFollowEachOther) {
    RecordConverter<char, std::string> records;
    for (const std::size_t size : {40U, 0U, 7U, 8U, 3U, 100U, 15U, 16U, 17U, 1U, 33U, 0U, 1000U, 5U}) {
        for (const bool isAscii : {true, false}) {
            std::string text;
            for (std::size_t i = 0; i < size; ++i)
                text += static_cast<char>('a' + i % 26);
            WideString expected(text.begin(), text.end());
            if (!isAscii) {
                text += "\xC3\xA9";
                expected += static_cast<WideChar>(0xE9);
            }
            HTML::TextData<WideChar, WideString> converted{};
            records.Begin(CharSet::UTF8, true);
            records.Convert(HTML::TextData<char, std::string>{&text}, &converted);
            EXPECT_EQ(Dump(*converted.text), Dump(expected));
            EXPECT_FALSE(records.HasReplacements());
        }
    }
}

TEST(RecordConverterTest, TheFirstFailureOfARecordStays) {
    RecordConverter<char, std::string> records;
    const NotedRecord<HTML::StartTagData, char, std::string> tag("start(good|\\xFF||good)");
    HTML::StartTagData<WideChar, WideString> converted{};
    records.Begin(4711, false);
    records.Convert(tag.record, &converted);
    EXPECT_EQ(records.GetResult(), RESULT_UNSUPPORTED_CHARSET);
    records.Begin(CharSet::UTF8, true);
    records.Convert(tag.record, &converted);
    EXPECT_EQ(records.GetResult(), 0U);
    EXPECT_TRUE(records.HasReplacements());
    EXPECT_EQ(*converted.prefix, KESTRA_WIDE("good"));
    EXPECT_EQ(*converted.name, KESTRA_WIDE("\uFFFD"));
    EXPECT_EQ(*converted.suffix, KESTRA_WIDE("good"));
}

/// Converts the record of a line to the other flavour, and traces it.
template <typename C, typename S>
std::string TraceConverted(std::string_view line) {
    using Converter = RecordConverter<C, S>;
    Converter records;
    std::string trace;
    UseNotedRecord<C, S>(line, [&]<template <typename, typename> class Record>(const Record<C, S>* record) {
        Record<typename Converter::OtherCharacter, typename Converter::OtherString> converted{};
        // Every flag of the result is set by the conversion, whatever it was.
        HTML::ForEachField(&converted, [](const char*, auto* field) {
            if constexpr (std::is_same_v<decltype(field), bool*>)
                *field = true;
        });
        records.Begin(CharSet::UTF8, true);
        records.Convert(*record, &converted);
        EXPECT_EQ(records.GetResult(), 0U);
        trace = Trace::Format(converted);
    });
    return trace;
}

TEST(RecordConverterTest, EveryFieldOfEveryKindCrosses) {
    for (const std::string& line : MakeLinesOfEveryKind()) {
        EXPECT_EQ((TraceConverted<char, std::string>(line)), line);
        EXPECT_EQ((TraceConverted<WideChar, WideString>(line)), line);
    }
    EXPECT_EQ((TraceConverted<char, std::string>("junk(a\\xE9\\x00)")), "junk(a\\xE9\\x00)");
    EXPECT_EQ((TraceConverted<WideChar, WideString>("junk(a\\xE9\\x00)")), "junk(a\\xE9\\x00)");
}

TEST(RecordConverterTest, MostCodePagesKeepAscii) {
    CharSetConverter converter;
    std::size_t keeping = 0;
    for (const CharSet::Code code : GetNamedCodes())
        keeping += converter.KeepsAscii(code) ? 1 : 0;
    EXPECT_GT(keeping, 40U);
    for (const CharSet::Code code : {0U, 65001U, 1252U, 28591U, 20127U, 932U, 936U, 949U, 950U, 1251U, 20866U})
        EXPECT_TRUE(converter.KeepsAscii(code)) << code;
    for (const CharSet::Code code : {37U, 864U, 1200U, 1201U, 12000U, 4711U, 20105U, 20106U, 20261U, 20924U, 50220U,
                                     50221U, 50225U, 50227U, 52936U, 57002U, 65000U})
        EXPECT_FALSE(converter.KeepsAscii(code)) << code;
}

}  // namespace
}  // namespace Kestra::Test
