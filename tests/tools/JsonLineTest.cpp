#include "tools/kestra-html/output/JsonLine.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/Characters.h"
#include "platform/Vector.h"
#include "tests/tools/ObserverTest.h"

namespace Kestra::Test {
namespace {

using Lines = std::vector<std::string>;

TEST(JsonLine, MembersStandInTheOrderOfTheCalls) {
    KeptLines lines;
    Tool::JsonLine line(&lines);
    line.Begin();
    line.Number("b", 18446744073709551615U);
    line.Null("a");
    line.Bool("c", true);
    line.End();
    line.Begin("E");
    line.End();
    line.Begin();
    line.End();
    EXPECT_EQ(lines.Take(), (Lines{R"({"b":18446744073709551615,"a":null,"c":true})", R"({"event":"E"})", "{}"}));
}

TEST(JsonLine, StringsThatEndAtTheirFirstNul) {
    KeptLines lines;
    Tool::JsonLine line(&lines);
    line.Begin();
    line.String("a", KESTRA_WIDE("x\u00E9\0y"));
    line.String("b", KESTRA_WIDE(""));
    line.String("c", static_cast<const WideChar*>(nullptr));
    line.End();
    EXPECT_EQ(lines.Take(), (Lines{R"({"a":"x\u00e9","b":"","c":null})"}));
}

TEST(JsonLine, ListsOfStringsAndOfPairs) {
    KeptLines lines;
    Tool::JsonLine line(&lines);
    Vector<WideString> strings;
    Vector<std::pair<WideString, WideString>> pairs;
    line.Begin();
    line.List("empty", &strings);
    line.List("none", static_cast<const Vector<WideString>*>(nullptr));
    strings.push_back(WideString(KESTRA_WIDE("a\0b"), 3));
    strings.push_back(WideString());
    pairs.push_back({KESTRA_WIDE("n"), KESTRA_WIDE("\"v")});
    pairs.push_back({KESTRA_WIDE("m"), WideString()});
    line.List("strings", &strings);
    line.List("pairs", &pairs);
    line.End();
    EXPECT_EQ(lines.Take(),
              (Lines{R"({"empty":[],"none":null,"strings":["a\u0000b",""],"pairs":[["n","\"v"],["m",""]]})"}));
}

TEST(JsonLine, ResultsOfCalls) {
    KeptLines lines;
    Tool::JsonLine line(&lines);
    line.Begin();
    line.Calls({1, 2, 3, 4, 5});
    line.End();
    EXPECT_EQ(lines.Take(), (Lines{R"({"startParse":1,"parse":2,"endParse":3,"line":4,"column":5})"}));
}

TEST(JsonLine, NamesOfFilesAreUtf8) {
    KeptLines lines;
    Tool::JsonLine line(&lines);
    for (const char* const name : {"caf\xC3\xA9.html", "a\xFF", "\"\n"}) {
        line.Begin();
        line.File(name);
        line.End();
    }
    EXPECT_EQ(lines.Take(), (Lines{R"({"file":"caf\u00e9.html"})", R"({"file":"a\ufffd"})", R"({"file":"\"\n"})"}));
}

}  // namespace
}  // namespace Kestra::Test
