#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <functional>
#include <string>

#include "bench/Corpora.h"

/// @file
/// What the benchmarks are made of. Their names are paths, "web/document/8bit/stream/16K": the
/// corpus, who reads it, and how; `bench/table` takes them apart.

namespace Kestra::Bench {

/// Reads all documents of a corpus once.
/// @return something that its callbacks counted; 0 makes the benchmark fail
using Round = std::function<std::uint64_t(const Corpus& corpus)>;

/// Examines one document.
/// @return as for `Round`
using Count = std::uint64_t (*)(const std::string& document);

/// Registers a benchmark, "corpus/name".
///
/// @param prepare  makes the round of one benchmark, outside of the clock
void Register(const NamedCorpus& corpus, const std::string& name, std::function<Round()> prepare);
void Register(const NamedCorpus& corpus, const std::string& name, Count count);

/// Reports what a benchmark has read in one round: bytes, and characters as "items".
void SetRoundSize(benchmark::State& state, const Corpus& corpus);

// Each of these registers its benchmarks for one corpus.
/// @param withBuffers  documents are fed as buffers too, those without junk
void RegisterDocumentParser(const NamedCorpus& corpus, bool withBuffers);
/// The document parser by the C interface.
void RegisterCInterface(const NamedCorpus& corpus);
/// Scripts as tokens, and as text.
void RegisterScriptModes(const NamedCorpus& corpus);
/// @param corpus  has only documents that this parser takes to their end
void RegisterStatelessParser(const NamedCorpus& corpus);
/// The rewriter, without edits and with one attribute set in every start tag.
void RegisterRewriter(const NamedCorpus& corpus);
void RegisterLimits(const NamedCorpus& corpus);

/// The hostile inputs, which need no corpus.
void RegisterHostileInputs();

}  // namespace Kestra::Bench
