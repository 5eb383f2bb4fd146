#pragma once

#include <cstdint>
#include <string>

#include "bench/Benchmarks.h"

/// @file
/// The other tokenizers and parsers. Each is used as its documentation says, and counts something
/// that it is given.

namespace Kestra::Bench {

/// Registers every peer for one corpus; none when the peers are not built.
///
/// @param list  of the files of the corpus, for a peer in a separate process
void RegisterPeers(const NamedCorpus& corpus, const std::string& list);

/// Registers htmlcxx alone, which the stateless parser is measured by.
void RegisterHtmlcxx(const NamedCorpus& corpus);

constexpr std::size_t PEER_PIECE = 65536;  ///< bytes, for peers that take pieces

/// The SAX parser of htmlcxx: tags, texts and comments, each with its text.
std::uint64_t ReadWithHtmlcxx(const std::string& document);

/// The same, and the attributes of every start tag, which htmlcxx splits on demand.
std::uint64_t ReadWithHtmlcxxAttributes(const std::string& document);

/// The push parser of libxml2 with a SAX handler.
std::uint64_t ReadWithLibxml2(const std::string& document);

/// gumbo, which makes a tree: it is made, its nodes counted, and freed.
std::uint64_t ReadWithGumbo(const std::string& document);

/// The tokenizer of hubbub. The handler switches the content model as its tree builder would.
std::uint64_t ReadWithHubbub(const std::string& document);

/// The tokenizer of htmlparser2, by Node.js in a separate process.
void RegisterHtmlParser2(const NamedCorpus& corpus, const std::string& list);

/// The rewriting stream of parse5, which sets an attribute of every start tag, the same way.
void RegisterParse5RewritingStream(const NamedCorpus& corpus, const std::string& list);

}  // namespace Kestra::Bench
