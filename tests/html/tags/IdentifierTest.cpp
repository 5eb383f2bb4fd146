#include "html/tags/IdentifierSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

/// Names of tags and of attributes.
constexpr RecognizerRow NAMES[] = {
    {"a name ends before white space", "ab c", "19 text(ab) rest( c)"},
    {"a name ends before \">\"", "ab>", "19 text(ab) rest(>)"},
    {"a name ends before \"=\"", "ab=c", "19 text(ab) rest(=c)"},
    {"a \"/\" belongs to a name", "/a/b/>", "19 text(/a/b/) rest(>)"},
    {"quotes belong to a name", "'a\"b>", "19 text('a\"b) rest(>)"},
    {"other marks belong to a name", "!a-b:c.d_e?#&;>", "19 text(!a-b:c.d_e?#&;) rest(>)"},
    {"case is kept", "aBc>", "19 text(aBc) rest(>)"},
    {"a name may be empty before \">\"", ">", "19 text() rest(>)"},
    {"a name may be empty before white space", "\na", "19 text() rest(\\na)"},
    {"a name may be empty before \"=\"", "=", "19 text() rest(=)"},
    {"a NUL belongs to a name", "a\0b>"sv, "19 text(a\\x00b) rest(>)"},
    {"ESC belongs to a name", "\033$B>", "19 text(\\x1B$B) rest(>)"},
    {"characters from 128 up belong to a name", "\x80\xBC\xFF>", "19 text(\\x80\\xBC\\xFF) rest(>)"},
    {"a name up to the end of the input is complete", "abc", "end 19 text(abc)"},
    {"no input at all is a complete empty name", "", "end 19 text()"},
};

constexpr RecognizerRow TAG_NAMES[] = {
    {"only a tag name ends before \"<\"", "a<b c", "19 text(a) rest(<b c)"},
    {"only a tag name ends before \"[\"", "a[b=", "19 text(a) rest([b=)"},
    {"only a tag name ends before \"]\"", "a]b>", "19 text(a) rest(]b>)"},
};

constexpr RecognizerRow ATTRIBUTE_NAMES[] = {
    {"only a tag name ends before \"<\"", "a<b c", "19 text(a<b) rest( c)"},
    {"only a tag name ends before \"[\"", "a[b=", "19 text(a[b) rest(=)"},
    {"only a tag name ends before \"]\"", "a]b>", "19 text(a]b) rest(>)"},
};

/// A name at the end of a piece is not yet complete, and what follows is appended.
constexpr RecognizerCall PIECES[] = {
    {NEW_RECORD, "", "ab", {0, 2}, "text(ab)"},  {CONTINUED, "", "", {0, 0}, "text(ab)"},
    {CONTINUED, "", "c>", {19, 1}, "text(abc)"}, {NEW_RECORD, "text=x", ">", {19, 0}, "text(x)"},
    {CONTINUED, "", "y>", {19, 1}, "text(xy)"},
};

/// All characters before which a name ends, in order.
template <typename Flavour>
void CheckStops() {
    using Parser = HTML::IdentifierSimpleParser<typename Flavour::C, typename Flavour::S>;
    EXPECT_EQ(FindCharacters<Parser>(false), WithWideSpaces<Flavour>("\t\n\v\f\r <=>[]"));
    EXPECT_EQ(FindCharacters<Parser>(false, "attributeNameMode"), WithWideSpaces<Flavour>("\t\n\v\f\r =>"));
}

const auto SUITE = RecognizerSuite<HTML::IdentifierSimpleParser>("IdentifierTest")
                       .Rows("NamesOfTagsLikeThoseOfAttributes", NAMES)
                       .Rows("NamesOfAttributesLikeThoseOfTags", NAMES, "attributeNameMode")
                       .Rows("TagNames", TAG_NAMES)
                       .Rows("AttributeNames", ATTRIBUTE_NAMES, "attributeNameMode")
                       .Calls("APieceMayEndInAName", PIECES)
                       .Test("Stops", []<typename Flavour>() { CheckStops<Flavour>(); });

}  // namespace
}  // namespace Kestra::Test
