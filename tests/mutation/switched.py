"""One-line faults, and sources in which each can be switched on by the environment variable
KESTRA_FAULT.

A fault is a line of a source and what replaces it. For a switch both are put into one line, so that
one build has all faults and the lines keep their numbers.
"""

import re
from dataclasses import dataclass

DECLARATION = re.compile(
    r"^(?P<head>(?:const |constexpr |static )*[\w:]+(?:<[^;=]*>)?(?: const)?[ *&]+(?:const )?\w+ = )(?P<value>.+);$"
)
NOT_A_TYPE = re.compile(r"^(return|delete|throw|using|goto|else|case)\b")


@dataclass(frozen=True)
class Fault:
    number: int
    path: str
    line: int  # from 1; the line may have moved since
    before: str
    after: str

    @property
    def key(self):
        return f"{self.path}\t{self.line}\t{self.before}\t{self.after}"


def read_faults(path):
    faults = []
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if line.startswith("#") or not line.strip():
                continue
            number, source, place, before, after = line.rstrip("\n").split("\t")
            faults.append(Fault(int(number), source, int(place), before, after))
    return faults


def find_line(lines, fault):
    """The index of the line that the fault changes: of those with its text the one nearest to its
    place; None when there is none."""
    places = [i for i, line in enumerate(lines) if line.strip() == fault.before]
    return min(places, key=lambda i: abs(i + 1 - fault.line), default=None)


def split_condition(text):
    """The parts of "if (...) rest" and the like: up to the bracket, the condition, the bracket and the rest."""
    match = re.match(r"^(?:\} )?(?:else )?(?:if|while) \(", text)
    if match is None:
        return None
    depth = 1
    for i in range(match.end(), len(text)):
        depth += {"(": 1, ")": -1}.get(text[i], 0)
        if depth == 0:
            return text[: match.end()], text[match.end() : i], text[i:]
    return None


def switch(before, after, number):
    """Both lines in one, chosen when the program runs; None for a line that cannot be switched."""
    is_on = f"KESTRA_FAULT({number})"
    if before.endswith(" {") and not before.startswith(("if", "else if", "} else if", "while")):
        return None
    old, new = split_condition(before), split_condition(after)
    if old is not None and new is not None:
        if re.search(r"[^=!<>]=[^=]", old[1]) or ";" in old[1]:
            return None  # it declares or assigns
        if old[2] != new[2]:
            return None
        return f"{old[0]}{is_on} ? static_cast<bool>({new[1]}) : static_cast<bool>({old[1]}){old[2]}"
    if not before.endswith(";") or not after.endswith(";"):
        return None
    if before.startswith(("case ", "default:", "using ", "break", "continue", "else ", "static_assert", "#")):
        return None
    old, new = DECLARATION.match(before), DECLARATION.match(after)
    if old is not None and NOT_A_TYPE.match(before) is None:
        if new is None or new["head"] != old["head"] or "constexpr" in old["head"] or "static" in old["head"]:
            return None
        return f"{old['head']}{is_on} ? ({new['value']}) : ({old['value']});"
    return f"{{ if ({is_on}) {{ {after} }} else {{ {before} }} }}"


PROLOGUE = """#ifndef KESTRA_FAULT
#include <cstdlib>
namespace Kestra {
inline const int chosenFault = [] {
    const char* const number = std::getenv("KESTRA_FAULT");
    return number == nullptr ? 0 : std::atoi(number);
}();
}
#define KESTRA_FAULT(number) (::Kestra::chosenFault == (number))
#endif
#line 1
"""


def switch_source(text, faults):
    """The source with a switch for each fault; the faults that were found in it. Of two on one line
    the second waits for another build."""
    lines = text.split("\n")
    taken = {}
    for fault in faults:
        index = find_line(lines, fault)
        if index is None or index in taken:
            continue
        line = switch(fault.before, fault.after, fault.number)
        if line is not None:
            taken[index] = (fault, line)
    for index, (fault, line) in taken.items():
        indentation = lines[index][: len(lines[index]) - len(lines[index].lstrip())]
        lines[index] = indentation + line
    if not taken:
        return text, []
    return PROLOGUE + "\n".join(lines), [fault for fault, _ in taken.values()]
