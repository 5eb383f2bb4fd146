#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/kestra-html/Replacement.h"

namespace Kestra::Tool {

/// One edit that the command line asks for, to be made in every element that it names.
struct RewriteEdit {
    enum class Kind {
        SET,             ///< gives an attribute a value, or adds it
        REPLACE,         ///< replaces what matches in the value of an attribute
        REMOVE,          ///< removes an attribute
        REMOVE_ELEMENT,  ///< removes the element with its content
    };

    Kind kind = Kind::SET;
    std::string selector;                            ///< of the elements
    std::string attribute;                           ///< not for REMOVE_ELEMENT
    std::string value;                               ///< for SET, in UTF-8
    std::shared_ptr<const Replacement> replacement;  ///< for REPLACE
};

/// The options of a command line that more than one value or an optional value belongs to, and the
/// arguments that are left.
struct RewriteArguments {
    std::vector<RewriteEdit> edits;  ///< in their order
    bool inPlace = false;
    std::string backupSuffix;
    std::vector<std::string> rest;
};

/// Takes `--set`, `--replace`, `--remove`, `--remove-element` and `--in-place` out of arguments, up
/// to a "--". They are read here because the parser of options would take a value like "[0-9]" for
/// a list, and the order of the edits counts.
/// @throws CLI::ParseError  for what is wrong with them
RewriteArguments TakeRewriteArguments(const std::vector<std::string>& arguments);

/// A selector for the elements of a name, of any characters; "*" is any element.
std::string ToSelector(const std::string& elementName);

}  // namespace Kestra::Tool
