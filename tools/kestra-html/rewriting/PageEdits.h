#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/TokenPlace.h"
#include "html/rewrite/Rewriter.h"
#include "tools/kestra-html/rewriting/RewriteEdit.h"

namespace Kestra::Tool {

/// Makes the edits of a command line in a document, and reports each of them.
class PageEdits {
public:
    /// An edit that was made.
    struct Made {
        HTML::TokenPlace place;  ///< of the start tag
        /// The value of the attribute, or the start tag of a removed element; in UTF-8. Nothing:
        /// there was no such attribute.
        std::optional<std::string> before;
        std::optional<std::string> after;  ///< the same after it
    };
    using Listener = std::function<void(const Made& made)>;

    /// An edit that could not be made.
    struct Failure {
        std::uint32_t code = 0;  ///< a `RewriteResult`; 0 for none
        HTML::TokenPlace place;
    };

    /// @param edits     borrowed
    /// @param rewriter  borrowed; calls back from now on
    /// @param listener  called for every edit
    PageEdits(const std::vector<RewriteEdit>& edits, HTML::Rewriter* rewriter, Listener listener);
    PageEdits(const PageEdits&) = delete;
    PageEdits& operator=(const PageEdits&) = delete;

    std::uint64_t GetCount() const;     ///< of the edits made
    const Failure& GetFailure() const;  ///< the first one

private:
    void Register(const RewriteEdit& edit, HTML::Rewriter* rewriter);
    void RemoveElement(HTML::RewriterElement element);
    void Set(HTML::RewriterToken tag, const RewriteEdit& edit);
    void Replace(HTML::RewriterToken tag, const RewriteEdit& edit);
    void Remove(HTML::RewriterToken tag, const RewriteEdit& edit);
    void SetValue(HTML::RewriterToken tag, const std::string& attribute, const std::optional<std::string>& before,
                  const std::string& after);
    void Conclude(std::uint32_t result, Made made);
    bool IsRemoved(const HTML::RewriterToken& tag) const;
    std::string ShowBytes(const HTML::RewriterToken& tag) const;

    const HTML::GenericParser& parser;
    Listener listen;
    std::uint64_t count = 0;
    Failure failure;
    /// Begin of the last tag that is removed, by itself or with an element around it.
    std::optional<std::uint64_t> removed;
};

}  // namespace Kestra::Tool
