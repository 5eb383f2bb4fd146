#include "html/parser/ObserverBinding.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Kestra::HTML {

/// An observer that parsers own together.
struct ObserverBinding::Owner {
    explicit Owner(void* ownedBlock) : block(ownedBlock) {}
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() {
        if (frees)
            ::operator delete(block);
    }

    void* block;
    bool frees = true;
};

void ObserverBinding::Bind(ParserObserver<char, std::string>* observer, bool owns, bool inCallback) {
    SetOwner(observer, owns, inCallback);
    charObserver = observer;
    wcharObserver = nullptr;
}

void ObserverBinding::Bind(ParserObserver<WideChar, WideString>* observer, bool owns, bool inCallback) {
    SetOwner(observer, owns, inCallback);
    charObserver = nullptr;
    wcharObserver = observer;
}

ParserObserver<char, std::string>* ObserverBinding::GetNarrow() const {
    return charObserver;
}

ParserObserver<WideChar, WideString>* ObserverBinding::GetWide() const {
    return wcharObserver;
}

void ObserverBinding::FreeReplaced() {
    replaced.Get().clear();
}

void ObserverBinding::SetOwner(void* block, bool owns, bool inCallback) {
    if (inCallback)
        replaced.Get().reserve(replaced.Get().size() + 1);
    std::shared_ptr<Owner> owner = ExtractOwnerOf(block);
    if (owner == nullptr && owns && block != nullptr)
        owner = std::make_shared<Owner>(block);
    if (currentOwner != nullptr) {
        sharedByCopies = currentOwner;
        if (inCallback)
            replaced.Get().push_back(std::move(currentOwner));
    }
    if (owner != nullptr && !owns) {
        if (owner.use_count() == 1)
            owner->frees = false;  // given back to the host, which binds the same observer as its own
        sharedByCopies = owner;
    }
    currentOwner = owns ? std::move(owner) : nullptr;
}

/// The ownership that this parser has, or that its copies still have, of an observer; null for
/// none.
std::shared_ptr<ObserverBinding::Owner> ObserverBinding::ExtractOwnerOf(const void* block) {
    if (block == nullptr)
        return nullptr;
    if (currentOwner != nullptr && currentOwner->block == block)
        return std::exchange(currentOwner, nullptr);
    std::vector<std::shared_ptr<Owner>>& owners = replaced.Get();
    const auto found =
        std::find_if(owners.begin(), owners.end(), [block](const auto& owner) { return owner->block == block; });
    if (found != owners.end()) {
        std::shared_ptr<Owner> owner = std::move(*found);
        owners.erase(found);
        return owner;
    }
    std::shared_ptr<Owner> shared = sharedByCopies.lock();
    return shared != nullptr && shared->block == block ? shared : nullptr;
}

}  // namespace Kestra::HTML
