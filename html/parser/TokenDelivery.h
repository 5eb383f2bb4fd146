#pragma once

#include <cstdint>
#include <new>
#include <string>
#include <type_traits>

#include "html/framework/ParserObserver.h"
#include "html/framework/RecordFields.h"
#include "html/output/ParserSelfCheck.h"
#include "html/output/SelfCheckSink.h"
#include "html/parser/RecordConverter.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/InputStream.h"
#include "platform/Results.h"
#include "platform/Uninherited.h"

namespace Kestra::HTML {

/// Passes records to the self-check and to the observer, for whose flavour it converts them. Not
/// installed.
///
/// `Deliver` and `Notify` belong into the loop over text and tags, so their bodies are here.
template <typename C, typename S>
class TokenDelivery {
public:
    /// Binds one observer or none; `char` comes first when both are there.
    void SetObservers(ParserObserver<char, std::string>* narrow, ParserObserver<WideChar, WideString>* wide);
    bool HasObserver() const;
    bool HasNarrowObserver() const;

    /// The charset of the document's 8-bit strings.
    void SetCharset(StringNS::CharSet::Code code) {
        charset = code;
    }
    StringNS::CharSet::Code GetCharset() const {
        return charset;
    }

    void SetSelfCheckMode(std::uint32_t mode);
    std::uint32_t GetSelfCheckMode() const;
    void SetDetectCharsetErrors(bool detect);
    bool GetDetectCharsetErrors() const;

    /// Drops what was kept of the previous document.
    void BeginDocument();
    /// Calls `OnStartParsing`.
    void AnnounceStart();
    /// Adds a byte-order mark to the self-check and calls `OnBOM`.
    void OnBOM(const void* bytes, std::uint64_t size);
    void OnCharset(StringNS::CharSet::Code code);
    /// Adds a piece of the input to the checksum of the self-check.
    void AddToInputCheck(const void* bytes, std::uint64_t size);
    /// The self-check compares what is fed from here on.
    void RestartSelfCheck();
    /// All tokens have been delivered.
    /// @return false when the self-check has found a difference, or lost its copy
    bool EndSelfCheck();
    /// Frees the stream of the self-check.
    void ReleaseSelfCheck();

    /// Hands a record to the self-check, and then to the bound observer.
    template <typename Record>
    void Deliver(Record* record) {
        DeliverToSelfCheck(*record);
        DeliverToObserver(record);
    }

    template <typename Record>
    void DeliverToSelfCheck(const Record& record) {
        if (IsSelfChecking())
            WriteToSelfCheck(&selfCheck, record);
    }

    /// A record for an observer of the other flavour is converted. One that cannot be is lost, and
    /// the parse goes on.
    template <typename Record>
    void DeliverToObserver(Record* record) {
        Notify([this, record](auto* observer) {
            if constexpr (std::is_same_v<decltype(observer), ParserObserver<C, S>*>) {
                CallObserver(observer, record);
            } else {
                typename RecordOfOtherFlavour<Record>::Type converted{};
                if (Convert(*record, &converted))
                    CallObserver(observer, &converted);
            }
        });
    }

    template <typename Callback>
    void Notify(Callback callback) {
        if (charObserver != nullptr)
            callback(charObserver);
        else if (wcharObserver != nullptr)
            callback(wcharObserver);
    }

    VFS::InputStream* GetSelfCheckStream();
    /// Whether a string has been converted for the observer: a charset declared later comes too
    /// late.
    bool HasConverted() const;
    bool HasCharsetErrors() const;
    /// The last failed conversion of the document, 0 for none.
    std::uint32_t GetConversionError() const;
    /// Answers whether a record has been lost because memory was lacking, and resets the answer to
    /// false.
    bool ReportAndResetOutOfMemory();

    /// What is retained for the next record.
    RecordConverter<C, S>& GetConverter() {
        return converter;
    }

private:
    bool IsSelfChecking() const {
        return selfCheckMode == 1 || selfCheckMode == 2;
    }

    /// @return false when the record is lost
    template <typename Record, typename Converted>
    bool Convert(const Record& record, Converted* converted) {
        const std::uint32_t result = TryToConvert(record, converted);
        convertedForObserver = convertedForObserver || converter.HasConverted();
        hasCharsetErrors =
            hasCharsetErrors || converter.HasReplacements() || (detectCharsetErrors && result != RESULT_OK);
        if (result == RESULT_OK)
            return true;
        charsetErrors = result;
        outOfMemory = outOfMemory.Get() || result == RESULT_OUT_OF_MEMORY;
        return false;
    }

    /// @return 0, or why the record is lost
    template <typename Record, typename Converted>
    std::uint32_t TryToConvert(const Record& record, Converted* converted) {
        converter.Begin(charset, detectCharsetErrors);
        try {
            converter.Convert(record, converted);
        } catch (const std::bad_alloc&) {
            return RESULT_OUT_OF_MEMORY;
        }
        return converter.GetResult();
    }

    ParserObserver<char, std::string>* charObserver = nullptr;  // called instead of the wide one when both are bound
    ParserObserver<WideChar, WideString>* wcharObserver = nullptr;
    std::uint32_t selfCheckMode = 0;
    ParserSelfCheck<C, S> selfCheck;
    std::uint32_t inputCrc = 0;
    bool detectCharsetErrors = false;
    bool hasCharsetErrors = false;
    bool convertedForObserver = false;
    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    std::uint32_t charsetErrors = 0;  // the last failed conversion, 0 for none
    Uninherited<bool> outOfMemory;    // a record was lost because memory was lacking; no call has answered so yet
    RecordConverter<C, S> converter;
};

}  // namespace Kestra::HTML
