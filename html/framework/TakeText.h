#pragma once

#include <cstddef>
#include <utility>

#include "html/framework/AssignText.h"

namespace Kestra::HTML {

/// Moves the text that a member recognizer gathered into its owner's record; the member's is empty
/// afterwards.
///
/// It is copied, so that every string keeps its own buffer: buffers that change places meet, again
/// and again, texts too long for them. Above `LONGEST_COPY` a second buffer costs more than that.
template <typename S>
void TakeText(S* gathered, S* record) {
    constexpr std::size_t LONGEST_COPY = 32768 / sizeof(typename S::value_type);
    if (gathered->size() > LONGEST_COPY)
        *record = std::move(*gathered);
    else
        AssignText(gathered->data(), gathered->data() + gathered->size(), record);
    gathered->clear();
}

}  // namespace Kestra::HTML
