#include "tests/tools/windows/Screen.h"

#include <vector>

#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Test {

Screen::Screen()
    : buffer(CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                       CONSOLE_TEXTMODE_BUFFER, nullptr)) {
    Checked(SetConsoleScreenBufferSize(buffer.Get(), {WIDTH, HEIGHT}), "SetConsoleScreenBufferSize");
}

HANDLE Screen::Get() const {
    return buffer.Get();
}

Handle Screen::Duplicate() const {
    HANDLE copy = nullptr;
    Checked(
        DuplicateHandle(GetCurrentProcess(), buffer.Get(), GetCurrentProcess(), &copy, 0, TRUE, DUPLICATE_SAME_ACCESS),
        "DuplicateHandle");
    return Handle(copy);
}

std::string Screen::Read() const {
    CONSOLE_SCREEN_BUFFER_INFO info;
    Checked(GetConsoleScreenBufferInfo(buffer.Get(), &info), "GetConsoleScreenBufferInfo");
    std::wstring lines;
    for (SHORT line = 0; line < info.dwCursorPosition.Y; ++line)
        lines += ReadLine(line) + L'\n';
    return Tool::FromWide(lines + ReadLine(info.dwCursorPosition.Y));
}

std::wstring Screen::ReadLine(SHORT line) const {
    std::wstring text(WIDTH, L'\0');
    DWORD count = 0;
    Checked(ReadConsoleOutputCharacterW(buffer.Get(), text.data(), WIDTH, {0, line}, &count),
            "ReadConsoleOutputCharacter");
    text.resize(count);
    return text.substr(0, text.find_last_not_of(L' ') + 1);
}

std::wstring Screen::ReadAttributes(SHORT line) const {
    std::vector<WORD> attributes(WIDTH);
    DWORD count = 0;
    Checked(ReadConsoleOutputAttribute(buffer.Get(), attributes.data(), WIDTH, {0, line}, &count),
            "ReadConsoleOutputAttribute");
    return {attributes.begin(), attributes.begin() + static_cast<std::ptrdiff_t>(count)};
}

DWORD Screen::GetMode() const {
    DWORD mode = 0;
    Checked(GetConsoleMode(buffer.Get(), &mode), "GetConsoleMode");
    return mode;
}

void Screen::SetMode(DWORD mode) {
    Checked(SetConsoleMode(buffer.Get(), mode), "SetConsoleMode");
}

}  // namespace Kestra::Test
