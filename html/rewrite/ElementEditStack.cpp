#include "html/rewrite/ElementEditStack.h"

#include <algorithm>
#include <utility>

#include "html/rewrite/MakeRoom.h"

namespace Kestra::HTML {

ElementEditStack::ElementEditStack(OpenElements* openElements, RewriterOutput* documentOutput)
    : elements(openElements), output(documentOutput) {}

void ElementEditStack::Close(const std::string& tagName, TokenEdits* edits) {
    const std::size_t count = elements->CountClosedBy(tagName);
    edits->closing.reserve(std::min(count, elementEdits.size()));
    for (std::size_t i = 0; i < count; ++i) {
        edits->closesEdited = elements->GetPayload(elements->GetDepth() - 1) != 0;
        if (edits->closesEdited) {
            edits->closing.push_back(std::move(elementEdits.back()));
            elementEdits.pop_back();
            edits->isEdited = true;
        }
        elements->CloseInnermost();
    }
}

void ElementEditStack::WriteToken(const TokenPlace& place, Opening opening, TokenEdits* edits) {
    ElementEdits& element = edits->element;
    const bool opensContent = opening == Opening::WITH_CONTENT;
    const bool opensEdited = opensContent && !element.IsEmpty();
    if (opensEdited)
        MakeRoom(1, &elementEdits);
    const ElementEdits* const own = edits->closesEdited ? &edits->closing.back() : nullptr;
    output->CopyUntil(place.begin);
    for (const ElementEdits& ended : edits->closing) {
        output->EndRemoval(ended);
        output->EmitEndOfContent(ended);
        if (&ended != own)
            output->EmitInsertion(ended.after);
    }
    if (own == nullptr || !own->isRemoved)
        output->EmitInsertion(edits->before);
    if (edits->hasBody || (own != nullptr && own->hasNoEndTag)) {
        output->Skip(place.end);
        if (own == nullptr || !own->hasNoEndTag)
            output->EmitInsertion(edits->body);
    } else {
        output->CopyUntil(place.end);
    }
    if (own != nullptr)
        output->EmitInsertion(own->after);
    if (!element.isRemoved || !opensContent)
        output->EmitInsertion(edits->after);
    if (opening == Opening::WITHOUT_CONTENT)
        output->EmitInsertion(element.after);
    if (opensEdited) {
        output->BeginRemoval(&element);
        elementEdits.push_back(std::move(element));
        elements->SetPayload(elements->GetDepth() - 1, elementEdits.size());
    }
}

void ElementEditStack::CloseAll() {
    while (!elementEdits.empty()) {
        const ElementEdits edited = std::move(elementEdits.back());
        elementEdits.pop_back();
        output->EndRemoval(edited);
        output->EmitEndOfContent(edited);
        output->EmitInsertion(edited.after);
    }
    elements->Clear();
}

}  // namespace Kestra::HTML
