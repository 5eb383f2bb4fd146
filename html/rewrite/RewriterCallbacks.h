#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "html/rewrite/OpenElements.h"
#include "html/rewrite/Rewriter.h"
#include "html/rewrite/Selectors.h"

/// @file
/// The callbacks that the host registers for elements and for their content. Not installed.

namespace Kestra::HTML {

/// The registered callbacks, and those of them that a token calls.
class RewriterCallbacks {
public:
    struct Registration {
        Rewriter::ElementCallback onElement;  ///< one of the two
        Rewriter::TokenCallback onContent;
    };

    /// @return 0 or REWRITE_BAD_SELECTOR; then, and when memory is short, nothing is registered
    std::uint32_t AddForElements(std::string_view selector, Rewriter::ElementCallback callback, std::string* message);
    /// @param selector  empty for all tokens of the document
    std::uint32_t AddForContent(std::string_view selector, Rewriter::TokenCallback callback, std::string* message);

    bool IsEmpty() const {
        return registrations.empty();
    }
    bool HasSelectors() const {
        return !ofSelectors.empty();
    }
    const SelectorSet* GetSelectors() const {
        return &selectors;
    }

    void BeginToken() {
        matches.clear();
    }
    /// The selectors that the element of a start tag matches.
    std::vector<std::size_t>* GetMatches() {
        return &matches;
    }
    /// Finds the selectors for content that the open elements match.
    void FindContentMatches(const OpenElements& elements);
    /// Finds the callbacks registered for the token, in the order of their registration. A tag is
    /// in the content of the elements around its own.
    /// @param isOpening  a start tag, for which `FindContentMatches` was called before its element
    ///                   was opened
    void FindCallbacksOfToken(const OpenElements& elements, bool isOpening) {
        callbacksOfToken = ofAllContent;
        if (HasSelectors())
            AddCallbacksOfSelectors(elements, isOpening);
    }
    /// The numbers of the registrations that `FindCallbacksOfToken` has found.
    const std::vector<std::size_t>& GetCallbacksOfToken() const {
        return callbacksOfToken;
    }
    const Registration& GetRegistration(std::size_t index) const {
        return registrations[index];
    }

private:
    void AddCallbacksOfSelectors(const OpenElements& elements, bool isOpening);
    void AddCallbacksOf(const std::vector<std::size_t>& matched, bool isContent);

    SelectorSet selectors;
    std::vector<Registration> registrations;
    std::vector<std::size_t> ofSelectors;   // the registration of each selector, by its number
    std::vector<std::size_t> ofAllContent;  // registrations for the whole document
    std::size_t contentSelectors = 0;       // selectors that are for content
    std::vector<std::size_t> matches;
    std::vector<std::size_t> contentMatches;
    std::vector<std::size_t> callbacksOfToken;  // registrations
};

}  // namespace Kestra::HTML
