#!/bin/bash
# The manual page and the completions name every subcommand and every option that the help names,
# and the completion for bash completes them.
#
#     check-manual.sh PROGRAM MANUAL-PAGE DATA-FOLDER
set -eu

program=$1
manual=$2
data=$3
bash_completion=$data/bash-completion/completions/kestra-html
failed=0
options=0
fish=$data/fish/vendor_completions.d/kestra-html.fish

complain() {
    echo "check-manual: $*"
    failed=1
}

options_of() {
    "$program" "$1" --help | sed -n 's/^  \(-[^ ]*\).*/\1/p' | tr ',' '\n'
}

# What bash offers for the last of the words.
complete_words() {
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMPREPLY=()
    _kestra_html 2>/dev/null || true
    printf '%s\n' "${COMPREPLY[@]-}"
}

. "$bash_completion"
commands=$("$program" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')
[ "$(echo "$commands" | wc -l)" -ge 5 ] || complain "only these subcommands were found:" $commands
page=$(sed 's/\\-/-/g' "$manual")
for command in $commands; do
    complete_words kestra-html "" | grep -qx -- "$command" || complain "bash does not complete $command"
    for file in zsh/vendor-completions/_kestra-html fish/vendor_completions.d/kestra-html.fish; do
        grep -qw -- "$command" "$data/$file" || complain "$file has no $command"
    done
    section=$(echo "$page" | sed -n "/^\.SH ${command^^}\$/,/^\.SH /p")
    for option in $(options_of "$command"); do
        options=$((options + 1))
        echo "$section" | grep -q -- "fB$option\\\\f" || complain "the manual has no $option of $command"
        complete_words kestra-html "$command" "$option" | grep -qx -- "$option" ||
            complain "bash does not complete $option of $command"
        grep -q -- "'\*$option\[" "$data/zsh/vendor-completions/_kestra-html" ||
            complain "zsh does not complete $option of $command"
        case $option in
            --*) word="-l ${option#--}" ;;
            *) word="-s ${option#-}" ;;
        esac
        grep -q -- "from $command' .*$word\( \|\$\)" "$fish" ||
            complain "fish does not complete $option of $command"
    done
done
[ "$options" -ge 30 ] || complain "only $options options were found"
[ "$(complete_words kestra-html tokens --input "" | tr '\n' ' ')" = "auto 8bit utf16 " ] ||
    complain "bash does not complete the values of --input"
[ "$(complete_words kestra-html nonsense --in)" = "" ] || complain "bash completes options of no subcommand"

# Where the formatter of manual pages is there, it has nothing to say.
if command -v groff >/dev/null; then
    said=$(groff -man -Tutf8 -ww "$manual" 2>&1 >/dev/null)
    [ -z "$said" ] || complain "$said"
fi

exit $failed
