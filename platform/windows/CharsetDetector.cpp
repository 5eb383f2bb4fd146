#include "platform/CharsetDetector.h"

#include <algorithm>
#include <limits>
#include <memory>

#include "platform/Results.h"
#include "platform/windows/WindowsApi.h"

// After the header above, which it needs.
#include <mlang.h>
#include <objbase.h>

namespace Kestra::Base {

namespace {

constexpr CLSID LANGUAGE_SERVICE = {0x275C23E2, 0x3747, 0x11D0, {0x9F, 0xEA, 0x00, 0xAA, 0x00, 0x3F, 0x86, 0x46}};
constexpr IID LANGUAGE_SERVICE_INTERFACE = {
    0xDCCFC164, 0x2B38, 0x11D2, {0xB7, 0xEC, 0x00, 0xC0, 0x4F, 0x8F, 0x5D, 0x9A}};

constexpr DWORD NO_PREFERENCE = 0;
constexpr DWORD ANY_SERVER = CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;
constexpr INT ROOM = 1;  // results

static_assert(ANY_SERVER == 23);
static_assert(MLDETECTCP_HTML == 8);

/// COM on the calling thread. A thread that has it in another apartment already keeps that one: the
/// service works in both.
class Apartment {
public:
    Apartment() : result(CoInitialize(nullptr)) {}
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() {
        if (SUCCEEDED(result))
            CoUninitialize();
    }

private:
    HRESULT result;
};

struct ReleaseInterface {
    void operator()(IUnknown* object) const {
        object->Release();
    }
};

using LanguageService = std::unique_ptr<IMultiLanguage2, ReleaseInterface>;

/// @return null when the service cannot be started
LanguageService StartLanguageService() {
    void* object = nullptr;
    const HRESULT result = CoCreateInstance(LANGUAGE_SERVICE, nullptr, ANY_SERVER, LANGUAGE_SERVICE_INTERFACE, &object);
    return LanguageService(SUCCEEDED(result) ? static_cast<IMultiLanguage2*>(object) : nullptr);
}

}  // namespace

std::uint32_t CharsetDetector::DetectBytes(const void* data, std::uint64_t size, DetectedCharset* detected,
                                           std::uint32_t* count) {
    const Apartment apartment;
    const LanguageService service = StartLanguageService();
    if (service == nullptr)
        return RESULT_UNAVAILABLE;
    // The service takes 2 GB at most, and only reads what it is given.
    INT length = static_cast<INT>(std::min<std::uint64_t>(size, std::numeric_limits<INT>::max()));
    DetectEncodingInfo answer = {};
    INT answers = ROOM;
    const HRESULT result = service->DetectInputCodepage(
        MLDETECTCP_HTML, NO_PREFERENCE, static_cast<CHAR*>(const_cast<void*>(data)), &length, &answer, &answers);
    if (FAILED(result))
        return RESULT_DETECTION_FAILED;
    *count = static_cast<std::uint32_t>(std::max<INT>(answers, 0));
    detected->code = answer.nCodePage;
    detected->confidence = static_cast<std::uint32_t>(std::max<INT>(answer.nConfidence, 0));
    return RESULT_OK;
}

}  // namespace Kestra::Base
