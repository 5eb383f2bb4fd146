/// @file
/// Writes documents for a fuzzer to begin with: those that the differential tests use, in pieces.
///
///     seed-maker FUZZER FOLDER COUNT

#include <cstddef>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzedDocument.h"
#include "fuzz/FuzzedEvents.h"
#include "tests/reference/DocumentFeeding.h"
#include "tests/support/DocumentMaker.h"

namespace {

using Kestra::Test::Dice;
using Kestra::Test::DocumentMaker;
using Kestra::Test::MadeDocument;

constexpr std::size_t LONGEST_SEED = 900;  // bytes; the fuzzer is quicker with short ones

/// Every third is rich in elements whose content is text.
std::string MakeDocumentSeed(DocumentMaker* maker, std::uint64_t seed, Dice* dice) {
    const MadeDocument made = seed % 3 == 2 ? maker->MakeWithContents(seed) : maker->Make(seed);
    Kestra::Fuzz::FuzzedDocument document;
    document.charset = made.charset;
    document.bytes = std::string_view(made.bytes).substr(0, LONGEST_SEED);
    document.cuts = Kestra::Test::CutsOfShortReads(document.bytes.size(), dice);
    return Kestra::Fuzz::WriteFuzzedDocument(document);
}

std::string MakeEventSeed(DocumentMaker* maker, std::uint64_t seed, Dice* dice) {
    const MadeDocument made = maker->Make(seed);
    constexpr std::size_t COPYINGS = 4;
    Kestra::Fuzz::FuzzedEvents events;
    events.charset = made.charset;
    events.markupChooses = !dice->OneIn(4);
    events.byStream = dice->OneIn(2);
    events.copying = static_cast<Kestra::Fuzz::Copying>(dice->Below(COPYINGS));
    events.hasSecondObserver = dice->OneIn(2);
    events.hasReadBefore = dice->OneIn(4);
    events.bytes = std::string_view(made.bytes).substr(0, LONGEST_SEED);
    events.cuts = Kestra::Test::CutsOfShortReads(events.bytes.size(), dice);
    const std::size_t places = events.cuts.size() + 2;
    events.scriptsAsText = dice->OneIn(2);
    events.copiedAt = dice->Below(places);
    events.attachedAt = dice->Below(places);
    events.detachedAt = dice->Below(places);
    return Kestra::Fuzz::WriteFuzzedEvents(events);
}

using MakeSeed = std::string (*)(DocumentMaker* maker, std::uint64_t seed, Dice* dice);

const std::map<std::string, MakeSeed> FUZZERS = {{"document-fuzzer", &MakeDocumentSeed},
                                                 {"event-fuzzer", &MakeEventSeed}};

void WriteSeeds(MakeSeed makeSeed, const std::string& folder, std::uint64_t count) {
    const std::vector<std::string> pages = Kestra::Test::ReadPages(KESTRA_EXAMPLE_PAGES);
    DocumentMaker maker(&pages);
    for (std::uint64_t seed = 0; seed < count; ++seed) {
        Dice dice(seed);
        std::ofstream file(folder + "/made-" + std::to_string(seed), std::ios::binary);
        file << makeSeed(&maker, seed, &dice);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4 || !FUZZERS.contains(argv[1])) {
        std::cerr << "usage: seed-maker FUZZER FOLDER COUNT, the fuzzer being one of";
        for (const auto& [name, makeSeed] : FUZZERS)
            std::cerr << ' ' << name;
        std::cerr << '\n';
        return 2;
    }
    try {
        WriteSeeds(FUZZERS.at(argv[1]), argv[2], std::stoull(argv[3]));
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "seed-maker: " << failure.what() << '\n';
        return 1;
    }
}
