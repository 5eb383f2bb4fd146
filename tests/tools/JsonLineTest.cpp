#include "tools/kestra-html/JsonLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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
