#include <kestra/html/framework/ParserObserver.h>
#include <kestra/html/output/ParserObserverOutput.h>
#include <kestra/html/parser/GenericParser.h>
#include <kestra/platform/MemoryInputStream.h>
#include <kestra/platform/Results.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <vector>

#include "Check.h"

using namespace Kestra::HTML;
using Kestra::Vector;
using Kestra::WideChar;
using Kestra::WideString;
using Kestra::StringNS::CharSet;
using Kestra::VFS::InputStream;
using Kestra::VFS::MemoryInputStream;

namespace {

const std::string PAGE = "a<b e c='d'>f<br/></b >\n<script>x='</b>';</script><!-x g";

/// Notes kind and main string of every token.
template <typename Base, typename C, typename S>
class Tracer : public Base {
public:
    void OnStartParsing() override {
        Note("start-parsing", S());
    }
    void OnEndParsing() override {
        Note("end-parsing", S());
    }
    void OnCharset(CharSet::Code code) override {
        charset = code;
    }
    void OnText(TextData<C, S>* data) override {
        Note("text", *data->text);
    }
    void OnSQuoteString(SQuoteStringData<C, S>* data) override {
        Note("string", *data->text);
    }
    void OnStartTag(StartTagData<C, S>* data) override {
        Note("start", *data->name);
        attributes += data->attributes->size();
    }
    void OnShortTag(ShortTagData<C, S>* data) override {
        Note("short", *data->name);
    }
    void OnEndTag(EndTagData<C, S>* data) override {
        Note("end", *data->name);
    }
    void OnJSTagStart() override {
        Note("js-start", S());
    }
    void OnJSTagEnd() override {
        Note("js-end", S());
    }
    void OnJunkData(JunkData<C, S>* data) override {
        // Bytes; of ASCII text the first of each character.
        const std::string& bytes = *data->text;
        const std::size_t width = junkWidth;
        S text;
        for (std::size_t i = 0; i < bytes.size(); i += width)
            text += static_cast<C>(bytes[i]);
        Note("junk", text);
    }

    std::string trace;
    std::size_t attributes = 0;
    std::size_t junkWidth = 1;
    CharSet::Code charset = 0;

private:
    void Note(const char* kind, const S& text) {
        trace += kind;
        trace += '(';
        for (const C character : text)
            trace += static_cast<char>(character);
        trace += ')';
    }
};

using NarrowTracer = Tracer<ParserObserver<char, std::string>, char, std::string>;
using WideTracer = Tracer<GenericParserObserver, WideChar, WideString>;

const std::string PAGE_TRACE =
    "start-parsing()text(a)start(b)text(f)short(br)end(b)text(\n)start(script)js-start()text(x=)string(</"
    "b>)text(;)end(script)js-end()"
    "junk(<!-x)junk( g)end-parsing()";

std::string JoinJunk(std::string trace) {
    static constexpr char SEAM[] = ")junk(";
    // Where junk is cut into tokens is the parser's affair.
    for (std::size_t place = trace.find("junk("); (place = trace.find(SEAM, place)) != std::string::npos;)
        trace.erase(place, sizeof(SEAM) - 1);
    return trace;
}

std::string Utf16(const std::string& ascii) {
    std::string bytes;
    for (const char character : ascii) {
        bytes += character;
        bytes += '\0';
    }
    return bytes;
}

template <typename Observer>
void UseStreams(const std::string& bytes, GenericParser::DataStreamType type, std::size_t width) {
    Observer observer;
    observer.junkWidth = width;
    GenericParser parser;
    CHECK(parser.SetObserver(&observer, false) == PARSER_OK);
    CHECK(parser.StartParse(width == 1 ? CharSet::WINDOWS_1252 : CharSet::UTF16_LE, type) == PARSER_OK);
    MemoryInputStream stream(bytes);
    CHECK(parser.ParseStream(&stream, false) == PARSER_OK);
    CHECK(parser.IsWParser() == (width == 2));
    CHECK(parser.GetLine() == 2 && parser.GetColumn() == PAGE.size() - PAGE.find('\n'));
    CHECK(parser.EndParse() == PARSER_OK);
    CHECK(JoinJunk(observer.trace) == JoinJunk(PAGE_TRACE));
    CHECK(observer.attributes == 2);
    CHECK(observer.charset == (width == 1 ? CharSet::WINDOWS_1252 : CharSet::UTF16_LE));
}

/// Writes every token back.
template <typename Base>
class Copier final : public Base {
public:
    void OnOutput(const void* data, std::uint64_t byteCount, bool) override {
        bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
    }

    std::string bytes;
};

template <typename Observer>
void UseOutput(const std::string& bytes, GenericParser::DataStreamType type) {
    Observer observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.StartParse(CharSet::WINDOWS_1252, type);
    CHECK(parser.ParseStream(new MemoryInputStream(bytes), true) == PARSER_OK);
    CHECK(parser.EndParse() == PARSER_OK);
    CHECK(observer.bytes == bytes);
}

/// The library's own proof that its tokens are the whole input.
void UseSelfCheck(const std::string& bytes, GenericParser::DataStreamType type) {
    GenericParser parser;
    parser.StartParse(CharSet::WINDOWS_1252, type);
    CHECK(parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY) == 0 &&
          parser.GetSelfCheck() == GenericParser::SELF_CHECK_COPY);
    parser.StartParse(CharSet::WINDOWS_1252, type);
    MemoryInputStream stream(bytes);
    CHECK(parser.ParseStream(&stream, false) == PARSER_OK);
    CHECK(parser.EndParse() == PARSER_OK);
    InputStream* const copy = parser.GetSelfCheckStream();
    CHECK(copy != nullptr);
    std::string read(bytes.size() + 1, '\0');
    std::uint64_t size = 0;
    CHECK(copy != nullptr && copy->Read(read.data(), read.size(), &size) == Kestra::RESULT_OK && size == bytes.size());
    CHECK(read.compare(0, bytes.size(), bytes) == 0);
}

/// A stream of the host's own that fails after its first bytes.
class FailingStream final : public InputStream {
public:
    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        *bytesRead = 0;
        if (read || size < 2)
            return 4321;
        read = true;
        static_cast<char*>(buffer)[0] = '<';
        static_cast<char*>(buffer)[1] = 'p';
        *bytesRead = 2;
        return 0;
    }
    std::uint32_t GetPosition(std::uint64_t*) override {
        return 4322;
    }
    std::uint32_t Seek(std::uint64_t) override {
        return 4323;
    }
    bool IsEnd() override {
        return false;
    }

private:
    bool read = false;
};

void UseBuffers() {
    NarrowTracer observer;
    GenericParser parser;
    parser.SetObserver(&observer, false);
    CHECK(parser.GetLine() == 1 && parser.GetCurrentParserName().empty());
    CHECK(parser.StartParse(CharSet::UTF8, GenericParser::DATA_STREAM_AUTO) == PARSER_OK);
    CHECK(parser.ParseBuffer("a<b", 3) == PARSER_OK);
    CHECK(parser.GetCurrentParserName() == Text<WideString>("StartTagSimpleParser"));
    GenericParser copy(parser);
    NarrowTracer copyObserver;
    copy.SetObserver(&copyObserver, false);
    CHECK(parser.ParseBuffer(">c</b>", 6) == PARSER_OK && parser.EndParse() == PARSER_OK);
    CHECK(observer.trace == "start-parsing()text(a)start(b)text(c)end(b)end-parsing()");
    CHECK(copy.ParseBuffer("x>", 2) == PARSER_OK && copy.EndParse() == PARSER_OK);
    CHECK(copyObserver.trace == "start(bx)end-parsing()");
    CHECK(parser.StartParse(CharSet::UTF8, GenericParser::DATA_STREAM_8BIT) == PARSER_OK &&
          parser.ParseBuffer("<b", 2) == PARSER_OK);
    CHECK(parser.EndParse() == PARSER_UNTERMINATED);
}

void UseFrontEnd() {
    GenericParser parser;
    CHECK(parser.GetChrDetMinConfidence() == GenericParser::DETECTCHARSET_MIN_CONFIDENCE);
    parser.SetChrDetMinConfidence(90);
    CHECK(parser.GetChrDetMinConfidence() == 90);
    CharSet::Code code = 77;
    CHECK(parser.DetectCharset("short", 5, &code) == PARSER_TOO_LITTLE_DATA && code == 77);
    CHECK(parser.GetDetectedConfidence() == 0);
    CHECK(parser.GetChrDetMaxSize() == GenericParser::BUFFER_SIZE);
    parser.SetChrDetMaxSize(0);
    CHECK(parser.GetChrDetMaxSize() == 0);

    FailingStream failing;
    CHECK(parser.StartParse(CharSet::WINDOWS_1252, GenericParser::DATA_STREAM_8BIT) == PARSER_OK);
    CHECK(parser.ParseStream(&failing, false) == 4321);
    CHECK(parser.ParseFile(Text<WideString>("no/such/file.html").c_str()) == PARSER_INVALID_ARGUMENT);

    static constexpr char NAME[] = "kestra-html-user.html";
    std::ofstream(NAME, std::ios::binary) << PAGE;
    WideTracer observer;
    parser.SetObserver(&observer, false);
    CHECK(parser.StartParse(CharSet::WINDOWS_1252, GenericParser::DATA_STREAM_8BIT) == PARSER_OK);
    CHECK(parser.ParseFile(Text<WideString>(NAME).c_str()) == PARSER_OK && parser.EndParse() == PARSER_OK);
    CHECK(JoinJunk(observer.trace) == JoinJunk(PAGE_TRACE));
    CHECK(std::remove(NAME) == 0);
}

}  // namespace

void UseDocuments() {
    UseStreams<NarrowTracer>(PAGE, GenericParser::DATA_STREAM_8BIT, 1);
    UseStreams<WideTracer>(PAGE, GenericParser::DATA_STREAM_8BIT, 1);
    UseStreams<Tracer<ParserObserver<WideChar, WideString>, WideChar, WideString>>(Utf16(PAGE),
                                                                                   GenericParser::DATA_STREAM_UTF16, 2);
    UseOutput<Copier<ParserObserverOutput<char, std::string>>>(PAGE, GenericParser::DATA_STREAM_8BIT);
    UseOutput<Copier<ParserObserverOutput<WideChar, WideString>>>(Utf16(PAGE), GenericParser::DATA_STREAM_UTF16);
    UseOutput<Copier<GenericParserObserverOutput>>(Utf16(PAGE), GenericParser::DATA_STREAM_UTF16);
    UseSelfCheck(PAGE + "<!--a--><?b?><!c><![CDATA[d]]>", GenericParser::DATA_STREAM_8BIT);
    UseSelfCheck(Utf16(PAGE + "<?b?><!c><![endif]>"), GenericParser::DATA_STREAM_UTF16);
    UseBuffers();
    UseFrontEnd();
}
