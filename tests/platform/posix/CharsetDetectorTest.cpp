#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/CharSet.h"
#include "platform/CharsetDetector.h"
#include "platform/Results.h"
#include "platform/Services.h"
#include "platform/posix/LanguageModels.h"
#include "platform/posix/TextJudgement.h"
#include "tests/platform/posix/CharsetSamples.h"

namespace Kestra::Base {
namespace {

using StringNS::CharSet;
using Test::CharsetSample;
using Test::DecodeText;
using Test::EncodeText;
using Test::MakeCharsetSamples;
using Test::PutAfterScript;

namespace Texts = Test::CharsetTexts;

constexpr std::uint32_t CONFIDENT = 50;  ///< what the front end asks for unless the host says otherwise

/// Detects over a heap block of the exact size, so that sanitizers see a read after it. Code 0
/// stands for no result.
DetectedCharset Detect(std::string_view bytes) {
    const std::unique_ptr<char[]> block(new char[bytes.size()]);
    bytes.copy(block.get(), bytes.size());
    DetectedCharset detected{4711, 4711};
    std::uint32_t count = 4711;
    EXPECT_EQ(CharsetDetector::Detect(block.get(), bytes.size(), &detected, &count), RESULT_OK);
    EXPECT_LE(count, 1U);
    return count == 0 ? DetectedCharset{} : detected;
}

const std::vector<CharsetSample>& Samples() {
    static const std::vector<CharsetSample> samples = MakeCharsetSamples();
    return samples;
}

std::string Repeat(std::string_view piece, std::size_t times) {
    std::string text;
    text.reserve(piece.size() * times);
    for (; times > 0; --times)
        text += piece;
    return text;
}

/// A code page, and whether the detector is confident of it.
struct Outcome {
    CharSet::Code code;
    bool confident;
};

struct SampleOutcome {
    const char* note;
    Outcome alone;
    Outcome behindScript;
};

// What the detector makes of each sample. Another page than the sample's reads it the same.
const SampleOutcome SAMPLE_OUTCOMES[] = {
    {"Russian letter, windows-1251", {1251, true}, {1251, true}},
    {"Russian letter, UTF-8", {65001, true}, {65001, true}},
    {"Russian letter, UTF-8 cut inside a character", {65001, true}, {65001, true}},
    {"Russian notice, windows-1251", {1251, true}, {1251, true}},
    {"Russian notice, KOI8-R", {20866, true}, {20866, true}},
    {"Russian notice, ISO-8859-5", {28595, true}, {28595, true}},
    {"Russian notice, IBM866", {866, true}, {866, true}},
    {"Russian notice, UTF-16LE", {1200, true}, {1200, true}},
    {"Russian sentence, windows-1251", {1251, true}, {1251, true}},
    {"Russian sentence, KOI8-R", {20866, true}, {20866, true}},
    {"Ukrainian walk, windows-1251", {1251, true}, {1251, true}},
    {"Bulgarian recipe, windows-1251", {1251, true}, {1251, true}},
    {"Japanese story, Shift_JIS", {932, true}, {932, true}},
    {"Japanese story, EUC-JP", {51932, true}, {51932, true}},
    {"Japanese story, ISO-2022-JP", {50221, true}, {50221, true}},
    {"Japanese story, UTF-8", {65001, true}, {65001, true}},
    {"Japanese story, UTF-8 cut inside a character", {65001, true}, {65001, true}},
    {"Japanese story, UTF-16LE", {1200, true}, {1200, true}},
    {"Japanese notice, Shift_JIS", {932, true}, {932, true}},
    {"Japanese notice, EUC-JP", {51932, true}, {51932, true}},
    {"Japanese notice, ISO-2022-JP", {50221, true}, {50221, true}},
    {"Chinese story, GB18030", {54936, true}, {54936, true}},
    {"Chinese story, UTF-8", {65001, true}, {65001, true}},
    {"Chinese notice, GB18030", {54936, true}, {54936, true}},
    {"Taiwanese story, Big5", {950, true}, {950, true}},
    {"Korean story, EUC-KR", {949, true}, {949, true}},
    {"Korean story, ISO-2022-KR", {50225, true}, {50225, true}},
    {"Korean request, EUC-KR", {949, true}, {949, true}},
    {"Greek story, windows-1253", {28597, true}, {28597, true}},
    {"Greek story, ISO-8859-7", {28597, true}, {28597, true}},
    {"Greek notice, windows-1253", {1253, true}, {1253, true}},
    {"Greek notice, ISO-8859-7", {28597, true}, {28597, true}},
    {"Hebrew story, windows-1255", {1255, true}, {1255, true}},
    {"Arabic story, windows-1256", {1256, true}, {1256, true}},
    {"Turkish story, windows-1254", {1254, true}, {1254, true}},
    {"Polish story, windows-1250", {1250, true}, {1250, true}},
    {"Polish story, ISO-8859-2", {28592, true}, {28592, true}},
    {"Czech story, windows-1250", {1250, true}, {1250, true}},
    {"Czech story, ISO-8859-2", {28592, true}, {28592, true}},
    {"Hungarian story, windows-1250", {28592, true}, {28592, true}},
    {"Romanian letter, windows-1250", {1250, true}, {1250, true}},
    {"German story, windows-1252", {1252, true}, {1252, true}},
    {"German sentence, ISO-8859-1", {1252, true}, {1252, true}},
    {"French story, windows-1252", {1252, true}, {1252, true}},
    {"French story, UTF-8", {65001, true}, {65001, true}},
    {"Spanish story, ISO-8859-1", {1252, true}, {1252, true}},
    {"Portuguese story, ISO-8859-1", {1252, true}, {1252, true}},
    {"Italian story, ISO-8859-1", {1252, true}, {1252, true}},
    {"Danish story, ISO-8859-1", {1252, true}, {1252, true}},
    {"Swedish story, ISO-8859-1", {1252, true}, {1252, true}},
    {"Finnish story, ISO-8859-1", {1252, true}, {1252, true}},
    {"Icelandic story, ISO-8859-1", {1252, true}, {1252, true}},
    {"English story, US-ASCII", {20127, true}, {20127, true}},
    {"English story, UTF-16LE", {1200, true}, {1200, true}},
    {"English quotation marks, windows-1252", {1252, true}, {1252, true}},
    {"English quotation marks, UTF-8", {65001, true}, {65001, true}},
    {"Thai story, windows-874", {874, true}, {874, true}},
    {"Thai notice, windows-874", {874, true}, {874, true}},
    {"Latvian story, windows-1257", {1257, true}, {1257, true}},
    {"Lithuanian story, windows-1257", {1257, true}, {1257, true}},
    {"Estonian story, windows-1257", {1252, true}, {1252, true}},
    {"Vietnamese story, windows-1258", {1258, true}, {1258, true}},
};

TEST(CharsetDetectorSamplesTest, CoverLanguagesAndSizes) {
    std::set<std::string> notes;
    std::set<std::string> languages;
    std::size_t largest = 0;
    for (const CharsetSample& sample : Samples()) {
        EXPECT_TRUE(notes.insert(sample.note).second) << sample.note;
        languages.insert(sample.language);
        EXPECT_GE(sample.text.size(), 60U) << sample.note;
        EXPECT_LE(sample.bytes.size(), 4096U) << sample.note;
        EXPECT_GE(PutAfterScript(sample).size(), sample.bytes.size() + 12 * 1024) << sample.note;
        largest = std::max(largest, sample.bytes.size());
    }
    EXPECT_GE(notes.size(), 26U);
    EXPECT_GE(languages.size(), 14U);
    EXPECT_GE(largest, 3800U);
}

TEST(CharsetDetectorSamplesTest, HaveTheirOutcomes) {
    ASSERT_EQ(Samples().size(), std::size(SAMPLE_OUTCOMES));
    for (std::size_t i = 0; i < Samples().size(); ++i) {
        const CharsetSample& sample = Samples()[i];
        const SampleOutcome& row = SAMPLE_OUTCOMES[i];
        ASSERT_EQ(sample.note, row.note);
        const DetectedCharset alone = Detect(sample.bytes);
        EXPECT_EQ(alone.code, row.alone.code) << row.note;
        EXPECT_EQ(alone.confidence >= CONFIDENT, row.alone.confident) << row.note << ": " << alone.confidence;
        const DetectedCharset behindScript = Detect(PutAfterScript(sample));
        EXPECT_EQ(behindScript.code, row.behindScript.code) << row.note << ", after script";
        EXPECT_EQ(behindScript.confidence >= CONFIDENT, row.behindScript.confident)
            << row.note << ", after script: " << behindScript.confidence;
    }
}

/// True when the code page reads the bytes of the sample as they were meant.
bool ReadsSample(const CharsetSample& sample, CharSet::Code code) {
    if (code == sample.code)
        return true;
    const WideString wideName = CharSet::GetCharSetName(code);
    std::string name;
    for (const WideChar character : wideName)
        name.push_back(static_cast<char>(character));
    return DecodeText(sample.bytes, name.c_str()) == sample.text;
}

TEST(CharsetDetectorSamplesTest, NoConfidentAnswerReadsATextWrong) {
    for (const CharsetSample& sample : Samples()) {
        for (const std::string& bytes : {sample.bytes, PutAfterScript(sample)}) {
            const DetectedCharset detected = Detect(bytes);
            if (detected.confidence >= CONFIDENT) {
                EXPECT_TRUE(ReadsSample(sample, detected.code)) << sample.note << ": " << detected.code;
            }
        }
    }
}

std::string FormatScore(const CharsetSample& sample, const std::string& bytes) {
    const DetectedCharset detected = Detect(bytes);
    if (detected.code == CharSet::UNKNOWN)
        return "none";
    std::string score = std::to_string(detected.code) + " / " + std::to_string(detected.confidence);
    if (detected.code != sample.code)
        score += ReadsSample(sample, detected.code) ? " same" : " wrong";
    return score;
}

std::string FormatScoreTable() {
    std::ostringstream table;
    table << "| Sample | Bytes | Code page | Alone | After 12 KB of script |\n| --- | ---: | ---: | --- | --- |\n";
    for (const CharsetSample& sample : Samples()) {
        table << "| " << sample.note << " | " << sample.bytes.size() << " | " << sample.code << " | "
              << FormatScore(sample, sample.bytes) << " | " << FormatScore(sample, PutAfterScript(sample)) << " |\n";
    }
    return table.str();
}

/// Prints the table for docs/charset-detection.md and holds it against the one that stands there.
TEST(CharsetDetectorScores, PrintTable) {
    const std::string table = FormatScoreTable();
    std::cout << table;

    std::ifstream file(KESTRA_SOURCE_DIR "/docs/charset-detection.md", std::ios::binary);
    ASSERT_TRUE(file.is_open());
    const std::string document{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::size_t start = document.find("| Sample | Bytes |");
    ASSERT_NE(start, std::string::npos);
    std::size_t end = document.find("\n\n", start);
    end = end == std::string::npos ? document.size() : end + 1;
    EXPECT_EQ(document.substr(start, end - start), table) << "the printed table belongs into docs/charset-detection.md";
}

TEST(CharsetDetectorTest, NothingIsNoResult) {
    DetectedCharset detected;
    std::uint32_t count = 4711;
    EXPECT_EQ(CharsetDetector::Detect(nullptr, 0, &detected, &count), RESULT_OK);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(CharsetDetector::Detect("", 0, &detected, &count), RESULT_OK);
    EXPECT_EQ(count, 0U);
}

TEST(CharsetDetectorTest, TheServicesLeadToIt) {
    const std::string ascii(300, 'a');
    DetectedCharset detected;
    std::uint32_t count = 0;
    EXPECT_EQ(GetServices().detectCharset(ascii.data(), ascii.size(), &detected, &count), RESULT_OK);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(detected.code, 20127U);
}

TEST(CharsetDetectorTest, NullPointersAreTurnedDown) {
    DetectedCharset detected;
    std::uint32_t count = 0;
    EXPECT_EQ(CharsetDetector::Detect(nullptr, 1, &detected, &count), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(CharsetDetector::Detect("a", 1, nullptr, &count), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(CharsetDetector::Detect("a", 1, &detected, nullptr), RESULT_INVALID_ARGUMENT);
}

struct Certain {
    const char* note;
    std::string_view bytes;
    CharSet::Code code;
};

using namespace std::string_view_literals;

const Certain CERTAIN_ANSWERS[] = {
    {"one ASCII character", "a"sv, 20127},
    {"white space", " \r\n\t "sv, 20127},
    {"control characters", "\x01\x7F"sv, 20127},
    {"markup alone", "<p>"sv, 20127},
    {"U+0080", "\xC2\x80"sv, 65001},
    {"U+07FF", "\xDF\xBF"sv, 65001},
    {"U+0800", "\xE0\xA0\x80"sv, 65001},
    {"U+D7FF, the last before the surrogates", "\xED\x9F\xBF"sv, 65001},
    {"U+E000, the first after the surrogates", "\xEE\x80\x80"sv, 65001},
    {"U+FFFF", "\xEF\xBF\xBF"sv, 65001},
    {"U+10000", "\xF0\x90\x80\x80"sv, 65001},
    {"U+10FFFF", "\xF4\x8F\xBF\xBF"sv, 65001},
    {"UTF-8 with a mark", "\xEF\xBB\xBF"sv, 65001},
    {"UTF-8 in the markup alone", "<p title=\"\xC3\xA9\">"sv, 65001},
    {"the end cuts the second of two bytes", "\xC3\xA9t\xC3"sv, 65001},
    {"the end cuts the second of three bytes", "\xC3\xA9t\xE0"sv, 65001},
    {"the end cuts the third of three bytes", "\xC3\xA9t\xE2\x82"sv, 65001},
    {"the end cuts the fourth of four bytes", "\xC3\xA9t\xF0\x9F\x98"sv, 65001},
    {"the end cuts the only sequence", "caf\xC3"sv, 65001},
    {"UTF-16LE with a mark", "\xFF\xFE\x3F\x04\x40\x04\x38\x04"sv, 1200},
    {"UTF-16LE markup without a mark", "<\0h\0t\0m\0l\0>\0<\0b\0o\0d\0y\0>\0"sv, 1200},
};

TEST(CharsetDetectorTest, SomeBytesLeaveNoDoubt) {
    for (const Certain& row : CERTAIN_ANSWERS) {
        const DetectedCharset detected = Detect(row.bytes);
        EXPECT_EQ(detected.code, row.code) << row.note;
        EXPECT_EQ(detected.confidence, 100U) << row.note;
    }
}

const Certain NOT_CERTAIN[] = {
    // note, bytes, what is not certain
    {"an escape character", "a\x1B"sv, 20127},
    {"a NUL", "a\0b"sv, 20127},
    {"a lone trail byte", "a\x80"sv, 65001},
    {"a lead byte without its trail byte", "a\xC3(b"sv, 65001},
    {"a lead byte after a lead byte", "a\xC3\xC3\xA9"sv, 65001},
    {"an overlong form of two bytes, first", "a\xC0\x80"sv, 65001},
    {"an overlong form of two bytes, last", "a\xC1\xBF"sv, 65001},
    {"an overlong form of three bytes", "a\xE0\x9F\xBF"sv, 65001},
    {"an overlong form of four bytes", "a\xF0\x8F\xBF\xBF"sv, 65001},
    {"a surrogate", "a\xED\xA0\x80"sv, 65001},
    {"above U+10FFFF", "a\xF4\x90\x80\x80"sv, 65001},
    {"a lead byte of five", "a\xF8\x88\x80\x80\x80"sv, 65001},
    {"a lead byte above all", "a\xF5\x80\x80\x80"sv, 65001},
    {"a bad byte in a cut sequence", "a\xE2("sv, 65001},
};

TEST(CharsetDetectorTest, SomeBytesLeaveDoubt) {
    for (const Certain& row : NOT_CERTAIN) {
        const DetectedCharset detected = Detect(row.bytes);
        EXPECT_TRUE(detected.code != row.code || detected.confidence < 100) << row.note;
    }
}

TEST(CharsetDetectorTest, MarksNameTheOrderOfBytes) {
    const std::u16string text = u"\uFEFFA mark comes before this text. \u041F\u0440\u0438\u0432\u0435\u0442!";
    const struct {
        const char* converter;
        CharSet::Code code;
    } rows[] = {{"UTF-16LE", 1200}, {"UTF-16BE", 1201}, {"UTF-32LE", 12000}, {"UTF-32BE", 12001}, {"UTF-8", 65001}};
    for (const auto& row : rows) {
        const DetectedCharset detected = Detect(EncodeText(text, row.converter));
        EXPECT_EQ(detected.code, row.code) << row.converter;
        EXPECT_GE(detected.confidence, 90U) << row.converter;
    }
}

TEST(CharsetDetectorTest, WithoutTextThereIsNoResult) {
    EXPECT_EQ(Detect("<p title=\"\xCF\xF0\xE8\xE2\xE5\xF2\">").code, CharSet::UNKNOWN);
    EXPECT_EQ(Detect("<p title=\"\xCF\xF0\xE8\xE2\xE5\xF2\"> \n </p>").code, CharSet::UNKNOWN);
    EXPECT_EQ(Detect("<!-- \xCF\xF0\xE8\xE2\xE5\xF2").code, CharSet::UNKNOWN);
    EXPECT_EQ(Detect("<script>alert('\xCF\xF0\xE8\xE2\xE5\xF2')").code, CharSet::UNKNOWN);
}

/// The bytes that matter went with the markup: what is left is English for one engine and ASCII for
/// the other.
TEST(CharsetDetectorTest, SevenBitTextSaysNothingAboutItsMarkup) {
    const std::string text = EncodeText(Texts::ENGLISH, "US-ASCII");
    const DetectedCharset detected = Detect("<p title=\"\xCF\xF0\xE8\xE2\xE5\xF2\">" + text);
    EXPECT_NE(detected.code, CharSet::US_ASCII);
    EXPECT_LE(detected.confidence, 40U);
}

TEST(CharsetDetectorTest, ANulSpeaksAgainstEightBitText) {
    for (const CharsetSample& sample : Samples()) {
        if (sample.code != 1251)
            continue;
        EXPECT_GE(Detect(sample.bytes).confidence, 90U) << sample.note;
        EXPECT_LE(Detect(sample.bytes + '\0').confidence, 20U) << sample.note;
    }
}

/// One lone byte matches no charset of ICU's.
TEST(CharsetDetectorTest, NoMatchIsNoFailure) {
    EXPECT_LT(Detect("a\x80").confidence, CONFIDENT);
    EXPECT_LT(Detect("\xE9 ").confidence, CONFIDENT);
}

TEST(CharsetDetectorTest, OneDamagedCharacterKeepsUtf8) {
    for (const std::u16string_view text :
         {std::u16string_view(Texts::RUSSIAN), std::u16string_view(Texts::JAPANESE), std::u16string_view(Texts::HEBREW),
          std::u16string_view(Texts::FRENCH_LONG)}) {
        std::string bytes = EncodeText(text, "UTF-8");
        bytes.insert(bytes.size() / 2, "\xE9 ");
        const DetectedCharset detected = Detect(bytes);
        EXPECT_EQ(detected.code, CharSet::UTF8) << bytes;
        EXPECT_GE(detected.confidence, 40U) << bytes;
        EXPECT_LT(detected.confidence, 100U) << bytes;
    }
}

/// A few bytes are no evidence, whatever they look like: each is worth six.
TEST(CharsetDetectorTest, LittleTextIsLittleEvidence) {
    const std::string thai = EncodeText(Texts::THAI, "windows-874");
    const struct {
        std::size_t size;
        std::uint32_t most;
        std::uint32_t least;
    } rows[] = {{8, 48, 20}, {13, 78, 50}, {16, 96, 50}, {37, 99, 90}};
    for (const auto& row : rows) {
        const DetectedCharset detected = Detect(thai.substr(0, row.size));
        EXPECT_EQ(detected.code, 874U) << row.size << " bytes";
        EXPECT_LE(detected.confidence, row.most) << row.size << " bytes";
        EXPECT_GE(detected.confidence, row.least) << row.size << " bytes";
    }
}

TEST(CharsetDetectorTest, WhiteSpaceIsNoText) {
    for (const char* const word : {"\xC4\xC1", "k\xF9\xF2", "\xED\xE5\xF2", "caf\xE9s"}) {
        for (const std::string& space : {std::string(), std::string(300, ' '), Repeat("\r\n\t", 100)}) {
            const DetectedCharset answer = Detect(word + space);
            EXPECT_LT(answer.confidence, 50U) << word << " and " << space.size() << " bytes of white space";
        }
    }
}

/// No code page reads such text, so whatever is named is not to be taken.
TEST(CharsetDetectorTest, CharsetsWithoutACodePageAreNoSureAnswer) {
    constexpr std::u16string_view VIETNAMESE =
        u"Buổi sáng bà Lan mở cửa từ rất sớm, khi đường phố còn vắng và đèn chưa tắt. Khách quen "
        u"không cần gọi món, chỉ ngồi xuống là bà đã biết ai thích nhiều hành, ai không ăn ớt.";
    constexpr std::u16string_view KAZAKH =
        u"Таңертең ерте тұрып, балалар өзен жағасына барды. Күн әлі шықпаған еді, бірақ құстар "
        u"ән салып жатты. Үлкен ағасы қайықты суға түсіріп, кіші қарындасын қасына отырғызды.";
    const struct {
        const char* note;
        std::u16string_view text;
        CharSet::Code code;
    } rows[] = {
        {"VISCII", VIETNAMESE, 70001},
        {"TCVN 5712", VIETNAMESE, 70002},
        {"KZ-1048", KAZAKH, 70003},
        {"PTCP154", KAZAKH, 70004},
    };
    for (const auto& row : rows) {
        const auto pages = LetterPages();
        const auto page = std::ranges::find(pages, row.code, &LetterPage::code);
        ASSERT_NE(page, pages.end()) << row.note;
        std::string bytes;
        for (const char16_t unit : row.text) {
            const auto* const found = std::ranges::find(page->units, unit);
            ASSERT_TRUE(unit < 0x80 || found != std::end(page->units))
                << row.note << ", " << static_cast<unsigned>(unit);
            bytes.push_back(static_cast<char>(unit < 0x80 ? unit : found - std::begin(page->units) + 128));
        }
        for (const std::string& whole : {bytes, bytes.substr(0, 60)})
            EXPECT_LT(Detect(whole).confidence, CONFIDENT) << row.note << ", " << whole.size() << " bytes";
    }
}

/// Each character is a byte that announces it and one that 932 takes for the second of a pair.
TEST(CharsetDetectorTest, NarrowKanaInEucJp) {
    std::string bytes;
    for (const char16_t unit : std::u16string_view(u"ｻｸﾗﾉﾊﾅｶﾞｻｷ ｶﾜﾉﾐｽﾞﾊｱｵｸ ｺﾄﾞﾓﾀﾁﾊｲﾁﾆﾁｼﾞｭｳｱｿﾝﾃﾞｲﾙ"))
        bytes += unit == u' ' ? std::string(" ") : EncodeText(std::u16string(1, unit), "EUC-JP");
    const DetectedCharset detected = Detect(bytes);
    EXPECT_EQ(detected.code, CharSet::EUC_JP);
    EXPECT_GE(detected.confidence, CONFIDENT);
}

/// Text that neither engine knows, or that they take for something else.
TEST(CharsetDetectorTest, LettersTellWhatTheEnginesDoNotKnow) {
    const struct {
        const char* note;
        std::u16string_view text;
        const char* converter;
        CharSet::Code code;
    } rows[] = {
        {"Ukrainian in KOI8-U", Texts::UKRAINIAN, "KOI8-U", 21866},
        {"Russian in KOI8-R", Texts::RUSSIAN, "KOI8-R", 20866},
        {"Russian of an old Macintosh", Texts::RUSSIAN, "x-mac-cyrillic", 10007},
        {"Thai", Texts::THAI, "windows-874", 874},
        {"Latvian", Texts::LATVIAN, "windows-1257", 1257},
        {"Lithuanian", Texts::LITHUANIAN, "windows-1257", 1257},
        {"Polish of DOS", Texts::POLISH, "IBM852", 852},
        {"German of DOS", Texts::GERMAN_SHORT, "IBM850", 850},
        {"Danish of DOS", Texts::DANISH, "IBM850", 850},
        {"Turkish of DOS", Texts::TURKISH, "IBM857", 857},
        {"Finnish of an old Macintosh", Texts::FINNISH, "macintosh", 10000},
        {"Swedish of an old Macintosh", Texts::SWEDISH, "macintosh", 10000},
        {"Greek of an old Macintosh", Texts::GREEK, "x-mac-greek", 10006},
        {"Turkish of an old Macintosh", Texts::TURKISH, "x-mac-turkish", 10081},
        {"Russian, two bytes each", Texts::RUSSIAN, "UTF-16LE", 1200},
        {"Russian, two bytes each, the higher one first", Texts::RUSSIAN, "UTF-16BE", 1201},
        {"Japanese, two bytes each", Texts::JAPANESE, "UTF-16LE", 1200},
        {"Japanese, two bytes each, the higher one first", Texts::JAPANESE, "UTF-16BE", 1201},
        {"Greek, two bytes each", Texts::GREEK, "UTF-16LE", 1200},
        {"Chinese of electronic mail", Texts::CHINESE, "HZ", 52936},
    };
    for (const auto& row : rows) {
        const std::string bytes = EncodeText(row.text, row.converter);
        for (const std::string& whole : {bytes, bytes.substr(0, 120)}) {
            const DetectedCharset detected = Detect(whole);
            EXPECT_EQ(detected.code, row.code) << row.note << ", " << whole.size() << " bytes";
            EXPECT_GE(detected.confidence, CONFIDENT) << row.note << ", " << whole.size() << " bytes";
        }
    }
}

/// A tilde and a brace are text unless pairs of bytes follow.
TEST(CharsetDetectorTest, ATildeAndABraceAreAscii) {
    EXPECT_EQ(Detect("a ~{ b ~} c").code, CharSet::US_ASCII);
    EXPECT_EQ(Detect("~{VPNDP~}").code, CharSet::US_ASCII) << "half a character";
    EXPECT_EQ(Detect("~{").code, CharSet::US_ASCII);
    EXPECT_EQ(Detect("~{name~} of ~{text~}").code, CharSet::US_ASCII) << "rare characters";
    EXPECT_EQ(Detect("~{VPND").code, CharSet::US_ASCII) << "no run ends";
    EXPECT_EQ(Detect("~{VPND~}").code, 52936U);
    EXPECT_EQ(Detect("~{VPND~} ~{VPN").code, 52936U) << "the end cuts a run";
    EXPECT_EQ(Detect("a~{VPND~} and ~{zo~}").code, CharSet::US_ASCII) << "above the rows of Chinese";
}

/// Ten or twenty bytes of a program are UTF-16 to nobody.
TEST(CharsetDetectorTest, ControlsAloneAreNotUtf16) {
    std::mt19937 random(7);
    std::string noise(400, '\0');
    for (char& byte : noise)
        byte = static_cast<char>(random());
    EXPECT_LT(Detect(noise).confidence, CONFIDENT);
    const std::string russian = EncodeText(Texts::RUSSIAN, "windows-1251");
    EXPECT_EQ(Detect("a\x01" + russian).code, 1251U);
    EXPECT_EQ(Detect("a\x01\x02\x03" + russian).code, 1251U);
}

/// Sound is two bytes each, and close together.
TEST(CharsetDetectorTest, NumbersOfTwoBytesAreNotUtf16) {
    std::string numbers;
    for (int i = 0; i < 600; ++i) {
        const int number = 1000 + (i % 32 < 16 ? i % 16 * 6 : 96 - i % 16 * 6) - 48;
        numbers += {static_cast<char>(number), static_cast<char>(number >> 8)};
    }
    EXPECT_LT(Detect(numbers).confidence, CONFIDENT);
}

/// Old systems end a file so, and some separate fields by a control.
TEST(CharsetDetectorTest, AControlMakesNoUtf16) {
    std::string digits;
    for (int i = 0; i < 200; ++i)
        digits += {static_cast<char>('0' + i % 10), '\n'};
    std::string fields = digits;
    std::ranges::replace(fields, '\n', '\x1F');
    const struct {
        const char* note;
        std::string bytes;
        CharSet::Code code;
    } rows[] = {
        {"digits", digits + '\x1A', CharSet::US_ASCII},
        {"fields", fields, CharSet::US_ASCII},
        {"Chinese", EncodeText(Texts::CHINESE, "GB18030") + '\x1A', 54936},
        {"Chinese and a backspace", EncodeText(Texts::CHINESE, "GB18030") + "\n\b", 54936},
        {"Korean", EncodeText(Texts::KOREAN, "EUC-KR") + '\x1A', 949},
        {"Japanese", EncodeText(Texts::JAPANESE, "Shift_JIS") + '\x1A', 932},
        {"Japanese with escapes", EncodeText(Texts::JAPANESE, "ISO-2022-JP") + '\x1A', 50221},
        {"Russian", EncodeText(Texts::RUSSIAN, "UTF-8") + '\x1A', CharSet::UTF8},
        {"Japanese in UTF-8", EncodeText(Texts::JAPANESE, "UTF-8") + '\x1A', CharSet::UTF8},
    };
    for (const auto& row : rows) {
        const DetectedCharset detected = Detect(row.bytes);
        EXPECT_EQ(detected.code, row.code) << row.note;
        EXPECT_GE(detected.confidence, CONFIDENT) << row.note;
    }
}

/// In another script they are letters.
TEST(CharsetDetectorTest, SignsInEnglishAreWestern) {
    const struct {
        const char* note;
        std::string_view before;  ///< of a number
        std::string_view after;   ///< of another one
        std::string_view rest;
        bool confident;
    } rows[] = {
        {"pounds", "Garden chair for \xA3", ".50, was \xA3", "", true},
        {"degrees", "Station ", ": ",
         " \xB0"
         "C",
         true},
        {"tolerances", "Part ", ", length ", " \xB1 2 mm, volume 3 m\xB3", true},
        {"halves", "Take ", " \xBD cups of flour, ", " \xBC spoon of salt", true},
        {"yen", "Tea for \xA5", " or ", "", true},
        {"paragraphs", "see \xB6 ", " of act ", "", true},
        {"ordinals", "floor ", "\xBA, door ", "\xAA", true},
        {"cents", "apple ", "\xA2, pear ", "\xA2", true},
        {"products", "Board ", " \xD7 ", " cm", false},
        {"micrometres", "fibre ", " \xB5m, length ", " mm", false},
        {"footnotes", "As he said\xB9 on page ", " and again\xB2 on page ", "", true},
    };
    for (const auto& row : rows) {
        std::string text;
        for (int i = 20; i < 60; ++i) {
            text += "<li>" + std::string(row.before) + std::to_string(i) + std::string(row.after) +
                    std::to_string(i + 5) + std::string(row.rest) + "</li>\n";
        }
        const DetectedCharset detected = Detect(text);
        if (row.confident) {
            EXPECT_EQ(detected.code, CharSet::WINDOWS_1252) << row.note;
            EXPECT_GE(detected.confidence, CONFIDENT) << row.note;
        } else {
            EXPECT_TRUE(detected.code == CharSet::WINDOWS_1252 || detected.confidence < CONFIDENT) << row.note;
        }
    }
}

/// One byte beyond ASCII in two pages of English is no Cyrillic, Chinese or Polish.
TEST(CharsetDetectorTest, OneByteInEnglishIsNoOtherLanguage) {
    const std::string english = Repeat("The keeper counts all lamps of the harbour before night. ", 30);
    for (int byte = 0xA0; byte < 0x100; ++byte) {
        const DetectedCharset detected = Detect(english + "word" + static_cast<char>(byte) + " " + english);
        EXPECT_TRUE(detected.code == CharSet::WINDOWS_1252 || detected.confidence < CONFIDENT)
            << byte << ": " << detected.code << ", " << detected.confidence;
    }
}

/// The bytes of a picture or a program, and of a charset that no language here is written in.
TEST(CharsetDetectorTest, NoiseIsNoText) {
    const struct {
        const char* note;
        int first;
        int last;
        std::size_t smallest;
    } rows[] = {{"all but NUL", 1, 255, 64}, {"from 128 up", 128, 255, 300}, {"without controls", 160, 255, 1000}};
    for (const auto& row : rows) {
        for (const std::size_t size : {64U, 300U, 1000U, 4000U, 20000U}) {
            if (size < row.smallest)
                continue;
            for (unsigned seed = 1; seed <= 10; ++seed) {
                std::mt19937 random(seed);
                std::string noise(size, '\0');
                for (char& byte : noise) {
                    byte = static_cast<char>(static_cast<unsigned>(row.first) +
                                             random() % static_cast<unsigned>(row.last - row.first + 1));
                }
                const DetectedCharset detected = Detect(noise);
                EXPECT_LT(detected.confidence, CONFIDENT)
                    << row.note << ", " << size << " bytes, seed " << seed << ": " << detected.code;
            }
        }
    }
}

TEST(CharsetDetectorTest, CharsetsThatNoPageIsStayUnsure) {
    constexpr std::u16string_view GREEK =
        u"\u03A4\u03BF \u03C0\u03BB\u03BF\u03AF\u03BF \u03C6\u03B5\u03CD\u03B3\u03B5\u03B9 \u03B1\u03C0\u03CC "
        u"\u03C4\u03BF \u03BB\u03B9\u03BC\u03AC\u03BD\u03B9 \u03C4\u03BF \u03C0\u03C1\u03C9\u03AF \u03BA\u03B1\u03B9 "
        u"\u03B3\u03C5\u03C1\u03AF\u03B6\u03B5\u03B9 \u03C4\u03BF \u03B2\u03C1\u03AC\u03B4\u03C5. ";
    EXPECT_LT(Detect(Repeat(EncodeText(GREEK, "ibm-737"), 3)).confidence, CONFIDENT);
    EXPECT_LT(Detect(EncodeText(Texts::HEBREW, "ibm-862")).confidence, CONFIDENT);
}

/// One byte of an old copyright notice does not switch the escapes off.
TEST(CharsetDetectorTest, AByteBesideEscapesKeepsThem) {
    const DetectedCharset detected = Detect(EncodeText(Texts::JAPANESE, "ISO-2022-JP") + " \xA9 2003");
    EXPECT_EQ(detected.code, 50221U);
}

TEST(CharsetDetectorTest, FourBytesACharacterNeedNoMark) {
    EXPECT_EQ(Detect(EncodeText(Texts::RUSSIAN, "UTF-32LE")).code, 12000U);
    EXPECT_EQ(Detect(EncodeText(Texts::RUSSIAN, "UTF-32BE")).code, 12001U);
}

/// The same words a hundred times say little more than once.
TEST(CharsetDetectorTest, RepetitionsAreLittleEvidence) {
    for (const std::string_view piece : {"Z\xFCge und \xC4pfel "sv, "\xCF\xF0\xE8\xE2\xE5\xF2 "sv}) {
        const EngineAnswer none;
        const Judgement once = JudgeText(piece, none, none);
        const std::string text = Repeat(piece, 100);
        const Judgement often = JudgeText(text, none, none);
        EXPECT_EQ(often.code, once.code) << piece;
        EXPECT_GT(often.evidence.margin, once.evidence.margin) << piece;
        EXPECT_LT(often.evidence.margin, 20 * once.evidence.margin) << piece;
    }
}

/// Single and triple shifts are characters of EUC-JP.
TEST(CharsetDetectorTest, ShiftsOfEucJpAreCharacters) {
    const std::u16string text =
        u"\u3053\u308C\u306F\uFF83\uFF7D\uFF84\u3067\u3059\u3002\uFF8C\uFF67\uFF72\uFF99\u3092\u958B\u304F\u3002"
        u"\uFF76\uFF85\u6587\u5B57\u306E\u4F8B\u3067\u3059\u3002\uFF83\uFF9E\uFF70\uFF80\u3092\u5165\u529B\u3057\u3066"
        u"\u304F\u3060\u3055\u3044\u3002";
    const DetectedCharset kana = Detect(Repeat(EncodeText(text, "EUC-JP"), 3));
    EXPECT_EQ(kana.code, CharSet::EUC_JP);
    EXPECT_GE(kana.confidence, CONFIDENT);
    const std::string rare = "\x8F\xB0\xA1\x8F\xD0\xB3\x8F\xC4\xE5";
    const DetectedCharset supplement = Detect(EncodeText(text, "EUC-JP") + Repeat(rare, 4));
    EXPECT_EQ(supplement.code, CharSet::EUC_JP);
    EXPECT_GE(supplement.confidence, CONFIDENT);
}

TEST(CharsetDetectorTest, TinyBuffersAreOrdinary) {
    for (int first = 0; first < 256; ++first) {
        const std::string one(1, static_cast<char>(first));
        EXPECT_LE(Detect(one).confidence, 100U);
        EXPECT_LE(Detect(one + one).confidence, 100U);
        EXPECT_LE(Detect(one + "\xE9").confidence, 100U);
    }
}

/// A second pass over the rest for each construct would take hours here.
TEST(CharsetDetectorTest, TakesLinearTime) {
    constexpr std::size_t MANY = 1000000;
    EXPECT_EQ(Detect(Repeat("<", MANY) + "<!--\xE9 ").code, Detect(Repeat("<", 8000) + "<!--\xE9 ").code);
    EXPECT_EQ(Detect(Repeat("<!--", MANY) + "\xE9 ").code, CharSet::UNKNOWN);
    EXPECT_EQ(Detect(Repeat("<script>", MANY) + "\xE9 ").code, CharSet::UNKNOWN);
    EXPECT_EQ(Detect(Repeat("<a b=\"'", MANY) + "\xE9 ").code, CharSet::UNKNOWN);
    EXPECT_EQ(Detect(Repeat("\xC3\xA9", MANY) + "\xE2\x82").code, CharSet::UTF8);
    EXPECT_EQ(Detect(Repeat("<\0"sv, MANY)).code, CharSet::UTF16_LE);
    const std::string russian = EncodeText(Texts::RUSSIAN, "windows-1251");
    EXPECT_EQ(Detect(Repeat(russian, 8 * MANY / russian.size())).code, 1251U);
}

/// A pair comes more often than 16 bits count.
TEST(CharsetDetectorTest, LongTextKeepsItsAnswer) {
    constexpr std::size_t SIZE = 800000;
    const struct {
        const char* note;
        std::string piece;
        CharSet::Code code;
    } rows[] = {
        {"one character of Shift_JIS", "\x82\xA0", 932},
        {"two characters of Shift_JIS", "\x82\xC8\x82\xB5", 932},
        {"one character of EUC-KR", "\xB0\xA1", 949},
        {"Japanese", EncodeText(Texts::JAPANESE, "Shift_JIS"), 932},
        {"Chinese", EncodeText(Texts::CHINESE, "GB18030"), 54936},
        {"Korean", EncodeText(Texts::KOREAN, "EUC-KR"), 949},
        {"Taiwanese", EncodeText(Texts::TAIWANESE, "Big5"), 950},
        {"a character of two bytes, with damage", "\xC3\xA9", CharSet::UTF8},
    };
    for (const auto& row : rows) {
        const DetectedCharset detected = Detect(Repeat(row.piece, SIZE / row.piece.size()) + " \xFF ");
        EXPECT_EQ(detected.code, row.code) << row.note;
        EXPECT_GE(detected.confidence, CONFIDENT) << row.note;
    }
}

TEST(CharsetDetectorTest, AnyBytesGiveAnAnswerWithinBounds) {
    std::mt19937 random(20);
    for (int round = 0; round < 3000; ++round) {
        std::string bytes(random() % 600, '\0');
        const auto mask = round % 3 == 0 ? 0xFFU : round % 3 == 1 ? 0x7FU : 0x9FU;
        for (char& byte : bytes)
            byte = static_cast<char>(random() & mask);
        const DetectedCharset detected = Detect(bytes);
        EXPECT_LE(detected.confidence, 100U);
        if (detected.code != CharSet::UNKNOWN) {
            EXPECT_FALSE(CharSet::GetCharSetName(detected.code).empty()) << detected.code;
        }
    }
}

TEST(CharsetDetectorTest, ThreadsDoNotDisturbEachOther) {
    std::vector<CharSet::Code> expected;
    for (const CharsetSample& sample : Samples())
        expected.push_back(Detect(sample.bytes).code);
    std::atomic<int> differences = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&expected, &differences] {
            for (std::size_t sample = 0; sample < expected.size(); ++sample)
                differences += Detect(Samples()[sample].bytes).code == expected[sample] ? 0 : 1;
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(differences, 0);
}

}  // namespace
}  // namespace Kestra::Base
