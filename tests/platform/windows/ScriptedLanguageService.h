#pragma once

#include <cstddef>
#include <string>

#include "platform/windows/WindowsApi.h"

// After the header above, which it needs.
#include <mlang.h>
#include <objbase.h>

namespace Kestra::Test {

/// What the service answers when it is asked for a charset, and what it was asked.
struct LanguageServiceScript {
    HRESULT creation = S_OK;         ///< of the object; a failure makes none
    HRESULT interfaceAnswer = S_OK;  ///< of the object, when asked for the interface
    HRESULT result = S_OK;
    INT count = 1;
    UINT code = 0;
    INT confidence = 0;
    bool leavesOutputs = false;  ///< the count and the result stay as they were

    int calls = 0;
    DWORD flags = 4711;
    DWORD preferred = 4711;
    std::string bytes;
    INT room = 4711;
    int objects = 0;     ///< made so far
    int references = 0;  ///< to the objects that live now
};

/// A language service in place of the system's, for the apartment of the thread that makes it, for
/// as long as it lives. The thread must have COM.
class ScriptedLanguageService {
public:
    explicit ScriptedLanguageService(LanguageServiceScript* usedScript);
    ScriptedLanguageService(const ScriptedLanguageService&) = delete;
    ScriptedLanguageService& operator=(const ScriptedLanguageService&) = delete;
    ~ScriptedLanguageService();

    /// References to the class object, COM's own among them.
    ULONG GetReferences() const;

    static const CLSID CLASS;
    static const IID INTERFACE;

private:
    class Factory;

    Factory* factory;
    DWORD registration = 0;
};

}  // namespace Kestra::Test
