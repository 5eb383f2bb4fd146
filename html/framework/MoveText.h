#pragma once

#include <cstddef>
#include <utility>

#include "html/framework/AssignText.h"

namespace Kestra::HTML {

/// Moves the text that a member recognizer gathered into its owner's record; the member's string is
/// empty afterwards.
///
/// Up to `LONGEST_COPY` the text is copied, so that each string keeps its buffer: strings that swap
/// buffers would have to allocate again and again when texts are longer than the buffer they got.
/// Above `LONGEST_COPY` a second buffer costs more than that.
template <typename S>
void MoveText(S* gathered, S* record) {
    constexpr std::size_t LONGEST_COPY = 32768 / sizeof(typename S::value_type);
    if (gathered->size() > LONGEST_COPY)
        *record = std::move(*gathered);
    else
        AssignText(gathered->data(), gathered->data() + gathered->size(), record);
    gathered->clear();
}

}  // namespace Kestra::HTML
