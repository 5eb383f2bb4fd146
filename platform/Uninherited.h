#pragma once

#include <utility>

namespace Kestra {

/// A field that a copy of its owner does not inherit: there it has the value of a new object.
template <typename T>
class Uninherited {
public:
    Uninherited() = default;
    /// Has the value of a new object.
    Uninherited(const Uninherited&) {}
    /// Takes the value of a new object, unless assigned to itself.
    Uninherited& operator=(const Uninherited& other) {
        if (this != &other)
            value = T();
        return *this;
    }
    ~Uninherited() = default;

    /// Sets the value.
    Uninherited& operator=(T newValue) {
        value = std::move(newValue);
        return *this;
    }

    /// The value.
    const T& Get() const {
        return value;
    }
    /// The value, to be changed.
    T& Get() {
        return value;
    }

private:
    T value = T();
};

}  // namespace Kestra
