# Makes the page of `kestra-html view`, as a C++ source, from the page, the style sheet and the
# script in the folder FOLDER, and writes it to OUTPUT.
#
# The page names the hashes of its style sheet and of its script in the form of Content Security
# Policy, SHA-256 in base 64, so that a browser runs nothing else in it.
cmake_minimum_required(VERSION 3.25)

function(to_base64 hexadecimal result)
    set(alphabet "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")
    set(text "")
    # A hash has two bytes more than ten times three.
    string(APPEND hexadecimal "00")
    foreach(triple RANGE 10)
        math(EXPR begin "${triple} * 6")
        string(SUBSTRING ${hexadecimal} ${begin} 6 digits)
        foreach(shift 18 12 6 0)
            math(EXPR index "(0x${digits} >> ${shift}) & 63")
            string(SUBSTRING ${alphabet} ${index} 1 letter)
            string(APPEND text ${letter})
        endforeach()
    endforeach()
    string(REGEX REPLACE "A$" "=" text ${text})
    set(${result} ${text} PARENT_SCOPE)
endfunction()

# A function that returns the text.
function(append_function name text)
    string(HEX "${text}" bytes)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND source "std::string_view ${name}() {\n    static constexpr char BYTES[] = {${bytes}};\n"
        "    return {BYTES, sizeof(BYTES)};\n}\n\n")
    set(source "${source}" PARENT_SCOPE)
endfunction()

file(READ ${FOLDER}/page.html page)
file(READ ${FOLDER}/page.css style)
file(READ ${FOLDER}/page.js script)
string(SHA256 styleHash "${style}")
string(SHA256 scriptHash "${script}")
to_base64(${styleHash} styleHash)
to_base64(${scriptHash} scriptHash)
string(REPLACE "@STYLE_HASH@" "${styleHash}" page "${page}")
string(REPLACE "@SCRIPT_HASH@" "${scriptHash}" page "${page}")
string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@SCRIPT@" "${script}" page "${page}")

set(mark "@TOKENS@\n")
string(FIND "${page}" "${mark}" at)
string(LENGTH "${mark}" markLength)
math(EXPR after "${at} + ${markLength}")
string(SUBSTRING "${page}" 0 ${at} start)
string(SUBSTRING "${page}" ${after} -1 end)

set(source "// Made by MakePage.cmake.\n#include \"tools/kestra-html/view/ViewPage.h\"\n\nnamespace Kestra::Tool {\n\n")
append_function(GetViewPageStart "${start}")
append_function(GetViewPageEnd "${end}")
string(APPEND source "}  // namespace Kestra::Tool\n")
file(WRITE ${OUTPUT} "${source}")
