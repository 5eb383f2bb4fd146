#pragma once

#include <cstddef>
#include <map>
#include <vector>

#include "Export.h"

/// What observers are attached to, and the buffer that streams are read into.
namespace Kestra::Base {

class MultiDelegate;
class Observable;

/// Receives events: binds its callbacks to the events of an `Observable`.
///
/// An observer may be attached to several observables, and to one several times. Destroyed, it
/// detaches itself from all of them. A copy is attached to nothing.
class KESTRA_HTML_API Observer {
public:
    Observer();
    /// Attached to nothing.
    Observer(const Observer& other);
    /// Stays attached to what it is attached to.
    Observer& operator=(const Observer& other);
    virtual ~Observer();

    /// Binds the callbacks. Called by `Observable::Attach`; a second call binds them once more, so
    /// every event comes twice.
    virtual void RegisterCalls(MultiDelegate* delegate);

private:
    friend class Observable;
    std::vector<Observable*> attachedTo;  // once for each attachment
};

/// The callbacks that are bound to events: for each identifier a list, called in the order of
/// binding.
///
/// Callbacks may bind and remove: a removed one is not called any more, not even for the current
/// event; an added one gets the next event.
class KESTRA_HTML_API MultiDelegate {
public:
    /// Makes the call to an observer.
    /// @param arguments  pointers to the values of the event, as many as it has
    using Trampoline = void (*)(Observer* observer, const void* const* arguments);

    MultiDelegate();
    /// A copy has the same bindings.
    MultiDelegate(const MultiDelegate& other);
    /// When memory is exhausted, it throws and changes nothing.
    MultiDelegate& operator=(const MultiDelegate& other);
    ~MultiDelegate();

    /// Adds a callback for an event.
    /// @param id          of the event
    /// @param observer    borrowed; must be removed before it is destroyed
    /// @param trampoline  called with the observer and the values of the event
    void Bind(unsigned long id, Observer* observer, Trampoline trampoline);

    /// Removes all bindings of an observer.
    void Remove(const Observer* observer);

    /// True when a callback is bound to the event.
    bool IsBound(unsigned long id) const;

    /// Raises an event without values.
    void Call(unsigned long id);

    /// Raises an event.
    /// @param id         of the event
    /// @param arguments  pointers to the values of the event, borrowed for the call
    void Call(unsigned long id, const void* const* arguments);

private:
    class Calling;

    struct Binding {
        Observer* observer;  // null: removed during an event
        Trampoline trampoline;
    };

    void Sweep();

    std::map<unsigned long, std::vector<Binding>> bindings;
    std::size_t callsUnderWay;
    bool hasRemoved;
};

/// Raises events. A copy has the same observers attached; they get the events of both.
///
/// When memory is exhausted, an assignment throws `std::bad_alloc` and changes nothing. It must be
/// neither assigned to nor destroyed while it raises an event. An observable and its observers
/// belong to one thread at a time: each keeps a list of the others.
class KESTRA_HTML_API Observable {
public:
    Observable();
    /// Attaches the same observers.
    Observable(const Observable& other);
    /// Detaches all observers, and attaches those of the other one.
    Observable& operator=(const Observable& other);
    virtual ~Observable();

    /// Lets the observer bind its callbacks. Null is ignored. When `RegisterCalls` throws, the
    /// observer stays attached with what it has bound.
    /// @param observer  borrowed; it may be destroyed while attached
    void Attach(Observer* observer);

    /// Undoes every `Attach` of the observer.
    void Detach(Observer* observer);

protected:
    /// The callbacks that the observers have bound, for a class that raises events.
    MultiDelegate& GetDelegate();

private:
    friend class Observer;
    void Join(Observer* observer);
    void JoinAll(const std::vector<Observer*>& list);
    void LeaveAll(const std::vector<Observer*>& list, std::size_t count) noexcept;

    MultiDelegate delegate;
    std::vector<Observer*> observers;  // once for each attachment
};

}  // namespace Kestra::Base
