#pragma once

#include <cstddef>
#include <cstring>

#include "html/framework/AssignText.h"
#include "html/output/ParserSelfCheck.h"
#include "html/output/TokenWriter.h"

/// @file
/// The short way into the self-check, for the parser that owns it: no call per piece. Not
/// installed.

namespace Kestra::HTML {

/// Puts the pieces of one record where the self-check gathers them.
template <typename C, typename S>
class SelfCheckSink {
public:
    explicit SelfCheckSink(ParserSelfCheck<C, S>* receivingCheck) : selfCheck(receivingCheck) {
        Continue();
    }

    template <std::size_t COUNT>
    void Punctuation(const C (&characters)[COUNT]) {
        if (sizeof(characters) <= room) {
            std::memcpy(next, characters, sizeof(characters));
            Advance(sizeof(characters));
        } else {
            PutAside(characters, sizeof(characters), true);
        }
    }

    void Piece(const void* data, std::size_t byteCount, bool isMarkup) {
        if (byteCount == 0)
            return;
        if (byteCount <= room) {
            CopyShort(next, data, byteCount);
            Advance(byteCount);
        } else {
            PutAside(data, byteCount, isMarkup);
        }
    }

    /// The self-check has the pieces; to be called after the last one.
    void Finish() {
        selfCheck->gatheredSize = selfCheck->gathered.size() - room;
    }

private:
    void Advance(std::size_t byteCount) {
        next += byteCount;
        room -= byteCount;
    }

    /// There is not enough room: writes what is gathered first.
    void PutAside(const void* data, std::size_t byteCount, bool isMarkup) {
        Finish();
        selfCheck->OnOutput(data, byteCount, isMarkup);
        Continue();
    }

    void Continue() {
        next = selfCheck->gathered.data() + selfCheck->gatheredSize;
        room = selfCheck->gathered.size() - selfCheck->gatheredSize;
    }

    ParserSelfCheck<C, S>* selfCheck;
    char* next;
    std::size_t room;  // in bytes
};

/// Does what the self-check's callback for the record does.
template <typename C, typename S, typename Record>
void WriteToSelfCheck(ParserSelfCheck<C, S>* selfCheck, const Record& record) {
    SelfCheckSink<C, S> sink(selfCheck);
    TokenWriter<C, S, SelfCheckSink<C, S>>(&sink).Write(record);
    sink.Finish();
}

}  // namespace Kestra::HTML
