#include "html/parser/TokenDelivery.h"

#include <utility>

#include "html/framework/Instantiate.h"
#include "html/output/Crc32.h"

namespace Kestra::HTML {

template <typename C, typename S>
void TokenDelivery<C, S>::SetObservers(ParserObserver<char, std::string>* narrow,
                                       ParserObserver<WideChar, WideString>* wide) {
    charObserver = narrow;
    wcharObserver = wide;
}

template <typename C, typename S>
bool TokenDelivery<C, S>::HasObserver() const {
    return charObserver != nullptr || wcharObserver != nullptr;
}

template <typename C, typename S>
bool TokenDelivery<C, S>::HasNarrowObserver() const {
    return charObserver != nullptr;
}

template <typename C, typename S>
void TokenDelivery<C, S>::SetSelfCheckMode(std::uint32_t mode) {
    selfCheckMode = mode;
}

template <typename C, typename S>
std::uint32_t TokenDelivery<C, S>::GetSelfCheckMode() const {
    return selfCheckMode;
}

template <typename C, typename S>
void TokenDelivery<C, S>::SetDetectCharsetErrors(bool detect) {
    detectCharsetErrors = detect;
}

template <typename C, typename S>
bool TokenDelivery<C, S>::GetDetectCharsetErrors() const {
    return detectCharsetErrors;
}

template <typename C, typename S>
void TokenDelivery<C, S>::BeginDocument() {
    inputCrc = 0;
    selfCheck.Reset(false);
    hasCharsetErrors = false;
    charsetErrors = 0;
    outOfMemory = false;
    convertedForObserver = false;
}

template <typename C, typename S>
void TokenDelivery<C, S>::AnnounceStart() {
    Notify([](auto* observer) { observer->OnStartParsing(); });
    selfCheck.OnStartParsing();
    selfCheck.Reset(selfCheckMode == 2);
}

template <typename C, typename S>
void TokenDelivery<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    if (IsSelfChecking()) {
        inputCrc = UpdateCrc32(inputCrc, bytes, size);
        selfCheck.OnBOM(bytes, size);
    }
    Notify([bytes, size](auto* observer) { observer->OnBOM(bytes, size); });
}

template <typename C, typename S>
void TokenDelivery<C, S>::OnCharset(StringNS::CharSet::Code code) {
    Notify([code](auto* observer) { observer->OnCharset(code); });
}

template <typename C, typename S>
void TokenDelivery<C, S>::AddToInputCheck(const void* bytes, std::uint64_t size) {
    if (IsSelfChecking())
        inputCrc = UpdateCrc32(inputCrc, bytes, size);
}

template <typename C, typename S>
void TokenDelivery<C, S>::RestartSelfCheck() {
    inputCrc = 0;
    selfCheck.Reset(selfCheckMode == 2);
}

template <typename C, typename S>
bool TokenDelivery<C, S>::EndSelfCheck() {
    selfCheck.OnEndParsing();
    return !IsSelfChecking() || (selfCheck.CheckCopy() && inputCrc == selfCheck.GetOutputCrc());
}

template <typename C, typename S>
void TokenDelivery<C, S>::ReleaseSelfCheck() {
    selfCheck.Reset(false);
}

template <typename C, typename S>
VFS::InputStream* TokenDelivery<C, S>::GetSelfCheckStream() {
    return selfCheck.GetSelfCheckStream();
}

template <typename C, typename S>
bool TokenDelivery<C, S>::HasConverted() const {
    return convertedForObserver;
}

template <typename C, typename S>
bool TokenDelivery<C, S>::HasCharsetErrors() const {
    return detectCharsetErrors && hasCharsetErrors;
}

template <typename C, typename S>
std::uint32_t TokenDelivery<C, S>::GetConversionError() const {
    return charsetErrors;
}

template <typename C, typename S>
bool TokenDelivery<C, S>::ReportAndResetOutOfMemory() {
    return std::exchange(outOfMemory.Get(), false);
}

KESTRA_HTML_INSTANTIATE(TokenDelivery);

}  // namespace Kestra::HTML
