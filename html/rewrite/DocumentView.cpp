#include "html/rewrite/DocumentView.h"

#include <algorithm>

#include "html/rewrite/RawElements.h"

namespace Kestra::HTML {

std::string DocumentView::ViewOf(std::string_view bytes) const {
    if (!parser->IsWParser())
        return std::string(bytes);
    std::string view;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const bool isAscii = bytes[i + 1] == 0 && static_cast<unsigned char>(bytes[i]) < 0x80;
        view.push_back(isAscii ? bytes[i] : '\x80');
    }
    return view;
}

std::string DocumentView::LastOf(std::string_view bytes, std::string_view before) {
    const std::size_t count = std::min(bytes.size(), TAIL_SIZE);
    const std::size_t countBefore = std::min(before.size(), TAIL_SIZE - count);
    return std::string(before.substr(before.size() - countBefore)).append(bytes.substr(bytes.size() - count));
}

std::string DocumentView::ViewTail(std::string_view bytes, std::string_view before) const {
    return ViewOf(LastOf(bytes, before));
}

std::string DocumentView::ViewHead(std::string_view bytes, std::string_view before) const {
    const std::size_t countBefore = std::min(before.size(), TAIL_SIZE);
    return ViewOf(std::string(before.substr(0, countBefore)).append(bytes.substr(0, TAIL_SIZE - countBefore)));
}

void DocumentView::Guard(std::string_view before, std::string* bytes) const {
    const std::size_t unit = parser->IsWParser() ? 2 : 1;
    const std::string first = ViewOf(std::string_view(*bytes).substr(0, unit));
    if (first.empty() || static_cast<unsigned char>(first[0]) >= 0x80 || !ContinuesMarkup(before, first[0]))
        return;
    const std::string reference = "&#" + std::to_string(static_cast<unsigned>(first[0])) + ";";
    std::string guarded;
    for (const char character : reference)
        guarded.append(1, character).append(unit - 1, '\0');
    guarded.append(*bytes, unit);
    bytes->swap(guarded);
}

}  // namespace Kestra::HTML
