#include "platform/posix/LanguageModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <set>
#include <string>
#include <string_view>

#include "tests/platform/posix/CharsetSamples.h"

namespace Kestra::Base {
namespace {

using StringNS::CharSet;
using Test::DecodeText;

std::size_t CountSymbols(const LanguageModel& model) {
    return (model.latin ? 27 : 2) + model.lower.size();
}

TEST(LanguageModelsTest, EveryModelIsWhole) {
    std::set<std::string_view> languages;
    for (const LanguageModel& model : LanguageModels()) {
        EXPECT_TRUE(languages.insert(model.language).second) << model.language;
        EXPECT_FALSE(model.lower.empty()) << model.language;
        EXPECT_EQ(model.upper.size(), model.lower.size()) << model.language;
        EXPECT_EQ(model.costs.size(), CountSymbols(model) * CountSymbols(model)) << model.language;
    }
    EXPECT_TRUE(languages.contains("en"));
    EXPECT_GE(languages.size(), 42U);
}

TEST(LanguageModelsTest, EveryPageOfALanguageHasItsLetters) {
    std::set<CharSet::Code> pages;
    for (const LetterPage& page : LetterPages())
        EXPECT_TRUE(pages.insert(page.code).second) << page.code;
    for (const LanguageModel& model : LanguageModels()) {
        EXPECT_NE(model.pages[0].code, 0U) << model.language;
        for (const PageOfLanguage& page : model.pages)
            EXPECT_TRUE(page.code == 0 || pages.contains(page.code)) << model.language << ", " << page.code;
    }
}

/// What a digit of a cost is worth grows with it, and the costs of a row are those of a code: the
/// probabilities of all symbols together are about one.
TEST(LanguageModelsTest, CostsAreThoseOfACode) {
    constexpr std::string_view DIGITS = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz+-";
    for (std::size_t i = 0; i < DIGITS.size(); ++i)
        EXPECT_EQ(ReadCostDigit(DIGITS[i]), i) << DIGITS[i];
    for (const LanguageModel& model : LanguageModels()) {
        EXPECT_EQ(model.costs.find_first_not_of(DIGITS), std::string_view::npos) << model.language;
        const std::size_t size = CountSymbols(model);
        for (std::size_t row = 0; row < size; ++row) {
            double sum = 0;
            for (const char digit : model.costs.substr(row * size, size))
                sum += std::exp2(-static_cast<double>(ReadCostDigit(digit)) / 4);
            EXPECT_NEAR(sum, 1, 0.2) << model.language << ", row " << row;
        }
    }
    for (const LeadByteModel& model : LeadByteModels())
        EXPECT_EQ(model.costs.size(), 128U) << model.code;
}

/// The pages as ICU has them. Bytes that are controls there may be no characters here, ICU lacks
/// the sign for "not" of 852, and the sign for "micro" of 437 is a Greek letter there.
TEST(LanguageModelsTest, LettersAreThoseOfTheCodePage) {
    for (const LetterPage& page : LetterPages()) {
        if (page.code >= FIRST_WITHOUT_CODE_PAGE)
            continue;
        std::string name;
        for (const WideChar character : CharSet::GetCharSetName(page.code))
            name.push_back(static_cast<char>(character));
        std::size_t letters = 0;
        for (std::size_t i = 0; i < std::size(page.units); ++i) {
            if (page.units[i] < 0xA0 || page.units[i] == 0xFFFD || (page.code == 852 && page.units[i] == 0xAC) ||
                (page.code == 437 && page.units[i] == 0xB5))
                continue;
            // A second letter, as a converter may combine the first one with what follows.
            const std::u16string decoded = DecodeText(std::string(1, static_cast<char>(i + 128)) + "a", name.c_str());
            EXPECT_EQ(decoded.substr(0, 1), std::u16string(1, page.units[i])) << page.code << ", byte " << i + 128;
            ++letters;
        }
        EXPECT_GE(letters, 50U) << page.code;  // 51 of ISO-8859-6
    }
}

/// ICU has none of these. Sources: RFC 1456, TCVN 5712:1993, STRK1048-2002 and Paratype's PTCP154.
TEST(LanguageModelsTest, LettersOfCharsetsWithoutACodePage) {
    const struct {
        CharSet::Code code;
        unsigned byte;
        char16_t letter;
    } rows[] = {
        {70001, 0xAA, 0x1EBF}, {70001, 0xAE, 0x1EC7}, {70001, 0xF0, 0x0111}, {70002, 0xD5, 0x1EBF},
        {70002, 0xD6, 0x1EC7}, {70002, 0xAE, 0x0111}, {70003, 0x8D, 0x049A}, {70003, 0xBA, 0x0493},
        {70003, 0xA3, 0x04D8}, {70004, 0x83, 0x0493}, {70004, 0xAA, 0x04D8}, {70004, 0xA6, 0x04B0},
    };
    for (const auto& row : rows) {
        const auto pages = LetterPages();
        const auto page = std::ranges::find(pages, row.code, &LetterPage::code);
        ASSERT_NE(page, pages.end()) << row.code;
        EXPECT_EQ(page->units[row.byte - 128], row.letter) << row.code << ", byte " << row.byte;
    }
}

}  // namespace
}  // namespace Kestra::Base
