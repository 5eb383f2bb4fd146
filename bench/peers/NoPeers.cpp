#include "bench/peers/Peers.h"

namespace Kestra::Bench {

void RegisterPeers(const NamedCorpus&, const std::string&) {}

void RegisterHtmlcxx(const NamedCorpus&) {}

}  // namespace Kestra::Bench
