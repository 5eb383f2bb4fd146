/// @file
/// Writes documents for the comparison of two platforms: those of the differential tests, in 8 bits
/// and in UTF-16.
///
///     document-writer FOLDER COUNT        FOLDER/0.html ... and FOLDER/0.utf16 ..., and FOLDER/bytes.html with
///                                         every byte from 0x80 up; of every tenth also FOLDER/0.escapes.html with
///                                         escapes of ISO-2022, and the same after a declared charset,
///                                         FOLDER/0.iso-2022-kr.html and FOLDER/0.gb18030.html

#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>

#include "tests/support/DocumentMaker.h"

namespace {

using Kestra::Test::Dice;

void Write(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream file;
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file.open(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
}

/// Each byte as one unit, and now and then any other unit in its place: lone surrogates, wide
/// spaces, everything.
std::string Widen(std::string_view bytes, Dice* dice) {
    std::string units;
    if (dice->OneIn(4))
        units += "\xFF\xFE";
    for (const char byte : bytes) {
        const bool isReplaced = dice->OneIn(40);
        units += isReplaced ? dice->Byte() : byte;
        units += isReplaced ? dice->Byte() : '\0';
    }
    return units;
}

/// Escapes and shifts of ISO-2022 at random places, and runs that hide markup in a document of such
/// a charset.
std::string PutEscapesInto(std::string_view bytes, Dice* dice) {
    static constexpr std::string_view ESCAPES[] = {"\x1B$B", "\x1B(B",        "\x1B$)C",         "\x0E",
                                                   "\x0F",   "\x1B</*\x1B(B", "\x1B$B<b>\x1B(B", "\x1B"};
    std::string document;
    for (const char byte : bytes) {
        document += byte;
        if (dice->OneIn(30))
            document += dice->Pick(ESCAPES);
    }
    return document.append(dice->Pick(ESCAPES));
}

/// Every byte of the upper half in a text, a comment and a value, alone and after the one before
/// it.
std::string MakeDocumentOfBytes() {
    std::string document;
    for (unsigned byte = 0x80; byte <= 0xFF; ++byte) {
        const auto letter = static_cast<char>(static_cast<unsigned char>(byte));
        const auto before = static_cast<char>(static_cast<unsigned char>(byte == 0x80 ? 0xFF : byte - 1));
        document.append("<p title='").append({letter, ' ', before, letter}).append("'>");
        document.append({letter, ' ', before, letter})
            .append("<!--")
            .append({letter, ' ', before, letter})
            .append("--></p>\n");
    }
    return document;
}

void WriteDocuments(const std::filesystem::path& folder, std::uint64_t count) {
    const std::vector<std::string> pages = Kestra::Test::ReadPages(KESTRA_EXAMPLE_PAGES);
    Kestra::Test::DocumentMaker maker(&pages);
    std::filesystem::create_directories(folder);
    Write(folder / "bytes.html", MakeDocumentOfBytes());
    for (std::uint64_t seed = 0; seed < count; ++seed) {
        const std::string document = maker.Make(seed).bytes;
        Dice dice(seed);
        Write(folder / (std::to_string(seed) + ".html"), document);
        Write(folder / (std::to_string(seed) + ".utf16"), Widen(document, &dice));
        if (seed % 10 != 0)
            continue;
        const std::string escapes = PutEscapesInto(document, &dice);
        Write(folder / (std::to_string(seed) + ".escapes.html"), escapes);
        for (const char* const charset : {"iso-2022-kr", "gb18030"})
            Write(folder / (std::to_string(seed) + "." + charset + ".html"),
                  std::string("<meta charset=") + charset + ">" + escapes);
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: document-writer FOLDER COUNT\n";
        return 2;
    }
    try {
        WriteDocuments(argv[1], std::stoull(argv[2]));
        return 0;
    } catch (const std::exception& failure) {
        std::cerr << "document-writer: " << failure.what() << '\n';
        return 1;
    }
}
