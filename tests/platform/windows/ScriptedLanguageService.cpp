#include "tests/platform/windows/ScriptedLanguageService.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace Kestra::Test {

const CLSID ScriptedLanguageService::CLASS = {
    0x275C23E2, 0x3747, 0x11D0, {0x9F, 0xEA, 0x00, 0xAA, 0x00, 0x3F, 0x86, 0x46}};
const IID ScriptedLanguageService::INTERFACE = {
    0xDCCFC164, 0x2B38, 0x11D2, {0xB7, 0xEC, 0x00, 0xC0, 0x4F, 0x8F, 0x5D, 0x9A}};

namespace {

class Service final : public IMultiLanguage2 {
public:
    explicit Service(LanguageServiceScript* usedScript) : script(usedScript) {
        ++script->objects;
        ++script->references;
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        *object = nullptr;
        if (id == ScriptedLanguageService::INTERFACE && FAILED(script->interfaceAnswer))
            return script->interfaceAnswer;
        if (id != ScriptedLanguageService::INTERFACE && id != IID_IUnknown)
            return E_NOINTERFACE;
        AddRef();
        *object = static_cast<IMultiLanguage2*>(this);
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override {
        ++script->references;
        return ++references;
    }

    ULONG STDMETHODCALLTYPE Release() override {
        --script->references;
        const ULONG left = --references;
        if (left == 0)
            delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE DetectInputCodepage(DWORD flags, DWORD preferred, CHAR* data, INT* size,
                                                  DetectEncodingInfo* answer, INT* count) override {
        ++script->calls;
        script->flags = flags;
        script->preferred = preferred;
        script->bytes.assign(data, static_cast<std::size_t>(*size));
        script->room = *count;
        if (!script->leavesOutputs) {
            *count = script->count;
            answer->nLangID = 9;
            answer->nCodePage = script->code;
            answer->nDocPercent = 100;
            answer->nConfidence = script->confidence;
        }
        return script->result;
    }

    HRESULT STDMETHODCALLTYPE GetNumberOfCodePageInfo(UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetCodePageInfo(UINT, LANGID, MIMECPINFO*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetFamilyCodePage(UINT, UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE EnumCodePages(DWORD, LANGID, IEnumCodePage**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetCharsetInfo(BSTR, MIMECSETINFO*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE IsConvertible(DWORD, DWORD) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ConvertString(DWORD*, DWORD, DWORD, BYTE*, UINT*, BYTE*, UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ConvertStringToUnicode(DWORD*, DWORD, CHAR*, UINT*, WCHAR*, UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ConvertStringFromUnicode(DWORD*, DWORD, WCHAR*, UINT*, CHAR*, UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ConvertStringReset() override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetRfc1766FromLcid(LCID, BSTR*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetLcidFromRfc1766(LCID*, BSTR) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE EnumRfc1766(LANGID, IEnumRfc1766**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetRfc1766Info(LCID, LANGID, RFC1766INFO*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateConvertCharset(UINT, UINT, DWORD, IMLangConvertCharset**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ConvertStringInIStream(DWORD*, DWORD, WCHAR*, DWORD, DWORD, IStream*, IStream*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ConvertStringToUnicodeEx(DWORD*, DWORD, CHAR*, UINT*, WCHAR*, UINT*, DWORD,
                                                       WCHAR*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ConvertStringFromUnicodeEx(DWORD*, DWORD, WCHAR*, UINT*, CHAR*, UINT*, DWORD,
                                                         WCHAR*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE DetectCodepageInIStream(DWORD, DWORD, IStream*, DetectEncodingInfo*, INT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ValidateCodePage(UINT, HWND) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetCodePageDescription(UINT, LCID, WCHAR*, int) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE IsCodePageInstallable(UINT) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetMimeDBSource(MIMECONTF) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetNumberOfScripts(UINT*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE EnumScripts(DWORD, LANGID, IEnumScript**) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ValidateCodePageEx(UINT, HWND, DWORD) override {
        return E_NOTIMPL;
    }

private:
    ~Service() = default;

    LanguageServiceScript* script;
    ULONG references = 1;
};

}  // namespace

/// COM releases it for the last time when the registration ends, if it does not lose count.
class ScriptedLanguageService::Factory final : public IClassFactory {
public:
    explicit Factory(LanguageServiceScript* usedScript) : script(usedScript) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        *object = nullptr;
        if (id != IID_IUnknown && id != IID_IClassFactory)
            return E_NOINTERFACE;
        AddRef();
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }

    ULONG STDMETHODCALLTYPE AddRef() override {
        return ++references;
    }

    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references;
        if (left == 0)
            delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        *object = nullptr;
        if (outer != nullptr)
            return CLASS_E_NOAGGREGATION;
        if (FAILED(script->creation))
            return script->creation;
        auto* const service = new Service(script);
        const HRESULT result = service->QueryInterface(id, object);
        service->Release();
        return result;
    }

    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override {
        return S_OK;
    }

    ULONG GetReferences() const {
        return references;
    }

private:
    ~Factory() = default;

    LanguageServiceScript* script;
    ULONG references = 1;
};

ScriptedLanguageService::ScriptedLanguageService(LanguageServiceScript* usedScript) : factory(new Factory(usedScript)) {
    EXPECT_EQ(CoRegisterClassObject(CLASS, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration), S_OK);
}

ScriptedLanguageService::~ScriptedLanguageService() {
    EXPECT_EQ(CoRevokeClassObject(registration), S_OK);
    EXPECT_EQ(factory->Release(), 0U);
}

ULONG ScriptedLanguageService::GetReferences() const {
    return factory->GetReferences();
}

}  // namespace Kestra::Test
