// The module `kestra_html._native`. What users see, and its documents, is in `kestra_html`.

#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "c/kestra/html.h"
#include "platform/AtScopeEnd.h"
#include "python/native/Document.h"
#include "python/native/Extract.h"
#include "python/native/Rewriting.h"
#include "python/native/TokenTable.h"

namespace Kestra::Python {

namespace py = pybind11;

namespace {

/// A column of a table, which Python reads without a copy.
template <typename Number>
class Column {
public:
    Column(std::shared_ptr<const TokenTable> tokenTable, const std::vector<Number>* columnNumbers)
        : table(std::move(tokenTable)), numbers(columnNumbers) {}

    py::buffer_info GetBuffer() const {
        return py::buffer_info(const_cast<Number*>(numbers->data()), sizeof(Number),
                               py::format_descriptor<Number>::format(), 1, {static_cast<py::ssize_t>(numbers->size())},
                               {static_cast<py::ssize_t>(sizeof(Number))}, true);
    }

private:
    std::shared_ptr<const TokenTable> table;
    const std::vector<Number>* numbers;
};

py::str ToPython(const WideString& text) {
    PyObject* const object =
        PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(text.data()),
                              static_cast<Py_ssize_t>(text.size() * sizeof(WideChar)), "surrogatepass", nullptr);
    if (object == nullptr)
        throw py::error_already_set();
    return py::reinterpret_steal<py::str>(object);
}

py::str ToPython(const ExtractedText& text) {
    return text.isWide ? ToPython(text.wide) : py::str(text.ascii);
}

/// The tokens of a document, and the document.
class Tokens {
public:
    Tokens(std::shared_ptr<const Document> tokensDocument, TokenTable tokenTable)
        : document(std::move(tokensDocument)), table(std::make_shared<const TokenTable>(std::move(tokenTable))) {}

    const TokenTable& GetTable() const {
        return *table;
    }

    template <typename Number>
    py::object MakeColumn(std::vector<Number> TokenTable::*column) const {
        return py::memoryview(py::cast(Column<Number>(table, &((*table).*column))));
    }

    py::bytes GetRaw(std::size_t index) const {
        const std::string_view bytes = GetBytes(index);
        return py::bytes(bytes.data(), bytes.size());
    }

    /// Name, text and attributes of a token.
    py::tuple Read(std::size_t index) const {
        const auto kind = static_cast<HTML::TokenKind>(table->kinds[index]);
        const TokenText text = ReadToken(GetBytes(index), kind, table->begins[index], table->charset, table->isUtf16);
        py::list attributes;
        for (const AttributeText& attribute : text.attributes) {
            const HTML::AttributePlace& place = attribute.place;
            const py::object value =
                attribute.hasValue ? py::object(ToPython(attribute.value)) : py::object(py::none());
            attributes.append(py::make_tuple(ToPython(attribute.name), value, attribute.quote,
                                             py::make_tuple(place.begin, place.end, place.nameBegin, place.nameEnd,
                                                            place.valueBegin, place.valueEnd)));
        }
        return py::make_tuple(ToPython(text.name), ToPython(text.text), py::tuple(attributes));
    }

private:
    std::string_view GetBytes(std::size_t index) const {
        if (index >= table->GetSize())
            throw py::index_error("no such token");
        const std::uint64_t size = table->ends[index] - table->begins[index];
        const std::uint64_t begin = table->rawBegins.empty() ? table->begins[index] : table->rawBegins[index];
        return document->GetBytes().substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(size));
    }

    std::shared_ptr<const Document> document;
    std::shared_ptr<const TokenTable> table;
};

ParseOptions MakeOptions(std::uint32_t charset, std::uint32_t type, bool scriptsAsTokens, std::uint64_t maxTokenSize,
                         std::uint64_t maxAttributes) {
    ParseOptions options;
    options.charset = charset;
    options.type = static_cast<HTML::GenericParser::DataStreamType>(type);
    options.scriptMode = scriptsAsTokens ? HTML::GenericParser::SCRIPT_AS_TOKENS : HTML::GenericParser::SCRIPT_AS_TEXT;
    options.maxTokenSize = maxTokenSize;
    options.maxAttributes = maxAttributes;
    return options;
}

Tokens MakeTokens(const py::object& source, std::uint32_t charset, std::uint32_t type, bool scriptsAsTokens,
                  std::uint64_t maxTokenSize, std::uint64_t maxAttributes) {
    const ParseOptions options = MakeOptions(charset, type, scriptsAsTokens, maxTokenSize, maxAttributes);
    std::shared_ptr<const Document> document = Document::Open(source);
    TokenTable table;
    {
        const py::gil_scoped_release released;
        table = ReadTokens(document->GetBytes(), options);
    }
    return Tokens(std::move(document), std::move(table));
}

/// A parser for a document that comes in pieces. It refuses a call during a call, which another
/// thread can make because the GIL is dropped.
class PieceParser {
public:
    PieceParser(std::uint32_t charset, std::uint32_t type, bool scriptsAsTokens, std::uint64_t maxTokenSize,
                std::uint64_t maxAttributes)
        : reader(MakeOptions(charset, type, scriptsAsTokens, maxTokenSize, maxAttributes)) {}

    Tokens Feed(const py::object& source) {
        const std::shared_ptr<const Document> piece = Document::Open(source);
        return Make([&](std::string* bytes) { return reader.Feed(piece->GetBytes(), bytes); });
    }

    Tokens End() {
        return Make([&](std::string* bytes) { return reader.End(bytes); });
    }

private:
    template <typename Read>
    Tokens Make(Read read) {
        if (isBusy)
            throw std::runtime_error("the parser is in use: one thread at a time");
        isBusy = true;
        const AtScopeEnd end([this] { isBusy = false; });  // with the GIL again
        std::string bytes;
        TokenTable table;
        {
            const py::gil_scoped_release released;
            table = read(&bytes);
        }
        return Tokens(std::make_shared<const Document>(std::move(bytes)), std::move(table));
    }

    PieceReader reader;
    bool isBusy = false;  // with the GIL
};

/// The links, and the result of the parse.
py::tuple MakeLinks(const py::object& source, std::uint32_t charset) {
    const std::shared_ptr<const Document> document = Document::Open(source);
    const ParseOptions options = MakeOptions(charset, 0, false, 0, 0);
    Links found;
    {
        const py::gil_scoped_release released;
        found = FindLinks(document->GetBytes(), options);
    }
    py::list links(found.links.size());
    for (std::size_t i = 0; i < found.links.size(); ++i)
        links[i] = ToPython(found.links[i]);
    return py::make_tuple(links, found.result);
}

py::tuple MakeText(const py::object& source, std::uint32_t charset) {
    const std::shared_ptr<const Document> document = Document::Open(source);
    const ParseOptions options = MakeOptions(charset, 0, false, 0, 0);
    PageText page;
    {
        const py::gil_scoped_release released;
        page = ExtractText(document->GetBytes(), options);
    }
    return py::make_tuple(ToPython(page.text), page.result);
}

/// Charset, name, confidence, source and result.
py::tuple Detect(const py::object& source) {
    const std::shared_ptr<const Document> document = Document::Open(source);
    const std::string_view bytes = document->GetBytes();
    kestra_html_detection detection{};
    detection.size = sizeof detection;
    detection.name = {"", 0};
    std::uint32_t result = 0;
    {
        const py::gil_scoped_release released;
        result = kestra_html_detect(bytes.data(), bytes.size(), &detection);
    }
    const std::string name(static_cast<const char*>(detection.name.data), detection.name.size);
    return py::make_tuple(detection.charset, name, detection.confidence, detection.source, result);
}

std::uint32_t Check(const py::object& source, std::uint32_t charset) {
    const std::shared_ptr<const Document> document = Document::Open(source);
    const std::string_view bytes = document->GetBytes();
    const py::gil_scoped_release released;
    return kestra_html_check(bytes.data(), bytes.size(), charset);
}

template <typename Number>
void BindColumn(py::module_& module, const char* name) {
    py::class_<Column<Number>>(module, name, py::buffer_protocol()).def_buffer([](const Column<Number>& column) {
        return column.GetBuffer();
    });
}

}  // namespace

}  // namespace Kestra::Python

PYBIND11_MODULE(_native, module) {
    using namespace Kestra::Python;
    BindColumn<std::uint8_t>(module, "ByteColumn");
    BindColumn<std::uint64_t>(module, "NumberColumn");
    py::class_<Tokens>(module, "Tokens")
        .def("__len__", [](const Tokens& tokens) { return tokens.GetTable().GetSize(); })
        .def_property_readonly("kind", [](const Tokens& tokens) { return tokens.MakeColumn(&TokenTable::kinds); })
        .def_property_readonly("begin", [](const Tokens& tokens) { return tokens.MakeColumn(&TokenTable::begins); })
        .def_property_readonly("end", [](const Tokens& tokens) { return tokens.MakeColumn(&TokenTable::ends); })
        .def_property_readonly("line", [](const Tokens& tokens) { return tokens.MakeColumn(&TokenTable::lines); })
        .def_property_readonly("column", [](const Tokens& tokens) { return tokens.MakeColumn(&TokenTable::columns); })
        .def_property_readonly("charset", [](const Tokens& tokens) { return tokens.GetTable().charset; })
        .def_property_readonly("is_utf16", [](const Tokens& tokens) { return tokens.GetTable().isUtf16; })
        .def_property_readonly("result", [](const Tokens& tokens) { return tokens.GetTable().result; })
        .def("raw", &Tokens::GetRaw)
        .def("read", &Tokens::Read);
    py::class_<PieceParser>(module, "Parser")
        .def(py::init<std::uint32_t, std::uint32_t, bool, std::uint64_t, std::uint64_t>())
        .def("feed", &PieceParser::Feed)
        .def("end", &PieceParser::End);
    BindRewriting(module);
    module.def("tokens", &MakeTokens);
    module.def("links", &MakeLinks);
    module.def("text", &MakeText);
    module.def("detect", &Detect);
    module.def("check", &Check);
    module.def("rewrite", &Rewrite);
    module.def("result_text", &kestra_html_result_text);
    module.def("version", &kestra_html_version);
    module.def("charset_code",
               [](const std::string& name) { return kestra_html_charset_code(name.data(), name.size()); });
    module.def("charset_name", [](std::uint32_t code) {
        kestra_html_string name{"", 0};
        kestra_html_charset_name(code, &name);
        return std::string(static_cast<const char*>(name.data), name.size);
    });
}
