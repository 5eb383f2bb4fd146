#pragma once

#include <string>

#include "tests/tools/windows/Handle.h"

namespace Kestra::Test {

/// A screen of the console that the test program has: empty, and so wide that no line of a test is
/// broken.
class Screen {
public:
    static constexpr SHORT WIDTH = 500;
    static constexpr SHORT HEIGHT = 1000;

    /// @throws std::system_error  when the program has no console
    Screen();

    HANDLE Get() const;
    /// @return one more handle, to be inherited
    Handle Duplicate() const;

    /// The lines down to the cursor in UTF-8, each with a line feed but the one that the cursor is
    /// in, without the blanks at their ends.
    std::string Read() const;

    /// What the characters of a line look like, one after the other.
    std::wstring ReadAttributes(SHORT line) const;

    DWORD GetMode() const;
    void SetMode(DWORD mode);

private:
    std::wstring ReadLine(SHORT line) const;

    Handle buffer;
};

}  // namespace Kestra::Test
