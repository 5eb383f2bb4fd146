#pragma once

namespace Kestra::HTML {

/// Moves the text that a member recognizer gathered into its owner's record. The buffers change places, so that neither side allocates
/// again; a member's text is worth nothing afterwards until its next `BeginParse`.
template <typename S>
void TakeText(S* gathered, S* record) {
    if (gathered->empty())
        record->clear();
    else
        record->swap(*gathered);
}

}  // namespace Kestra::HTML
