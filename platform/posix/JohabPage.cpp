#include "platform/posix/JohabPage.h"

#include <unicode/ucnv.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/posix/IcuResult.h"

// Johab, code page 1361. Source: KS X 1001:1992, annex 3, and Microsoft's table, all of whose pairs
// are here. The sixteen bits of a pair are
//
//     1iiiiimm mmmfffff    a Hangul syllable, lead bytes 84 to D3: initial, medial and final letter
//
// and a pair of another lead byte is a cell of KS X 1001, two rows of 94 for each lead byte: D9 to
// DE rows 1 to 12, E0 to F9 rows 42 to 93. The cells are read from ICU's table of code page 949,
// where row and cell are the two bytes. D8 holds 188 characters of private use. Row 4 is not read
// from there: its letters of Hangul in use have no cells here, as a letter alone is a syllable
// without the others, and its old ones are conjoining letters of Unicode, as those are.

namespace Kestra::StringNS {

namespace {

constexpr std::size_t CELLS = 94;              // of a row
constexpr std::size_t PAIR_CELLS = 2 * CELLS;  // of a lead byte
constexpr std::size_t SYMBOL_ROWS = 12;        // from row 1
constexpr std::size_t HANJA_ROWS = 52;         // from row 42
constexpr std::size_t LETTERS_ROW = 3;         // counted from 0
constexpr std::size_t LETTERS = 51;            // the first cells of that row
constexpr unsigned char FIRST_SYMBOL_LEAD = 0xD9;
constexpr unsigned char FIRST_HANJA_LEAD = 0xE0;
constexpr unsigned char PRIVATE_LEAD = 0xD8;
constexpr unsigned FIRST_PRIVATE = 0xE000;

// The letters' fields, in the order of Unicode. 1 stands for no initial and for no final letter, 2
// for no medial one.
constexpr unsigned FIRST_INITIAL = 2;
constexpr unsigned INITIALS = 19;
constexpr unsigned NO_INITIAL = 1;
constexpr unsigned NO_MEDIAL = 2;
constexpr unsigned NO_FINAL = 1;
constexpr std::array<unsigned char, 21> MEDIALS = {3,  4,  5,  6,  7,  10, 11, 12, 13, 14, 15,
                                                   18, 19, 20, 21, 22, 23, 26, 27, 28, 29};
constexpr std::array<unsigned char, 28> FINALS = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14,
                                                  15, 16, 17, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29};
constexpr unsigned FIRST_SYLLABLE = 0xAC00;
constexpr unsigned SYLLABLES = INITIALS * MEDIALS.size() * FINALS.size();
constexpr unsigned FIRST_CONJOINING_INITIAL = 0x1100;
constexpr unsigned FIRST_CONJOINING_MEDIAL = 0x1161;
constexpr unsigned BEFORE_CONJOINING_FINALS = 0x11A7;

/// The place of a field among the letters; their number when it is none.
template <std::size_t COUNT>
unsigned FindLetter(const std::array<unsigned char, COUNT>& letters, unsigned field) {
    return static_cast<unsigned>(std::lower_bound(letters.begin(), letters.end(), field) - letters.begin()) +
           (std::binary_search(letters.begin(), letters.end(), field) ? 0U : static_cast<unsigned>(COUNT));
}

constexpr std::int32_t JoinFields(unsigned initial, unsigned medial, unsigned finalLetter) {
    return static_cast<std::int32_t>(0x8000U | initial << 10 | medial << 5 | finalLetter);
}

/// The cells of row 4 from `LETTERS` on.
constexpr WideStringView OLD_LETTERS =
    u"\u115F\u1114\u1115\u11C7\u11C8\u11CC\u11CE\u11D3\u11D7\u11D9\u111C\u11DD\u11DF\u111D\u111E\u1120"
    u"\u1122\u1123\u1127\u1128\u112B\u112C\u112D\u112E\u112F\u1132\u1136\u1140\u1147\u114C\u1145\u1146"
    u"\u1157\u1158\u1159\u1184\u1185\u1188\u1191\u1192\u1194\u119E\u11A1";
static_assert(LETTERS + OLD_LETTERS.size() == CELLS);

class JohabPage final : public OwnCodePage {
public:
    /// @return null when ICU has no table of 949
    static std::unique_ptr<OwnCodePage> Open() {
        auto page = std::unique_ptr<JohabPage>(new JohabPage);
        return page->ReadCells() ? std::move(page) : nullptr;
    }

private:
    JohabPage() = default;

    /// Reads all rows by one call, in the order of Johab.
    bool ReadCells() {
        std::string pairs;
        for (std::size_t i = 0; i < (SYMBOL_ROWS + HANJA_ROWS) * CELLS; ++i) {
            const std::size_t row = i / CELLS < SYMBOL_ROWS ? i / CELLS + 1 : i / CELLS - SYMBOL_ROWS + 42;
            pairs += static_cast<char>(static_cast<unsigned char>(0xA0 + row));
            pairs += static_cast<char>(static_cast<unsigned char>(0xA1 + i % CELLS));
        }
        cells.resize(pairs.size() / 2);
        UErrorCode error = U_ZERO_ERROR;
        const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(ucnv_open("windows-949-2000", &error),
                                                                           ucnv_close);
        const std::int32_t count = ucnv_toUChars(converter.get(), cells.data(), static_cast<std::int32_t>(cells.size()),
                                                 pairs.data(), static_cast<std::int32_t>(pairs.size()), &error);
        if (!HasSucceeded(error) || static_cast<std::size_t>(count) != cells.size())
            return false;
        const auto letters = cells.begin() + LETTERS_ROW * CELLS;
        std::copy(OLD_LETTERS.begin(), OLD_LETTERS.end(), std::fill_n(letters, LETTERS, REPLACEMENT));
        for (std::size_t i = 0; i < cells.size(); ++i)
            places.emplace_back(cells[i], static_cast<std::uint16_t>(i));
        std::sort(places.begin(), places.end());
        return true;
    }

    WideChar GetSingle(unsigned char byte) const override {
        return byte < 0x80 ? WideChar{byte} : REPLACEMENT;
    }

    WideChar GetDouble(unsigned char lead, unsigned char trail) const override {
        if (lead < 0x84 || lead > 0xF9 || (lead > 0xD3 && lead < PRIVATE_LEAD) || lead == 0xDF)
            return 0;
        const WideChar unit =
            lead < PRIVATE_LEAD ? GetHangul(static_cast<unsigned>(lead << 8 | trail)) : GetCell(lead, trail);
        return unit == REPLACEMENT && (trail < 0x81 || trail == 0xFF) ? WideChar{0} : unit;
    }

    static WideChar GetHangul(unsigned pair) {
        const unsigned initialField = pair >> 10 & 31;
        const unsigned medialField = pair >> 5 & 31;
        const unsigned finalField = pair & 31;
        const bool hasInitial = initialField >= FIRST_INITIAL && initialField < FIRST_INITIAL + INITIALS;
        const unsigned initial = initialField - FIRST_INITIAL;
        const unsigned medial = FindLetter(MEDIALS, medialField);
        const unsigned finalLetter = FindLetter(FINALS, finalField);
        const bool hasMedial = medial < MEDIALS.size();
        if (finalLetter >= FINALS.size() || !(hasMedial || medialField == NO_MEDIAL) ||
            !(hasInitial || initialField == NO_INITIAL))
            return REPLACEMENT;
        if (hasInitial && hasMedial)
            return static_cast<WideChar>(FIRST_SYLLABLE + (initial * MEDIALS.size() + medial) * FINALS.size() +
                                         finalLetter);
        if (hasInitial && finalField == NO_FINAL)
            return static_cast<WideChar>(FIRST_CONJOINING_INITIAL + initial);
        if (hasMedial && finalField == NO_FINAL)
            return static_cast<WideChar>(FIRST_CONJOINING_MEDIAL + medial);
        if (!hasInitial && !hasMedial && finalField != NO_FINAL)
            return static_cast<WideChar>(BEFORE_CONJOINING_FINALS + finalLetter);
        return REPLACEMENT;
    }

    WideChar GetCell(unsigned char lead, unsigned char trail) const {
        if (trail < 0x31 || trail == 0x7F || trail == 0xFF || (trail > 0x7F && trail < 0x91))
            return REPLACEMENT;
        const std::size_t cell = static_cast<std::size_t>(trail) - (trail < 0x7F ? 0x31 : 0x43);
        if (lead == PRIVATE_LEAD)
            return static_cast<WideChar>(FIRST_PRIVATE + cell);
        const std::size_t row = lead < FIRST_HANJA_LEAD
                                    ? static_cast<std::size_t>(2 * (lead - FIRST_SYMBOL_LEAD))
                                    : SYMBOL_ROWS + static_cast<std::size_t>(2 * (lead - FIRST_HANJA_LEAD));
        return cells[row * CELLS + cell];
    }

    std::int32_t FindBytes(WideChar unit) const override {
        if (unit < 0x80)
            return unit;
        if (unit >= FIRST_SYLLABLE && unit < FIRST_SYLLABLE + SYLLABLES) {
            const unsigned place = unit - FIRST_SYLLABLE;
            const std::size_t letters = place / FINALS.size();
            return JoinFields(FIRST_INITIAL + static_cast<unsigned>(letters / MEDIALS.size()),
                              MEDIALS[letters % MEDIALS.size()], FINALS[place % FINALS.size()]);
        }
        if (unit >= FIRST_CONJOINING_INITIAL && unit < FIRST_CONJOINING_INITIAL + INITIALS)
            return JoinFields(FIRST_INITIAL + unit - FIRST_CONJOINING_INITIAL, NO_MEDIAL, NO_FINAL);
        if (unit >= FIRST_CONJOINING_MEDIAL && unit < FIRST_CONJOINING_MEDIAL + MEDIALS.size())
            return JoinFields(NO_INITIAL, MEDIALS[unit - FIRST_CONJOINING_MEDIAL], NO_FINAL);
        if (unit > BEFORE_CONJOINING_FINALS && unit < BEFORE_CONJOINING_FINALS + FINALS.size())
            return JoinFields(NO_INITIAL, NO_MEDIAL, FINALS[unit - BEFORE_CONJOINING_FINALS]);
        if (unit >= FIRST_PRIVATE && unit < FIRST_PRIVATE + PAIR_CELLS)
            return JoinCell(PRIVATE_LEAD, unit - FIRST_PRIVATE);
        const auto place = std::lower_bound(places.begin(), places.end(), std::pair<WideChar, std::uint16_t>(unit, 0));
        if (unit == REPLACEMENT || place == places.end() || place->first != unit)
            return -1;
        const std::size_t symbols = SYMBOL_ROWS * CELLS;
        return place->second < symbols ? JoinCell(FIRST_SYMBOL_LEAD, place->second)
                                       : JoinCell(FIRST_HANJA_LEAD, place->second - symbols);
    }

    /// @param cell  counted from the first one of `firstLead`
    static std::int32_t JoinCell(unsigned char firstLead, std::size_t cell) {
        const std::size_t trail = cell % PAIR_CELLS;
        return static_cast<std::int32_t>((firstLead + cell / PAIR_CELLS) << 8 |
                                         (trail < 0x7F - 0x31 ? trail + 0x31 : trail + 0x43));
    }

    std::vector<WideChar> cells;                             ///< of the rows, in the order of Johab; 0xFFFD for none
    std::vector<std::pair<WideChar, std::uint16_t>> places;  ///< each character and its place in `cells`, sorted
};

}  // namespace

std::unique_ptr<OwnCodePage> OpenJohabPage() {
    return JohabPage::Open();
}

}  // namespace Kestra::StringNS
