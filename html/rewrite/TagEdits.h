#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "html/framework/TokenPlace.h"
#include "html/rewrite/DocumentText.h"

/// @file
/// The attributes of one tag, and the edits of a host. Not installed.

namespace Kestra::HTML {

/// Where the parts of a tag lie in its bytes.
struct TagLayout {
    std::size_t nameBegin = 0;
    std::size_t nameEnd = 0;
    std::vector<AttributePlace> attributes;  ///< bare words too; their offsets are those of the document
    std::uint64_t offset = 0;                ///< of the tag in the document
};

/// Edits attributes in the bytes of a tag. Everything that is not edited stays as it is.
///
/// Names and values are UTF-8. After an exception the edits are as they were before the call.
///
/// A tag with few attributes is searched from its first one on, without an allocation. One with
/// many gets an index when it is searched often, so that any number of edits takes n log n time.
class TagEdits {
public:
    TagEdits();
    TagEdits(const TagEdits&) = delete;
    TagEdits& operator=(const TagEdits&) = delete;

    /// Takes a tag without edits.
    /// @param tagBytes  borrowed until `Forget`
    /// @param charset   of the tag, borrowed too
    void Load(std::string_view tagBytes, const TagLayout& layout, DocumentText* charset);
    void Forget();

    bool IsLoaded() const {
        return text != nullptr;
    }
    bool IsChanged() const {
        return changed;
    }

    bool Has(std::string_view name);
    /// @return a RewriteResult, like the rest
    std::uint32_t Get(std::string_view name, std::string* value);
    std::uint32_t Set(std::string_view name, std::string_view value);
    std::uint32_t Add(std::string_view name, std::string_view value);
    std::uint32_t Rename(std::string_view name, std::string_view newName);
    std::uint32_t Remove(std::string_view name);

    /// Appends the bytes of the tag with its edits.
    void Write(std::string* bytes) const;

private:
    static constexpr std::size_t NONE = static_cast<std::size_t>(-1);

    struct Part {
        std::size_t begin = 0;  // all offsets are in the tag's bytes
        std::size_t nameBegin = 0;
        std::size_t nameEnd = 0;
        std::size_t valueBegin = 0;
        std::size_t valueEnd = 0;
        std::size_t end = 0;
        std::size_t before = NONE;  // the nearest parts that are not removed
        std::size_t after = NONE;
        bool isAdded = false;  // has no bytes in the tag
        bool isRemoved = false;
        bool hasNewName = false;
        bool hasNewValue = false;
        bool hasOwnName = false;
        std::string_view nameInTag;
        std::string ownName;  // where it is not in the tag as UTF-8
        std::string value;    // the new one

        std::string_view GetName() const {
            return hasOwnName ? ownName : nameInTag;
        }

        bool IsAsItWas() const {
            return !isRemoved && !hasNewName && !hasNewValue;
        }
        bool HasOldValue() const {
            return valueBegin != nameEnd;
        }
        bool HasValue() const {
            return hasNewValue || HasOldValue();
        }
    };

    /// Orders parts by their names without case, and parts of one name by their places.
    class ByName {
    public:
        using is_transparent = void;

        explicit ByName(const std::vector<Part>* ofParts) : parts(ofParts) {}

        bool operator()(std::size_t left, std::size_t right) const;
        bool operator()(std::size_t left, std::string_view name) const;

    private:
        const std::vector<Part>* parts;
    };

    /// What has been written, as far as it matters for what can follow it.
    struct Written {
        std::string* bytes;
        bool endsInQuote = false;
        bool endsInBareValue = false;
        bool endsInMissingValue = false;  // "b="
        bool isAfterRemoved = false;      // an attribute that was here is gone
    };

    std::size_t Find(std::string_view name);
    std::size_t FindByName(std::string_view name);
    void AppendPart(std::size_t index);
    bool CanHaveName(std::string_view name);
    char GetQuote(const Part& part) const;
    char ChooseQuote(const Part& part) const;
    bool NeedsSpace(const Written& written, std::size_t next) const;
    void SeparateTail(std::size_t tail, Written* written) const;
    void CompleteValue(Written* written) const;
    void WritePart(const Part& part, Written* written) const;
    static void EndPart(const Part& part, char quote, Written* written);
    void WriteNewValue(const Part& part, std::string* bytes) const;
    void WriteAscii(std::string_view ascii, std::string* bytes) const;

    std::string_view tag;
    DocumentText* text = nullptr;
    std::size_t nameBegin = 0;
    std::size_t nameEnd = 0;
    bool canChange = false;  // has a name, and its ">"
    bool isInstruction = false;
    bool isEndTag = false;
    bool changed = false;
    std::vector<Part> parts;
    std::size_t lastPart = NONE;  // that is not removed
    std::size_t searches = 0;
    std::set<std::size_t, ByName> byName;  // of the first parts, those that have a name and are not removed
    std::size_t countByName = 0;           // how many are the first parts
    std::string nameBytes;                 // of the name that is looked at
    std::string lastName;                  // in ASCII, that every tag may have
};

}  // namespace Kestra::HTML
