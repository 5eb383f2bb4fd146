#include "python/native/Rewriting.h"

#include <pybind11/stl.h>

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "html/output/ParserObserverOutputHandler.h"
#include "html/rewrite/Rewriter.h"
#include "python/native/Document.h"

namespace Kestra::Python {

namespace py = pybind11;

namespace {

using HTML::RewriteContent;
using HTML::RewriterElement;
using HTML::RewriterToken;

/// Gathers the output.
class Output final : public HTML::ParserObserverOutputHandler {
public:
    void Write(const void* data, std::uint64_t byteCount, bool) override {
        bytes.append(static_cast<const char*>(data), static_cast<std::size_t>(byteCount));
    }

    std::string bytes;
};

/// An edit of an element. @return a result
using Edit = std::function<std::uint32_t(RewriterElement* element)>;

using Insert = std::uint32_t (RewriterElement::*)(std::string_view content, RewriteContent kind);

Insert FindInsert(std::string_view action) {
    if (action == "before")
        return &RewriterElement::InsertBefore;
    if (action == "after")
        return &RewriterElement::InsertAfter;
    if (action == "prepend")
        return &RewriterElement::Prepend;
    if (action == "append")
        return &RewriterElement::Append;
    if (action == "set_content")
        return &RewriterElement::SetContent;
    if (action == "replace")
        return &RewriterElement::Replace;
    return nullptr;
}

RewriteContent GetContent(bool isMarkup) {
    return isMarkup ? HTML::CONTENT_MARKUP : HTML::CONTENT_TEXT;
}

std::string GetText(const py::tuple& edit, std::size_t index) {
    if (index >= edit.size())
        throw py::type_error("an edit lacks an argument");
    return edit[index].cast<std::string>();
}

/// Reads an edit: a selector, an action, its arguments.
Edit ReadEdit(const py::tuple& edit) {
    const std::string action = GetText(edit, 1);
    if (action == "remove")
        return [](RewriterElement* element) { return element->Remove(); };
    if (action == "unwrap")
        return [](RewriterElement* element) { return element->Unwrap(); };
    if (action == "set_attribute") {
        return [name = GetText(edit, 2), value = GetText(edit, 3)](RewriterElement* element) {
            return element->GetStartTag().SetAttribute(name, std::string_view(value));
        };
    }
    if (action == "remove_attribute") {
        return [name = GetText(edit, 2)](RewriterElement* element) {
            const std::uint32_t result = element->GetStartTag().RemoveAttribute(name);
            return result == HTML::REWRITE_NO_ATTRIBUTE ? std::uint32_t{HTML::REWRITE_OK} : result;
        };
    }
    if (const Insert insert = FindInsert(action); insert != nullptr) {
        const bool isMarkup = edit.size() > 3 && edit[3].cast<bool>();
        return [insert, content = GetText(edit, 2), kind = GetContent(isMarkup)](RewriterElement* element) {
            return (element->*insert)(content, kind);
        };
    }
    throw py::value_error("there is no edit \"" + action + "\"");
}

/// Makes the edits of one call.
class Rewriting {
public:
    explicit Rewriting(const py::list& edits) : rewriter(&output) {
        rewriter.SetScriptMode(HTML::GenericParser::SCRIPT_AS_TEXT);
        for (const py::handle item : edits)
            Register(py::reinterpret_borrow<py::tuple>(item));
    }

    bool HasCallables() const {
        return !callables.empty();
    }

    void Run(std::string_view bytes, std::uint32_t charset) {
        Note(rewriter.StartParse(charset, HTML::GenericParser::DATA_STREAM_AUTO));
        BytesStream stream(bytes);
        Note(rewriter.ParseStream(&stream, false));
        Note(rewriter.EndParse());
    }

    /// Passes on what a callable raised.
    void Rethrow() {
        if (raised != nullptr)
            std::rethrow_exception(raised);
    }

    const std::string& GetOutput() const {
        return output.bytes;
    }

    std::uint32_t GetResult() const {
        return firstFailure;
    }

private:
    void Register(const py::tuple& edit) {
        const std::string selector = GetText(edit, 0);
        std::string message;
        std::uint32_t result = 0;
        if (edit.size() == 2 && PyCallable_Check(py::object(edit[1]).ptr()) != 0) {
            callables.push_back(edit[1]);
            result = rewriter.OnElement(
                selector, [this, callable = callables.back()](RewriterElement element) { Call(callable, element); },
                &message);
        } else {
            const Edit made = ReadEdit(edit);
            result = rewriter.OnElement(
                selector, [this, made](RewriterElement element) { Note(made(&element)); }, &message);
        }
        if (result != 0)
            throw py::value_error("selector \"" + selector + "\": " + message);
    }

    void Call(const py::object& callable, const RewriterElement& element) {
        if (raised != nullptr)
            return;
        try {
            callable(element);
        } catch (...) {
            raised = std::current_exception();
            rewriter.Stop();
        }
    }

    void Note(std::uint32_t result) {
        if (firstFailure == 0)
            firstFailure = result;
    }

    Output output;
    std::vector<py::object> callables;
    HTML::Rewriter rewriter;
    std::uint32_t firstFailure = 0;
    std::exception_ptr raised;
};

/// A method of elements that inserts a text.
auto MakeInsert(Insert insert) {
    return [insert](RewriterElement& element, const std::string& content, bool isMarkup) {
        return (element.*insert)(content, GetContent(isMarkup));
    };
}

}  // namespace

py::tuple Rewrite(const py::object& source, const py::list& edits, std::uint32_t charset) {
    const std::shared_ptr<const Document> document = Document::Open(source);
    Rewriting rewriting(edits);
    if (rewriting.HasCallables()) {
        rewriting.Run(document->GetBytes(), charset);
    } else {
        const py::gil_scoped_release released;
        rewriting.Run(document->GetBytes(), charset);
    }
    rewriting.Rethrow();
    return py::make_tuple(py::bytes(rewriting.GetOutput()), rewriting.GetResult());
}

void BindRewriting(py::module_& module) {
    py::class_<RewriterElement>(module, "Element")
        .def_property_readonly("is_over", &RewriterElement::IsOver)
        .def_property_readonly("name", &RewriterElement::GetName)
        .def_property_readonly("has_content", &RewriterElement::HasContent)
        .def("get_attribute",
             [](const RewriterElement& element, const std::string& name) -> py::tuple {
                 std::string value;
                 const std::uint32_t result = element.GetStartTag().GetAttribute(name, &value);
                 return py::make_tuple(result, py::str(value));
             })
        .def("set_attribute",
             [](RewriterElement& element, const std::string& name, const std::string& value) {
                 return element.GetStartTag().SetAttribute(name, std::string_view(value));
             })
        .def("remove_attribute", [](RewriterElement& element,
                                    const std::string& name) { return element.GetStartTag().RemoveAttribute(name); })
        .def("before", MakeInsert(FindInsert("before")))
        .def("after", MakeInsert(FindInsert("after")))
        .def("prepend", MakeInsert(FindInsert("prepend")))
        .def("append", MakeInsert(FindInsert("append")))
        .def("set_content", MakeInsert(FindInsert("set_content")))
        .def("replace", MakeInsert(FindInsert("replace")))
        .def("remove", &RewriterElement::Remove)
        .def("unwrap", &RewriterElement::Unwrap);
}

}  // namespace Kestra::Python
