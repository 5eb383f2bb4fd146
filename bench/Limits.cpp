// What the memory allows: passes over the bytes that do less than any tokenizer has to.

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "bench/Benchmarks.h"

namespace Kestra::Bench {

namespace {

std::uint64_t Copy(const std::string& document) {
    static std::vector<char> copy;
    if (copy.size() < document.size())
        copy.resize(document.size());
    std::memcpy(copy.data(), document.data(), document.size());
    benchmark::DoNotOptimize(copy.data());
    benchmark::ClobberMemory();
    return document.size();
}

std::uint64_t FindOpeners(const std::string& document) {
    const char* next = document.data();
    const char* const end = next + document.size();
    std::uint64_t found = 0;
    while (next != end &&
           (next = static_cast<const char*>(std::memchr(next, '<', static_cast<std::size_t>(end - next)))) != nullptr) {
        ++found;
        ++next;
    }
    return found + 1;
}

/// Counts "<" and line feeds, 16 bytes at a time where the processor has the instructions for it.
std::uint64_t CountOpenersAndLines(const std::string& document) {
    std::uint64_t found = 0;
    std::size_t i = 0;
#if defined(__SSE2__)
    const __m128i opener = _mm_set1_epi8('<');
    const __m128i line = _mm_set1_epi8('\n');
    __m128i sums = _mm_setzero_si128();
    while (i + 16 <= document.size()) {
        // A lane of the counters holds 255 steps.
        __m128i counters = _mm_setzero_si128();
        for (int step = 0; step < 255 && i + 16 <= document.size(); ++step, i += 16) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(document.data() + i));
            counters = _mm_sub_epi8(counters, _mm_or_si128(_mm_cmpeq_epi8(bytes, opener), _mm_cmpeq_epi8(bytes, line)));
        }
        sums = _mm_add_epi64(sums, _mm_sad_epu8(counters, _mm_setzero_si128()));
    }
    std::array<std::uint64_t, 2> halves{};
    _mm_storeu_si128(reinterpret_cast<__m128i*>(halves.data()), sums);
    found = halves[0] + halves[1];
#endif
    for (; i < document.size(); ++i)
        found += document[i] == '<' || document[i] == '\n' ? 1 : 0;
    return found + 1;
}

using CrcTables = std::array<std::array<std::uint32_t, 256>, 4>;

constexpr CrcTables MakeCrcTables() {
    CrcTables tables{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
        tables[0][byte] = crc;
    }
    for (std::size_t table = 1; table < tables.size(); ++table) {
        for (std::size_t byte = 0; byte < 256; ++byte)
            tables[table][byte] = (tables[table - 1][byte] >> 8) ^ tables[0][tables[table - 1][byte] & 0xFF];
    }
    return tables;
}

/// The CRC-32 of ISO 3309 by four tables, four bytes at a time.
std::uint64_t Crc32(const std::string& document) {
    static constexpr CrcTables TABLES = MakeCrcTables();
    std::uint32_t crc = 0xFFFFFFFF;
    std::size_t i = 0;
    for (; i + 4 <= document.size(); i += 4) {
        std::uint32_t four = 0;
        std::memcpy(&four, document.data() + i, 4);
        crc ^= four;
        crc =
            TABLES[3][crc & 0xFF] ^ TABLES[2][(crc >> 8) & 0xFF] ^ TABLES[1][(crc >> 16) & 0xFF] ^ TABLES[0][crc >> 24];
    }
    for (; i < document.size(); ++i)
        crc = (crc >> 8) ^ TABLES[0][(crc ^ static_cast<unsigned char>(document[i])) & 0xFF];
    benchmark::DoNotOptimize(crc);
    return document.size();
}

}  // namespace

void RegisterLimits(const NamedCorpus& corpus) {
    Register(corpus, "limit/memcpy", Copy);
    Register(corpus, "limit/memchr", FindOpeners);
    Register(corpus, "limit/vector-pass", CountOpenersAndLines);
    Register(corpus, "limit/crc32", Crc32);
}

}  // namespace Kestra::Bench
