#include "platform/Observable.h"

#include <algorithm>

namespace Kestra::Base {

Observer::Observer() = default;

Observer::Observer(const Observer&) {}

Observer& Observer::operator=(const Observer&) {
    return *this;
}

Observer::~Observer() {
    while (!attachedTo.empty())
        attachedTo.back()->Detach(this);
}

void Observer::RegisterCalls(MultiDelegate*) {}

/// An event under way. Lists keep their order and length until the last one is over, so that the
/// places in them stay valid.
class MultiDelegate::Calling {
public:
    explicit Calling(MultiDelegate* callingDelegate) : delegate(callingDelegate) {
        ++delegate->callsUnderWay;
    }
    Calling(const Calling&) = delete;
    Calling& operator=(const Calling&) = delete;
    ~Calling() {
        --delegate->callsUnderWay;
        delegate->Sweep();
    }

private:
    MultiDelegate* delegate;
};

MultiDelegate::MultiDelegate() : callsUnderWay(0), hasRemoved(false) {}

MultiDelegate::MultiDelegate(const MultiDelegate& other)
    : bindings(other.bindings), callsUnderWay(0), hasRemoved(other.hasRemoved) {
    Sweep();
}

MultiDelegate& MultiDelegate::operator=(const MultiDelegate& other) {
    if (this != &other) {
        std::map<unsigned long, std::vector<Binding>> copy(other.bindings);
        bindings.swap(copy);
        hasRemoved = other.hasRemoved;
        Sweep();
    }
    return *this;
}

MultiDelegate::~MultiDelegate() = default;

void MultiDelegate::Bind(unsigned long id, Observer* observer, Trampoline trampoline) {
    bindings[id].push_back({observer, trampoline});
}

void MultiDelegate::Remove(const Observer* observer) {
    for (auto& [id, list] : bindings) {
        for (Binding& binding : list) {
            if (binding.observer == observer)
                binding.observer = nullptr;
        }
    }
    hasRemoved = true;
    Sweep();
}

/// Drops what was removed, unless an event is under way.
void MultiDelegate::Sweep() {
    if (!hasRemoved || callsUnderWay > 0)
        return;
    for (auto& [id, list] : bindings)
        std::erase_if(list, [](const Binding& binding) { return binding.observer == nullptr; });
    hasRemoved = false;
}

bool MultiDelegate::IsBound(unsigned long id) const {
    const auto found = bindings.find(id);
    return found != bindings.end() && !found->second.empty();
}

void MultiDelegate::Call(unsigned long id) {
    Call(id, nullptr);
}

void MultiDelegate::Call(unsigned long id, const void* const* arguments) {
    const auto found = bindings.find(id);
    if (found == bindings.end())
        return;
    const Calling calling(this);
    const std::size_t count = found->second.size();  // one that is added meanwhile gets the next event
    for (std::size_t i = 0; i < count; ++i) {
        const Binding binding = found->second[i];
        if (binding.observer != nullptr)
            binding.trampoline(binding.observer, arguments);
    }
}

Observable::Observable() = default;

Observable::Observable(const Observable& other) : delegate(other.delegate), observers(other.observers) {
    JoinAll(observers);
}

/// First all that may fail: until then the observers are attached to both lists, and the delegate
/// is the old one.
Observable& Observable::operator=(const Observable& other) {
    if (this != &other) {
        std::vector<Observer*> adopted(other.observers);
        JoinAll(adopted);
        try {
            delegate = other.delegate;
        } catch (...) {
            LeaveAll(adopted, adopted.size());
            throw;
        }
        observers.swap(adopted);
        LeaveAll(adopted, adopted.size());
    }
    return *this;
}

Observable::~Observable() {
    LeaveAll(observers, observers.size());
}

void Observable::Attach(Observer* observer) {
    if (observer == nullptr)
        return;
    Join(observer);
    observer->RegisterCalls(&delegate);
}

void Observable::Detach(Observer* observer) {
    if (observer == nullptr)
        return;
    delegate.Remove(observer);
    std::erase(observer->attachedTo, this);
    std::erase(observers, observer);
}

MultiDelegate& Observable::GetDelegate() {
    return delegate;
}

/// Both know of each other, or, when memory runs out, neither does.
void Observable::Join(Observer* observer) {
    observers.push_back(observer);
    try {
        observer->attachedTo.push_back(this);
    } catch (...) {
        observers.pop_back();
        throw;
    }
}

/// Every observer of the list knows of one attachment more, or, when memory runs out, none does.
void Observable::JoinAll(const std::vector<Observer*>& list) {
    std::size_t joined = 0;
    try {
        for (; joined < list.size(); ++joined)
            list[joined]->attachedTo.push_back(this);
    } catch (...) {
        LeaveAll(list, joined);
        throw;
    }
}

/// The first observers of the list know of one attachment less.
void Observable::LeaveAll(const std::vector<Observer*>& list, std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; ++i) {
        std::vector<Observable*>& attachedTo = list[i]->attachedTo;
        attachedTo.erase(std::find(attachedTo.begin(), attachedTo.end(), this));
    }
}

}  // namespace Kestra::Base
