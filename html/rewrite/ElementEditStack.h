#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "html/framework/TokenPlace.h"
#include "html/rewrite/OpenElements.h"
#include "html/rewrite/RewriterOutput.h"
#include "html/rewrite/TokenEdits.h"

/// @file
/// The edits of open elements, until they end. Not installed.

namespace Kestra::HTML {

/// Keeps the edits of open elements, and writes tokens with the edits of the elements that they
/// open and close.
class ElementEditStack {
public:
    /// The element that a token opens.
    enum class Opening {
        NONE,
        WITH_CONTENT,
        WITHOUT_CONTENT,
    };

    /// Both are borrowed for as long as this lives.
    ElementEditStack(OpenElements* openElements, RewriterOutput* documentOutput);

    /// An end tag closes elements: moves their edits to those of its token.
    void Close(const std::string& tagName, TokenEdits* edits);

    /// Writes a token with its edits, and the edits of the elements that it ends. Allocates before
    /// anything is written.
    void WriteToken(const TokenPlace& place, Opening opening, TokenEdits* edits);

    /// The document ends: writes the edits of the elements that are still open.
    void CloseAll();

private:
    OpenElements* elements;
    RewriterOutput* output;
    // The payload of such an element is its place in here, from 1.
    std::vector<ElementEdits> elementEdits;  // of the open elements that have any
};

}  // namespace Kestra::HTML
