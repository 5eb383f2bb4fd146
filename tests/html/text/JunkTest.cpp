#include "html/text/JunkSimpleParser.h"

#include <cstring>

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

struct JunkRow {
    const char* note;
    std::string_view input;
    const char* result;
    std::string_view text;
    const char* rest;
};

constexpr JunkRow ROWS[] = {
    {"junk ends before \"<\"", "abc<def", "19", "abc", " rest(<def)"},
    {"junk may be empty", "<a", "19", "", " rest(<a)"},
    {"junk up to the end of the input is complete", "abc", "end 19", "abc", ""},
    {"no input at all is complete empty junk", "", "end 19", "", ""},
    {"nothing but \"<\" ends it", ">'\"/*//-->]]>\033$B\0=!"sv, "end 19", ">'\"/*//-->]]>\033$B\0=!"sv, ""},
    {"characters from 128 up", "\x80\xFF\xBC<", "19", "\x80\xFF\xBC", " rest(<)"},
    {"lines are counted", "a\n\r\n b\n<\n", "19", "a\n\r\n b\n", " rest(<\\n)"},
};

/// The bytes of the characters in memory, as an escaped field.
template <typename S>
std::string MemoryOf(const S& text) {
    std::string bytes(text.size() * sizeof(typename S::value_type), '\0');
    std::memcpy(bytes.data(), text.data(), bytes.size());
    return "text(" + Trace::Escape(bytes) + ")";
}

template <typename Flavour>
void CheckRows() {
    using S = typename Flavour::S;
    for (const JunkRow& row : ROWS) {
        SCOPED_TRACE(row.note);
        const std::string rest = Flavour::WIDE ? ToWideEscapes(row.rest) : row.rest;
        CheckRecognizer<HTML::JunkSimpleParser<typename Flavour::C, S>>(
            To<S>(row.input), std::string(row.result) + " " + MemoryOf(To<S>(row.text)) + rest);
    }
}

constexpr RecognizerRow WIDE_JUNK[] = {
    {"two bytes for each character", "ab<", "19 text(a\\x00b\\x00) rest(<)"},
    {"wide units are compared whole", "\\u3C3C\\u013C\\u3C00\\uD83D\\n<",
     "19 text(<<<\\x01\\x00<=\\xD8\\n\\x00) rest(<)"},
};

const auto SUITE = RecognizerSuite<HTML::JunkSimpleParser>("JunkTest")
                       .Test("JunkIsKeptByteForByte", []<typename Flavour>() { CheckRows<Flavour>(); })
                       .WideRows("WideUnits", WIDE_JUNK);

}  // namespace
}  // namespace Kestra::Test
