#pragma once

#include <memory>
#include <string>
#include <vector>

#include "html/framework/ParserObserver.h"
#include "platform/Characters.h"
#include "platform/Uninherited.h"

namespace Kestra::HTML {

/// The observer that a parser calls, and its ownership. Not installed.
///
/// Copies of a parser own an observer together: the last of them frees it. An observer that is
/// replaced while one of its callbacks runs is freed later, by `FreeReplaced`.
class ObserverBinding {
public:
    /// Binds an observer of one flavour, or none, and unbinds the previous one. Allocates before
    /// anything changes.
    /// @param owns         frees the observer when it is replaced, or with the last copy
    /// @param inCallback   a callback of the previous observer is running, so that observer must
    ///                     live until `FreeReplaced`
    void Bind(ParserObserver<char, std::string>* observer, bool owns, bool inCallback);
    void Bind(ParserObserver<WideChar, WideString>* observer, bool owns, bool inCallback);

    /// At most one of the two is not null.
    ParserObserver<char, std::string>* GetNarrow() const;
    ParserObserver<WideChar, WideString>* GetWide() const;

    /// No callback is running any more.
    void FreeReplaced();

private:
    struct Owner;

    void SetOwner(void* block, bool owns, bool inCallback);
    std::shared_ptr<Owner> ExtractOwnerOf(const void* block);

    ParserObserver<char, std::string>* charObserver = nullptr;
    ParserObserver<WideChar, WideString>* wcharObserver = nullptr;
    std::shared_ptr<Owner> currentOwner;  // null for an observer that is the host's
    std::weak_ptr<Owner> sharedByCopies;  // of the observer given up last: copies may own it still
    Uninherited<std::vector<std::shared_ptr<Owner>>> replaced;  // in a callback
};

}  // namespace Kestra::HTML
