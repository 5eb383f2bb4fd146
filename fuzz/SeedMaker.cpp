/// @file
/// Writes documents for the fuzzer to begin with: those that the differential tests use, in pieces.
///
///     seed-maker FOLDER COUNT

#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "fuzz/FuzzedDocument.h"
#include "tests/reference/DocumentFeeding.h"
#include "tests/reference/DocumentMaker.h"

namespace {

constexpr std::size_t LONGEST_SEED = 900;  // bytes; the fuzzer is quicker with short ones

void WriteSeeds(const std::string& folder, std::uint64_t count) {
    const std::vector<std::string> pages = Kestra::Test::ReadPages(KESTRA_EXAMPLE_PAGES);
    Kestra::Test::DocumentMaker maker(&pages);
    for (std::uint64_t seed = 0; seed < count; ++seed) {
        const Kestra::Test::MadeDocument made = maker.Make(seed);
        Kestra::Test::Dice dice(seed);
        Kestra::Fuzz::FuzzedDocument document;
        document.charset = made.charset;
        document.bytes = std::string_view(made.bytes).substr(0, LONGEST_SEED);
        document.cuts = Kestra::Test::CutsOfShortReads(document.bytes.size(), &dice);
        std::ofstream file(folder + "/made-" + std::to_string(seed), std::ios::binary);
        file << Kestra::Fuzz::WriteFuzzedDocument(document);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: seed-maker FOLDER COUNT\n";
        return 2;
    }
    try {
        WriteSeeds(argv[1], std::stoull(argv[2]));
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "seed-maker: " << failure.what() << '\n';
        return 1;
    }
}
