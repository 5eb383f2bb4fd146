#pragma once

#include <utility>

namespace Kestra {

/// Does something at the end of a scope, also when an exception leaves it. The action must not
/// throw.
template <typename Action>
class AtScopeEnd {
public:
    explicit AtScopeEnd(Action actionAtEnd) : action(std::move(actionAtEnd)) {}
    AtScopeEnd(const AtScopeEnd&) = delete;
    AtScopeEnd& operator=(const AtScopeEnd&) = delete;
    ~AtScopeEnd() {
        if (!isCancelled)
            action();
    }

    /// The scope ends without the action.
    void Cancel() {
        isCancelled = true;
    }

private:
    Action action;
    bool isCancelled = false;
};

}  // namespace Kestra
