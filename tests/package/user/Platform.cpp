#include <kestra/platform/BufferAllocPolicy.h>
#include <kestra/platform/CharSet.h>
#include <kestra/platform/InputStream.h>
#include <kestra/platform/MemoryInputStream.h>
#include <kestra/platform/Results.h>
#include <kestra/platform/StringHelper.h>
#include <kestra/platform/TmpStream.h>
#include <kestra/platform/Vector.h>
#include <kestra/platform/VirtualFileSystem.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>

#include "Check.h"

using Kestra::Vector;
using Kestra::WideString;
using Kestra::Base::DefaultBufferAllocPolicy;
using Kestra::StringNS::CharSet;
using Kestra::StringNS::StringHelper;
using Kestra::VFS::InputStream;
using Kestra::VFS::MemoryInputStream;
using Kestra::VFS::TmpInputStream;
using Kestra::VFS::TmpOutputStream;
using Kestra::VFS::VirtualFileSystem;

namespace {

std::string ReadAll(InputStream* stream) {
    std::string all;
    char piece[7];
    std::uint64_t size = 0;
    while (stream->Read(piece, sizeof(piece), &size) == Kestra::RESULT_OK)
        all.append(piece, static_cast<std::size_t>(size));
    return all;
}

template <typename S>
void UseVector() {
    Vector<S> strings;
    strings.push_back(Text<S>("one"));
    strings.emplace_back(Text<S>("three"));
    strings.insert(strings.begin() + 1, Text<S>("two"));
    CHECK(strings.size() == 3 && strings[1] == Text<S>("two") && strings.back() == Text<S>("three"));
    strings.erase(strings.begin());
    const Vector<S> copy = strings;
    strings.clear();
    CHECK(strings.empty() && copy.size() == 2 && copy.front() == Text<S>("two"));
}

void UseCharSet() {
    CHECK(CharSet::GetCharSetCode(Text<WideString>("UTF-8")) == CharSet::UTF8);
    CHECK(CharSet::GetCharSetCode(Text<WideString>("shift_jis")) == 932);
    CHECK(CharSet::GetCharSetCode(Text<WideString>("no such name")) == CharSet::UNKNOWN);
    CHECK(CharSet::GetCharSetCode(CharSet::GetCharSetName(CharSet::WINDOWS_1252)) == CharSet::WINDOWS_1252);
    CHECK(CharSet::IsIso2022(CharSet::ISO_2022_JP) && !CharSet::IsIso2022(CharSet::UTF8));
}

void UseStringHelper() {
    CHECK(std::memcmp(Kestra::StringNS::BOM_UTF8, "\xEF\xBB\xBF", 3) == 0);
    CHECK(std::memcmp(Kestra::StringNS::BOM_UTF16_LE, "\xFF\xFE", 2) == 0);

    WideString wide;
    CHECK(StringHelper::GetWideFromGeneric(1251, "\xCF\xF0", 2, &wide) == Kestra::RESULT_OK);
    CHECK(wide.size() == 2 && wide[0] == 0x041F && wide[1] == 0x0440);
    std::string narrow;
    CHECK(StringHelper::GetStringFromWide(CharSet::UTF8, wide.data(), wide.size(), &narrow) == Kestra::RESULT_OK);
    CHECK(narrow == "\xD0\x9F\xD1\x80");
    CHECK(StringHelper::GetWideFromGeneric(54321, "x", 1, &wide) == Kestra::RESULT_UNSUPPORTED_CHARSET && wide.empty());
    CHECK(StringHelper::GetStringFromAnsi("\x80", 1, &wide) == Kestra::RESULT_OK && wide.size() == 1 &&
          wide[0] == 0x20AC);
    CHECK(StringHelper::GetAnsiFromWide(wide.data(), wide.size(), &narrow) == Kestra::RESULT_OK && narrow == "\x80");

    Vector<std::string> parts;
    StringHelper::SplitAnsiString("a;;b", ';', &parts);
    CHECK(parts.size() == 3 && parts[0] == "a" && parts[1].empty() && parts[2] == "b");
    Vector<WideString> wideParts;
    StringHelper::SplitWideString(Text<WideString>("a=b"), '=', &wideParts);
    CHECK(wideParts.size() == 2 && wideParts[1] == Text<WideString>("b"));

    narrow = "  x ";
    StringHelper::StripAnsiChars(&narrow, StringHelper::STRIP_FRONT, " ");
    CHECK(narrow == "x ");
    wide = Text<WideString>("  x ");
    StringHelper::StripWideChars(&wide, StringHelper::STRIP_BOTH, Text<WideString>(" "));
    CHECK(wide == Text<WideString>("x"));
}

void UseStreams() {
    MemoryInputStream memory("0123456789", 100);
    std::uint64_t position = 0;
    CHECK(memory.Seek(104) == Kestra::RESULT_OK);
    CHECK(ReadAll(&memory) == "456789" && memory.IsEnd());
    CHECK(memory.GetPosition(&position) == Kestra::RESULT_OK && position == 110);

    auto output = std::make_unique<TmpOutputStream>(4);
    CHECK(output->Write("in memory, ", 11) == Kestra::RESULT_OK &&
          output->Write("then in a file", 14) == Kestra::RESULT_OK);
    CHECK(output->GetSize() == 25 && output->GetResult() == Kestra::RESULT_OK);
    TmpInputStream input(*output);
    output.reset();
    CHECK(ReadAll(&input) == "in memory, then in a file");
}

void UseFiles() {
    static constexpr char NAME[] = "kestra-html-user.txt";
    std::ofstream(NAME, std::ios::binary) << "from a file";
    std::unique_ptr<InputStream> file(VirtualFileSystem::GetInputStreamEx(Text<WideString>(NAME).c_str()));
    CHECK(file != nullptr && ReadAll(file.get()) == "from a file");
    file.reset();
    CHECK(std::remove(NAME) == 0);
    const std::unique_ptr<InputStream> missing(VirtualFileSystem::GetInputStreamEx(Text<WideString>(NAME).c_str()));
    CHECK(missing == nullptr);
}

void UseBuffer() {
    DefaultBufferAllocPolicy buffer;
    buffer.Initialize();
    CHECK(buffer.GetData() == nullptr && buffer.GetSize() == 0);
    CHECK(buffer.AdjustTo(1000) == Kestra::RESULT_OK && buffer.GetData() != nullptr && buffer.GetSize() >= 1000);
    std::memset(buffer.GetData(), 'x', 1000);
    buffer.Release();
    CHECK(buffer.GetData() == nullptr);
}

}  // namespace

void UsePlatform() {
    UseVector<std::string>();
    UseVector<WideString>();
    UseCharSet();
    UseStringHelper();
    UseStreams();
    UseFiles();
    UseBuffer();
}
