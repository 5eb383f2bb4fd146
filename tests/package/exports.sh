# To be sourced: what a shared library may and must export, the same on every platform.

failed=0

complain() {
    echo "$(basename "$0"): $*"
    failed=1
}

# Prints the public names of installed headers, one a line: "template NAME", "class NAME", "object
# NAME" or "function NAME".
#
#     public_names HEADER-FOLDER
public_names() {
    find "$1" -name '*.h' -exec awk '
        match($0, /^(class|struct) KESTRA_HTML_API [A-Za-z0-9_]+/) {
            name = substr($0, RSTART, RLENGTH)
            sub(/.* /, "", name)
            print (previous ~ /^ *template </ ? "template " : "class ") name
        }
        match($0, /^extern KESTRA_HTML_API .*[ *&][A-Za-z0-9_]+(\[[0-9]*\])?;/) {
            name = $0
            sub(/(\[[0-9]*\])?;.*/, "", name)
            sub(/.*[ *&]/, "", name)
            print "object " name
        }
        match($0, /^KESTRA_HTML_CALL .*kestra_html_[a-z0-9_]+\(/) {
            name = substr($0, RSTART, RLENGTH - 1)
            sub(/.*[ *]/, "", name)
            print "function " name
        }
        { previous = $0 }' {} +
}

# Reads exported symbols, each a line of one letter and the demangled name, and says which of them
# should not be exported and which public names are not. An instantiation of a standard template is
# a stranger, too.
#
#     compare_exports PUBLIC-NAMES WIDE-CHARACTER-TYPE
compare_exports() {
    awk -v public="$1" -v wideType="$2" '
        BEGIN {
            count = split(public, lines, "\n")
            for (i = 1; i <= count; ++i) {
                split(lines[i], words, " ")
                kind[words[2]] = words[1]
            }
            # Nothing but fields: all that their users need is in the header.
            fieldsOnly["Attribute"] = fieldsOnly["EntityToken"] = 1
        }
        {
            name = substr($0, 3)
            ++symbols
            sub(/^(vtable|VTT|typeinfo|typeinfo name|guard variable|(non-)?virtual thunk|construction vtable|covariant return thunk) (for|to) /, "", name)
        }
        name ~ /^Kestra::(HTML|Base|StringNS|VFS)::/ {
            owner = name
            sub(/^Kestra::[A-Za-z]+::/, "", owner)
            match(owner, /^[A-Za-z0-9_]+/)
            owner = substr(owner, 1, RLENGTH)
            if (!(owner in kind))
                print "exported without being public: " $0
            if (name ~ /\[clone/)
                print "a part of a function is exported: " $0
            if (name ~ ("::" owner "<char, std::"))
                ++narrow[owner]
            else if (name ~ ("::" owner "<" wideType ", std::"))
                ++wide[owner]
            else
                ++plain[owner]
            next
        }
        kind[name] == "function" {
            ++plain[name]
            next
        }
        { print "a stranger is exported: " $0 }
        END {
            for (owner in kind) {
                if (owner in fieldsOnly)
                    continue
                if (kind[owner] == "template" ? !narrow[owner] : !plain[owner])
                    print "not exported: " owner
                if (kind[owner] == "template" && !wide[owner])
                    print "not exported in the wide flavour: " owner
            }
            if (symbols < 100)
                print "only " symbols + 0 " symbols were found"
        }'
}

# Complains about what is wrong with the exports, and about public names that a user program does
# not use: linking it proves more than a symbol table can.
#
#     check_exports HEADER-FOLDER USER-SOURCES WIDE-CHARACTER-TYPE <SYMBOLS
check_exports() {
    public=$(public_names "$1")
    [ "$(echo "$public" | wc -l)" -gt 30 ] || complain "only these public names were found in $1:" $public
    wrong=$(compare_exports "$public" "$3")
    [ -z "$wrong" ] || complain "$wrong"
    for name in $(echo "$public" | sed 's/.* //'); do
        grep -qw "$name" "$2"/*.cpp "$2"/*.c || complain "the user program does not use $name"
    done
}
