#include "tools/kestra-html/output/JsonEventObserver.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tools/EventObserverTest.h"
#include "tests/tools/ObserverTest.h"

namespace Kestra::Test {
namespace {

using Lines = std::vector<std::string>;

TEST(JsonEventObserver, EveryCallbackIsAnObjectWithItsArguments) {
    KeptLines lines;
    Tool::JsonEventObserver observer(&lines);
    CallEverything(&observer);
    EXPECT_EQ(lines.Take(),
              (Lines{
                  R"({"event":"StartParsing"})",
                  R"({"event":"StartTag","name":"a","attributes":[["href","x\u0000\n"],["checked",""]]})",
                  R"({"event":"EndTag","name":"a"})",
                  R"({"event":"Script","attributes":[],"body":"x=1"})",
                  R"({"event":"ExternTag","name":"xml","attributes":[["href","x\u0000\n"],["checked",""]]})",
                  R"({"event":"EntityTag","name":"DOCTYPE","tokens":["html",""]})",
                  R"({"event":"Comment","text":" c\u00e9"})",
                  R"({"event":"Text","text":"t"})",
                  R"({"event":"Style","attributes":[["href","x\u0000\n"],["checked",""]],"body":""})",
                  R"({"event":"StopParsing"})",
              }));
}

TEST(JsonEventObserver, TheResult) {
    KeptLines lines;
    Tool::JsonEventObserver observer(&lines);
    Tool::EventsPassResult result;
    result.startParse = 1;
    result.parse = 703;
    result.endParse = 2;
    result.line = 3;
    result.column = 5;
    observer.WriteResult(result, "a\xC3\xA9.html");
    EXPECT_EQ(
        lines.Take(),
        (Lines{
            R"({"event":"Result","startParse":1,"parse":703,"endParse":2,"line":3,"column":5,"file":"a\u00e9.html"})"}));
}

}  // namespace
}  // namespace Kestra::Test
