/// @file
/// Feeds a document to the library in every way and aborts when something is not as the reference
/// tokenizer says: the tokens, results, line and column, by stream and by buffers, in one piece and
/// in several; and what the tokens give when they are written back, in both flavours. In the wide
/// flavour, for which there is no reference, the tokens of the cut document are compared with those
/// of the whole one. All of it with scripts as tokens and with scripts as text.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/Expect.h"
#include "fuzz/FuzzedDocument.h"
#include "tests/reference/CopyCheck.h"
#include "tests/reference/TokenCheck.h"
#include "tests/support/DocumentRun.h"
#include "tests/support/Flavours.h"

namespace Kestra::Fuzz {

namespace {

/// The cuts of the fuzzed document, for as long as it has its length.
auto CutsOf(const FuzzedDocument& document) {
    return [&document](std::size_t) { return document.cuts; };
}

void CheckTokens(const FuzzedDocument& document, bool scriptsAsText) {
    for (const Test::Fed fed : {Test::Fed::STREAM, Test::Fed::BUFFER}) {
        Test::Feeding feeding;
        feeding.charset = document.charset;
        feeding.scriptsAsText = scriptsAsText;
        feeding.fed = fed;
        Expect(Test::Difference(document.bytes, feeding));
        feeding.cutsFor = CutsOf(document);
        Expect(Test::Difference(document.bytes, feeding));
    }
}

void CheckCopy(const FuzzedDocument& document, bool scriptsAsText) {
    Test::Reading reading;
    reading.charset = document.charset;
    reading.scriptsAsText = scriptsAsText;
    reading.cutsFor = CutsOf(document);
    Expect(Test::Fault(document.bytes, reading));
}

void CheckWideCopy(const std::string& latin1, const FuzzedDocument& document, bool scriptsAsText) {
    Test::Reading reading;
    reading.wide = true;
    reading.scriptsAsText = scriptsAsText;
    reading.cutsFor = CutsOf(document);
    Expect(Test::Fault(latin1, reading));
}

/// All that a cut must not change.
std::string Describe(const Test::DocumentRun& run) {
    return run.Lines() + std::to_string(run.parseResult) + " " + std::to_string(run.endResult) + " " +
           std::to_string(run.line) + " " + std::to_string(run.column) + "\n";
}

void CheckWideTokens(const std::string& latin1, const FuzzedDocument& document, bool scriptsAsText) {
    Test::ReferenceSettings reference;
    reference.scriptsAsText = scriptsAsText;
    for (const Test::ReferenceStretch& stretch : Test::ParseByReference(latin1, reference).stretches) {
        if (Test::IsException(stretch, document.cuts))
            return;
    }
    const auto text = Test::To<WideString>(latin1);
    for (const Test::Feed feed : {Test::Feed::STREAM, Test::Feed::BUFFER}) {
        Test::DocumentSettings settings;
        settings.observed = Test::Observed::WIDE;
        settings.feed = feed;
        settings.scriptMode =
            scriptsAsText ? HTML::GenericParser::SCRIPT_AS_TEXT : HTML::GenericParser::SCRIPT_AS_TOKENS;
        const std::string whole = Describe(Test::ParseDocument(text, {}, settings));
        const std::string cut = Describe(Test::ParseDocument(text, document.cuts, settings));
        if (whole != cut)
            Expect(std::string("wide") + (scriptsAsText ? ", scripts as text" : "") + ", cut at " +
                   Test::Describe(document.cuts) + ", " + Trace::Escape(latin1) + "\nwhole:\n" + whole + "cut:\n" +
                   cut);
    }
}

}  // namespace

}  // namespace Kestra::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Kestra::Fuzz::FuzzedDocument document = Kestra::Fuzz::ReadFuzzedDocument(data, size);
    const std::string latin1 = Kestra::Test::WithoutWideSpaces(document.bytes);
    for (const bool scriptsAsText : {false, true}) {
        Kestra::Fuzz::CheckTokens(document, scriptsAsText);
        Kestra::Fuzz::CheckCopy(document, scriptsAsText);
        Kestra::Fuzz::CheckWideCopy(latin1, document, scriptsAsText);
        Kestra::Fuzz::CheckWideTokens(latin1, document, scriptsAsText);
    }
    return 0;
}
