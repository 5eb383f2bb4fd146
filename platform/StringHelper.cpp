#include "platform/StringHelper.h"

#include <cstddef>

#include "platform/CharSetConverter.h"
#include "platform/Results.h"

namespace Kestra::StringNS {

const unsigned char BOM_UTF8[3] = {0xEF, 0xBB, 0xBF};
const unsigned char BOM_UTF16_LE[2] = {0xFF, 0xFE};

namespace {

/// The checks that all conversions share. Empties `*output`.
/// @return 0 when the conversion may go on.
template <typename C, typename S>
std::uint32_t CheckArguments(const C* data, std::uint64_t size, S* output) {
    if (output == nullptr)
        return RESULT_INVALID_ARGUMENT;
    output->clear();
    return data == nullptr && size != 0 ? RESULT_INVALID_ARGUMENT : RESULT_OK;
}

template <typename S>
void Split(const S& text, typename S::value_type separator, Vector<S>* parts) {
    parts->clear();
    std::size_t begin = 0;
    for (std::size_t end = text.find(separator); end != S::npos; end = text.find(separator, begin)) {
        parts->AppendRecycled().assign(text, begin, end - begin);
        begin = end + 1;
    }
    parts->AppendRecycled().assign(text, begin, S::npos);
}

template <typename S>
void Strip(S* text, std::uint32_t mode, const S& set) {
    if ((mode & StringHelper::STRIP_BACK) != 0)
        text->erase(text->find_last_not_of(set) + 1);  // npos + 1 is 0: nothing but characters of the set
    if ((mode & StringHelper::STRIP_FRONT) != 0)
        text->erase(0, text->find_first_not_of(set));
}

}  // namespace

std::uint32_t StringHelper::GetWideFromGeneric(CharSet::Code code, const char* data, std::uint64_t size,
                                               WideString* output, std::uint32_t conversionType) {
    const std::uint32_t result = CheckArguments(data, size, output);
    if (result != RESULT_OK)
        return result;
    if (conversionType != 0)
        return RESULT_INVALID_ARGUMENT;
    return CharSetConverter().ToWide(code, data, CharSetConverter::LeaveOutTerminator(code, data, size), output);
}

std::uint32_t StringHelper::GetStringFromAnsi(const char* data, std::uint64_t size, WideString* output) {
    return GetWideFromGeneric(CharSet::UNKNOWN, data, size, output);
}

std::uint32_t StringHelper::GetAnsiFromWide(const WideChar* data, std::uint64_t size, std::string* output) {
    return GetStringFromWide(CharSet::UNKNOWN, data, size, output);
}

std::uint32_t StringHelper::GetStringFromWide(CharSet::Code code, const WideChar* data, std::uint64_t size,
                                              std::string* output) {
    const std::uint32_t result = CheckArguments(data, size, output);
    if (result != RESULT_OK)
        return result;
    if (size != 0 && data[size - 1] == 0)
        --size;
    return CharSetConverter().FromWide(code, data, size, output);
}

void StringHelper::SplitAnsiString(const std::string& text, char separator, Vector<std::string>* parts) {
    Split(text, separator, parts);
}

void StringHelper::SplitWideString(const WideString& text, WideChar separator, Vector<WideString>* parts) {
    Split(text, separator, parts);
}

void StringHelper::StripAnsiChars(std::string* text, std::uint32_t mode, const std::string& set) {
    Strip(text, mode, set);
}

void StringHelper::StripWideChars(WideString* text, std::uint32_t mode, const WideString& set) {
    Strip(text, mode, set);
}

}  // namespace Kestra::StringNS
