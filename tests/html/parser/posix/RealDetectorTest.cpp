#include "platform/StringHelper.h"
#include "tests/html/parser/DocumentRows.h"
#include "tests/platform/posix/CharsetSamples.h"

// What the parser makes of the answers of this platform's own detector.

namespace Kestra::Test {
namespace {

TEST(RealDetectorTest, PlainAsciiIsNoAnswer) {
    std::string text;
    while (text.size() < 300)
        text += "A few plain words of no great weight. ";
    text.resize(300);
    GenericParser parser;
    StringNS::CharSet::Code code = 3;
    EXPECT_EQ(parser.DetectCharset(text.data(), text.size(), &code), 11U);
    EXPECT_EQ(code, 0U);
    EXPECT_EQ(parser.StartParse(0, DATA_STREAM_AUTO), 0U);
    VFS::MemoryInputStream stream(text);
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.GetCharset(), 0U);
}

/// True when the code page reads the bytes of the sample as they were meant; two code pages may
/// agree on all of them.
bool ReadsSample(const CharsetSample& sample, StringNS::CharSet::Code code) {
    if (code == (sample.code == StringNS::CharSet::EUC_JP ? StringNS::CharSet::EUC_JP_0208_1990 : sample.code))
        return true;
    WideString text;
    const std::uint32_t result =
        StringNS::StringHelper::GetWideFromGeneric(code, sample.bytes.data(), sample.bytes.size(), &text);
    return result == 0 && text == WideString(sample.text.begin(), sample.text.end());
}

TEST(RealDetectorTest, SamplesOfAtLeast256BytesThroughTheBufferForm) {
    GenericParser parser;
    int detected = 0;
    for (const CharsetSample& sample : MakeCharsetSamples()) {
        SCOPED_TRACE(sample.note);
        StringNS::CharSet::Code code = 7;
        const std::uint32_t result = parser.DetectCharset(sample.bytes.data(), sample.bytes.size(), &code);
        if (sample.bytes.size() < GenericParser::DETECTCHARSET_MIN_SIZE) {
            EXPECT_EQ(result, 707U);
            EXPECT_EQ(code, 7U);
            continue;
        }
        if (sample.code == StringNS::CharSet::US_ASCII) {
            EXPECT_EQ(result, 11U);
            EXPECT_EQ(code, 0U);
            continue;
        }
        if (result != 0) {
            EXPECT_EQ(result, 708U);
            EXPECT_EQ(code, 0U);
            continue;
        }
        EXPECT_TRUE(ReadsSample(sample, code)) << code;
        ++detected;
    }
    EXPECT_GE(detected, 26);
}

TEST(RealDetectorTest, ARussianPageIsReadAgainInItsCharset) {
    for (const CharsetSample& sample : MakeCharsetSamples()) {
        if (sample.note != "Russian letter, windows-1251" && sample.note != "Russian letter, UTF-8")
            continue;
        SCOPED_TRACE(sample.note);
        FedParser parser(Observed::WIDE);
        parser.Start(0, DATA_STREAM_AUTO);
        EXPECT_EQ(parser.FeedStream("<p>" + sample.bytes + "</p>"), 705U);
        EXPECT_EQ(parser.GetCharset(), sample.code);
        parser.lines.clear();
        EXPECT_EQ(parser.FeedStream("<p>" + sample.bytes + "</p>"), 0U);
        EXPECT_TRUE(parser.WasCharsetDetectorUsed());
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(Join(parser.lines), Join({"start-parsing", "start(|p||)", "text(" + Trace::Escape(sample.text) + ")",
                                            "end(|p|||)", "end-parsing"}));
    }
}

}  // namespace
}  // namespace Kestra::Test
