#include "html/rewrite/RewriterCallbacks.h"

#include <algorithm>
#include <utility>

#include "html/rewrite/MakeRoom.h"

namespace Kestra::HTML {

std::uint32_t RewriterCallbacks::AddForElements(std::string_view selector, Rewriter::ElementCallback callback,
                                                std::string* message) {
    MakeRoom(1, &registrations);
    MakeRoom(1, &ofSelectors);
    if (!selectors.Add(selector, message))
        return REWRITE_BAD_SELECTOR;
    ofSelectors.push_back(registrations.size());
    registrations.push_back({std::move(callback), nullptr});
    return REWRITE_OK;
}

std::uint32_t RewriterCallbacks::AddForContent(std::string_view selector, Rewriter::TokenCallback callback,
                                               std::string* message) {
    MakeRoom(1, &registrations);
    MakeRoom(1, &ofSelectors);
    MakeRoom(1, &ofAllContent);
    if (selector.empty()) {
        ofAllContent.push_back(registrations.size());
    } else {
        if (!selectors.Add(selector, message))
            return REWRITE_BAD_SELECTOR;
        ofSelectors.push_back(registrations.size());
        ++contentSelectors;
    }
    registrations.push_back({nullptr, std::move(callback)});
    return REWRITE_OK;
}

void RewriterCallbacks::FindContentMatches(const OpenElements& elements) {
    if (contentSelectors > 0 && elements.HasMatches())
        elements.GetMatches(&contentMatches);
    else
        contentMatches.clear();
}

void RewriterCallbacks::AddCallbacksOf(const std::vector<std::size_t>& matched, bool isContent) {
    for (const std::size_t selector : matched) {
        const std::size_t registration = ofSelectors[selector];
        if ((registrations[registration].onContent != nullptr) == isContent)
            callbacksOfToken.push_back(registration);
    }
}

void RewriterCallbacks::AddCallbacksOfSelectors(const OpenElements& elements, bool isOpening) {
    if (!isOpening)
        FindContentMatches(elements);
    AddCallbacksOf(contentMatches, true);
    AddCallbacksOf(matches, false);
    std::sort(callbacksOfToken.begin(), callbacksOfToken.end());
}

}  // namespace Kestra::HTML
