#include "bench/peers/Peers.h"

namespace Kestra::Bench {

void RegisterPeers(const NamedCorpus& corpus, const std::string& list) {
    RegisterHtmlcxx(corpus);
    Register(corpus, "htmlcxx/sax-attributes", ReadWithHtmlcxxAttributes);
    Register(corpus, "libxml2/push", ReadWithLibxml2);
    Register(corpus, "gumbo/tree", ReadWithGumbo);
    Register(corpus, "hubbub/tokenizer", ReadWithHubbub);
    RegisterHtmlParser2(corpus, list);
    RegisterParse5RewritingStream(corpus, list);
}

void RegisterHtmlcxx(const NamedCorpus& corpus) {
    Register(corpus, "htmlcxx/sax", ReadWithHtmlcxx);
}

}  // namespace Kestra::Bench
