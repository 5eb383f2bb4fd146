#include "html/parser/MarkupCharset.h"

#include "html/framework/Instantiate.h"
#include "html/parser/DeclaredCharset.h"
#include "platform/AtScopeEnd.h"

namespace Kestra::HTML {

template <typename C, typename S>
void MarkupCharset<C, S>::BeginDocument(bool isDetected) {
    charsetDetectorUsed = isDetected;
    charsetFromMarkup = false;
    needsReparsing = false;
}

template <typename C, typename S>
void MarkupCharset<C, S>::SetDiscovery(bool discover) {
    discoverCharset = discover;
}

template <typename C, typename S>
bool MarkupCharset<C, S>::Apply(const StartTagSimpleParserData<C, S>& tag, bool isHalted,
                                TokenDelivery<C, S>* delivery) {
    const StringNS::CharSet::Code declared = FindDeclaredCharset(tag.attributes, &declaredName);
    if (declared == StringNS::CharSet::UNKNOWN || isHalted)
        return false;
    const bool isTooLate = declared != delivery->GetCharset() && delivery->HasConverted();
    const bool isObserved = delivery->HasObserver();
    delivery->SetCharset(declared);
    const AtScopeEnd settle([this, isTooLate, isObserved] {
        charsetFromMarkup = isObserved;
        needsReparsing = needsReparsing || isTooLate;
    });
    delivery->OnCharset(declared);
    return isTooLate;
}

template <typename C, typename S>
bool MarkupCharset<C, S>::NeedsReparsing() const {
    return needsReparsing;
}

template <typename C, typename S>
bool MarkupCharset<C, S>::WasDetectorUsed() const {
    return charsetDetectorUsed;
}

KESTRA_HTML_INSTANTIATE(MarkupCharset);

}  // namespace Kestra::HTML
