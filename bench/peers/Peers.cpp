#include "bench/peers/Peers.h"

namespace Kestra::Bench {

void RegisterPeers(const NamedCorpus& corpus, const std::string& list) {
    Register(corpus, "htmlcxx/sax", ReadWithHtmlcxx);
    Register(corpus, "htmlcxx/sax-attributes", ReadWithHtmlcxxAttributes);
    Register(corpus, "libxml2/push", ReadWithLibxml2);
    Register(corpus, "gumbo/tree", ReadWithGumbo);
    Register(corpus, "hubbub/tokenizer", ReadWithHubbub);
    if (!list.empty())
        RegisterHtmlParser2(corpus, list);
}

}  // namespace Kestra::Bench
