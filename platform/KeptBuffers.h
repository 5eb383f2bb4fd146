#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/Vector.h"

/// @file
/// The memory that the strings and lists of a parser keep for the next token. It is what makes a
/// token cost no allocation, but a document of every kind of token, each long once, would leave a
/// long buffer in every place. So a parser adds up from time to time what it keeps, and gives all
/// of it back when that is too much.
///
/// A visitor is called with each string and list; for an element of a list a function
/// `ForEachString` names the strings in it. Not installed.

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

/// A visitor that adds up. A list with so many elements that the next ones would be slow to add up
/// is freed at once.
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

/// A visitor that empties and frees.
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

/// What a parser may keep, in bytes.
struct KeptBytes {
    std::size_t most = 384 * 1024;
    std::size_t slack = 64 * 1024;  ///< how much more there may be between two looks at it
    bool isLargestExtra =
        true;  ///< whether a document may keep the largest of its strings on top of that, however long it is
};

/// Frees what is kept when that is more than `bytes.most`.
///
/// @param isNewDocument  the buffers are those of another document
/// @param visitBuffers   hands a visitor every string and list whose content is no longer of use
/// @return the bytes of input after which it is to be called again; by then `bytes.slack` more may
/// be kept
template <typename VisitBuffers>
std::uint64_t LimitBuffers(bool isNewDocument, VisitBuffers visitBuffers, const KeptBytes& bytes = KeptBytes()) {
    constexpr std::size_t GROWTH =
        10;  // bytes that one of input may add: it passes through some strings, half of each to spare, some wide
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
