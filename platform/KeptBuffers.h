#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/Vector.h"

/// @file
/// The memory that the strings and lists of a parser retain for the next token. Thanks to it most
/// tokens need no allocation, but a document with a long token of every kind would leave a long
/// buffer in every string. So a parser measures from time to time how much it retains, and frees
/// all of it when that is too much.
///
/// A visitor is called with each string and list; for an element of a list a function
/// `ForEachString` visits the strings in it. Not installed.

namespace Kestra {

template <typename C, typename Visitor>
void ForEachString(std::basic_string<C>& text, Visitor& visit) {
    visit(text);
}

template <typename One, typename Other, typename Visitor>
void ForEachString(std::pair<One, Other>& strings, Visitor& visit) {
    visit(strings.first);
    visit(strings.second);
}

/// A visitor that measures. A list with so many elements that measuring it would be slow is freed
/// immediately.
class BufferMeasure {
public:
    template <typename C>
    void operator()(std::basic_string<C>& text) {
        const std::size_t bytes = text.capacity() * sizeof(C);
        if (bytes < sizeof(text))  // they are in the string itself
            return;
        total += bytes;
        largest = std::max(largest, bytes);
    }

    template <typename T>
    void operator()(Vector<T>& list) {
        if (list.capacity() > LARGEST_LIST / sizeof(T))
            list = Vector<T>();
        total += list.capacity() * sizeof(T);
        for (std::size_t i = 0; i < list.ConstructedSize(); ++i)
            ForEachString(list.data()[i], *this);
    }

    std::size_t total = 0;    ///< bytes
    std::size_t largest = 0;  ///< bytes of one string

private:
    static constexpr std::size_t LARGEST_LIST = 65536;  // bytes of elements: some hundred attributes
};

/// A visitor that clears strings and lists and frees their memory.
class BufferRelease {
public:
    template <typename C>
    void operator()(std::basic_string<C>& text) {
        std::basic_string<C>().swap(text);
    }

    template <typename T>
    void operator()(Vector<T>& list) {
        list = Vector<T>();
    }
};

/// How much a parser may retain, in bytes.
struct KeptBytes {
    std::size_t most = 384 * 1024;
    std::size_t slack = 64 * 1024;  ///< how much more it may be between two measurements
    bool isLargestExtra = true;     ///< a document may keep its largest string on top of that, however long it is
};

/// Frees what is retained when that is more than `bytes.most`.
///
/// @param isNewDocument  the buffers are those of another document
/// @param visitBuffers   calls a visitor with every string and list whose content is not needed
/// @return the bytes of input after which it must be called again; by then `bytes.slack` more may
///         be retained
template <typename VisitBuffers>
std::uint64_t LimitBuffers(bool isNewDocument, VisitBuffers visitBuffers, const KeptBytes& bytes = KeptBytes()) {
    // Bytes that one of input may add: it passes through some strings, half of each to spare, some
    // wide.
    constexpr std::size_t GROWTH = 10;
    BufferMeasure kept;
    visitBuffers(kept);
    const std::size_t limit = isNewDocument || !bytes.isLargestExtra ? bytes.most : bytes.most + kept.largest;
    if (kept.total <= limit)
        return (limit + bytes.slack - kept.total) / GROWTH;
    BufferRelease release;
    visitBuffers(release);
    return (bytes.most + bytes.slack) / GROWTH;
}

}  // namespace Kestra
