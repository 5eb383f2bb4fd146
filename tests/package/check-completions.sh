#!/bin/bash
# A shell that has read the completions offers what the help names: every subcommand, every option
# of each, and the words to choose from.
#
#     check-completions.sh zsh|fish PROGRAM DATA-FOLDER FOLDER
#
# FOLDER is made anew, as the home of the shell. Ends with 77 where the shell is not installed.
set -eu

shell=$1
program=$2
data=$3
folder=$4
failed=0
options=0

command -v "$shell" >/dev/null || { echo "check-completions: there is no $shell"; exit 77; }
rm -rf "$folder"
mkdir -p "$folder"
export HOME=$folder XDG_CONFIG_HOME=$folder XDG_DATA_HOME=$folder TERM=xterm

# What fish offers at the end of a line.
complete_with_fish() {
    fish --no-config -c 'source $argv[1]; complete -C $argv[2]' \
        "$data/fish/vendor_completions.d/kestra-html.fish" "$1" | cut -f 1
}

# The shell completes only lines that are edited on a terminal. This one puts the line there by
# itself, completes it as the tabulator would, writes what is offered to a file, and ends.
cat >"$folder/offer" <<'END'
fpath=($COMPLETIONS $fpath)
autoload -Uz compinit
compinit -u -D
compadd() {
    local -a kestra_offered
    if (( ! ${argv[(I)-[AOD]]} )); then
        builtin compadd -O kestra_offered "$@"
        print -rl -- $kestra_offered >>$OFFERED
    fi
    builtin compadd "$@"
}
zle -C offer complete-word _main_complete
zle-line-init() { BUFFER=$LINE; CURSOR=$#BUFFER; zle offer; exit }
zle -N zle-line-init
END

complete_with_zsh() {
    export LINE=$1 OFFERED=$folder/offered COMPLETIONS=$data/zsh/vendor-completions
    : >"$OFFERED"
    echo "source $folder/offer" | timeout 60 script -qec "zsh -f -i" /dev/null >"$folder/said" 2>&1 || true
    grep . "$OFFERED" || { cat -v "$folder/said" >&2; true; }
}

# The words offered at the end of a line are those of the standard input, whatever their order.
expect() {
    LC_ALL=C sort -u >"$folder/expected"
    "complete_with_$shell" "$1" | LC_ALL=C sort -u >"$folder/completed"
    diff "$folder/expected" "$folder/completed" || {
        echo "check-completions: $shell after \"$1\" (<: missing, >: unexpected)"
        failed=1
    }
}

options_of() {
    "$program" "$@" --help | sed -n '/^Options:/,/^$/s/^  \(-[^ ]*\).*/\1/p' | tr ',' '\n'
}

commands=$("$program" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
{
    echo "$commands"
    [ "$shell" = fish ] || options_of  # it offers options after a dash only
} | expect "kestra-html "
options_of | grep '^--' | expect "kestra-html --"
for command in $commands; do
    options_of "$command" >"$folder/options"
    options=$((options + $(wc -l <"$folder/options")))
    grep '^--' "$folder/options" | expect "kestra-html $command --"
    expect "kestra-html $command -" <"$folder/options"
done
[ "$options" -ge 30 ] || { echo "check-completions: only $options options were found"; failed=1; }
printf '%s\n' auto 8bit utf16 | expect "kestra-html tokens --input "
printf '%s\n' off crc copy | expect "kestra-html tokens --self-check "

exit $failed
