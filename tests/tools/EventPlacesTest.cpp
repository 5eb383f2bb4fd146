#include "tools/kestra-html/output/EventPlaces.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "tests/tools/ObserverTest.h"
#include "tools/kestra-html/output/JsonEventObserver.h"
#include "tools/kestra-html/output/TextEventObserver.h"

namespace Kestra::Test {
namespace {

using HTML::StatelessHTMLParser;
using Lines = std::vector<std::string>;

/// The kinds of constructs; tags that close themselves, of which two events come; text after the
/// last tag.
constexpr std::string_view PAGE =
    "ab\r\nc<p id=x >\n<br/><!--c--><?xml v='1'?><!m n><script "
    "a>x='</p>'//</script>\n</script><style>p{}</style></p>\n\nd";

/// Runs a document through an observer of the tool.
template <typename Observer, typename... Arguments>
Lines Observe(std::string_view page, std::size_t pieceSize, Arguments... arguments) {
    KeptLines lines;
    StatelessHTMLParser parser;
    Observer observer(&lines, &parser, arguments...);
    parser.Attach(&observer);
    EXPECT_EQ(parser.StartParse(StringNS::CharSet::WINDOWS_1252), 0U);
    for (std::size_t begin = 0; begin < page.size(); begin += pieceSize) {
        const std::string piece(page.substr(begin, pieceSize));
        const std::uint32_t result = parser.ParseBuffer(piece.data(), piece.size());
        EXPECT_TRUE(result == 0 || result == 16) << result;
    }
    EXPECT_EQ(parser.EndParse(), 0U);
    return lines.Take();
}

TEST(EventPlaces, AConstructLiesBetweenItsEventAndTheOneBefore) {
    const Lines expected = {
        R"({"event":"StartParsing","begin":0,"end":0,"line":1,"column":1})",
        R"({"event":"Text","text":"ab\r\nc","begin":0,"end":5,"line":1,"column":1})",
        R"({"event":"StartTag","name":"p","attributes":[["id","x"]],"begin":5,"end":14,"line":2,"column":5,)"
        R"("attributePlaces":[{"begin":7,"end":12,"nameBegin":8,"nameEnd":10,"valueBegin":11,"valueEnd":12}]})",
        R"({"event":"Text","text":"\n","begin":14,"end":15,"line":2,"column":14})",
        R"({"event":"StartTag","name":"br","attributes":[],"begin":15,"end":20,"line":3,"column":2})",
        R"({"event":"EndTag","name":"br","begin":20,"end":20,"line":3,"column":7})",
        R"({"event":"Comment","text":"c","begin":20,"end":28,"line":3,"column":7})",
        R"({"event":"ExternTag","name":"xml","attributes":[["v","1"]],"begin":28,"end":41,"line":3,"column":15,)"
        R"("attributePlaces":[{"begin":33,"end":39,"nameBegin":34,"nameEnd":35,"valueBegin":37,"valueEnd":38}]})",
        R"({"event":"EntityTag","name":"m","tokens":["n"],"begin":41,"end":47,"line":3,"column":28})",
        R"({"event":"Script","attributes":[["a",""]],"body":"x='</p>'","begin":47,"end":86,"line":3,"column":34,)"
        R"("attributePlaces":[{"begin":54,"end":56,"nameBegin":55,"nameEnd":56,"valueBegin":null,"valueEnd":null}]})",
        R"({"event":"Style","attributes":[],"body":"p{}","begin":86,"end":104,"line":3,"column":84})",
        R"({"event":"EndTag","name":"p","begin":104,"end":108,"line":3,"column":112})",
        R"({"event":"StopParsing","begin":111,"end":111,"line":4,"column":5})",
    };
    EXPECT_EQ(Observe<Tool::JsonEventObserver>(PAGE, PAGE.size()), expected);

    const Lines text = Observe<Tool::TextEventObserver>(PAGE, PAGE.size(), false, true);
    ASSERT_EQ(text.size(), expected.size());
    EXPECT_EQ(text[5], "     3:7     [20,20)           end(br)");
    EXPECT_EQ(text[9], "     3:34    [47,86)           script({a=}|x='</p>')");
    EXPECT_EQ(text[12], "     4:5     [111,111)         stop-parsing");
    Lines withoutOffsets = text;
    for (std::string& line : withoutOffsets)
        line.erase(13, 18);
    EXPECT_EQ(Observe<Tool::TextEventObserver>(PAGE, PAGE.size(), false, false), withoutOffsets);
}

TEST(EventPlaces, CutsChangeNone) {
    const std::string page =
        "ab\r\nc<p id=x >\n<!m n><script a>x='</p>'//</script>\n</script><style>p{}</style></p>\n\nd";
    const Lines expected = Observe<Tool::JsonEventObserver>(page, page.size());
    EXPECT_EQ(expected.size(), 9U);
    for (std::size_t pieceSize = 1; pieceSize < page.size(); ++pieceSize)
        EXPECT_EQ(Observe<Tool::JsonEventObserver>(page, pieceSize), expected) << pieceSize;
}

}  // namespace
}  // namespace Kestra::Test
