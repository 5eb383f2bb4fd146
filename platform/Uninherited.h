#pragma once

#include <utility>

namespace Kestra {

/// A field that a copy of its owner does not inherit: there it has the value of a new object.
template <typename T>
class Uninherited {
public:
    Uninherited() = default;
    Uninherited(const Uninherited&) {}
    Uninherited& operator=(const Uninherited& other) {
        if (this != &other)
            value = T();
        return *this;
    }
    ~Uninherited() = default;

    Uninherited& operator=(T newValue) {
        value = std::move(newValue);
        return *this;
    }

    const T& Get() const {
        return value;
    }
    T& Get() {
        return value;
    }

private:
    T value = T();
};

}  // namespace Kestra
