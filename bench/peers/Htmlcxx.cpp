#include <htmlcxx/html/ParserSax.h>

#include "bench/peers/Peers.h"

namespace Kestra::Bench {

namespace {

class CountingParser final : public htmlcxx::HTML::ParserSax {
public:
    explicit CountingParser(bool splitsAttributes) : withAttributes(splitsAttributes) {}

    std::uint64_t counted = 0;

protected:
    void foundTag(htmlcxx::HTML::Node node, bool isEnd) override {
        counted += 1 + node.tagName().size();
        if (withAttributes && !isEnd) {
            node.parseAttributes();
            counted += node.attributes().size();
        }
    }
    void foundText(htmlcxx::HTML::Node node) override {
        counted += 1 + node.text().size();
    }
    void foundComment(htmlcxx::HTML::Node node) override {
        counted += 1 + node.text().size();
    }

private:
    bool withAttributes;
};

std::uint64_t Read(const std::string& document, bool withAttributes) {
    CountingParser parser(withAttributes);
    parser.parse(document);
    return parser.counted;
}

}  // namespace

std::uint64_t ReadWithHtmlcxx(const std::string& document) {
    return Read(document, false);
}

std::uint64_t ReadWithHtmlcxxAttributes(const std::string& document) {
    return Read(document, true);
}

}  // namespace Kestra::Bench
