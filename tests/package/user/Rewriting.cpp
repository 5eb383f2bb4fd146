#include <kestra/html/rewrite/Rewriter.h>

#include <string>

#include "Check.h"

using namespace Kestra::HTML;
using Kestra::WideChar;
using Kestra::WideString;

namespace {

class Output final : public ParserObserverOutputHandler {
public:
    void Write(const void* data, std::uint64_t byteCount, bool) override {
        bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
    }

    std::string bytes;
};

}  // namespace

void UseRewriter() {
    Output output;
    Rewriter rewriter(&output);
    RewriterToken kept;
    RewriterElement keptElement;
    std::string message;
    CHECK(rewriter.OnElement("p > b[c]", [&](RewriterElement element) {
        keptElement = element;
        CHECK(element.GetName() == "b" && element.HasContent());
        CHECK(element.GetStartTag().SetAttribute("c", "d e") == REWRITE_OK);
        CHECK(element.Append("<f>", CONTENT_TEXT) == REWRITE_OK);
        CHECK(element.InsertAfter(WideString(1, WideChar('g')), CONTENT_MARKUP) == REWRITE_OK);
    }) == REWRITE_OK);
    CHECK(rewriter.OnContent("", [&](RewriterToken token) {
        kept = token;
        if (token.GetKind() == TOKEN_COMMENT_TAG)
            CHECK(token.Remove() == REWRITE_OK);
    }) == REWRITE_OK);
    CHECK(rewriter.OnElement(
              "p,b", [](RewriterElement) {}, &message) == REWRITE_BAD_SELECTOR &&
          !message.empty());
    CHECK(rewriter.StartParse(65001, GenericParser::DATA_STREAM_8BIT) == 0);
    const std::string page = "<p><b c=x>y</b><!--z--></p>";
    CHECK(rewriter.ParseBuffer(page.data(), page.size()) == 0);
    CHECK(rewriter.EndParse() == 0);
    CHECK(output.bytes == "<p><b c=\"d e\">y&lt;f&gt;</b>g</p>");
    CHECK(kept.IsOver() && kept.Remove() == REWRITE_OVER);
    CHECK(keptElement.IsOver() && keptElement.Unwrap() == REWRITE_OVER);
}
