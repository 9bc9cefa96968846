"""The files of the project, and C++ text without what only looks like code."""
import os
import re
import subprocess

TOP_FOLDERS = ("app", "base", "core", "models", "platform", "ports", "tests", "bench")

_LITERALS = re.compile(
    r"""
    //(?:\\\n|[^\n])*                                        # a comment to the end of the line
  | /\*.*?\*/                                                # a comment
  | (?:u8|[uUL])?R"(?P<mark>[^()\s\\]{0,16})\(.*?\)(?P=mark)"  # a raw string
  | (?:u8|[uUL])?"(?:\\.|[^"\\\n])*"                         # a string
  | (?<![0-9a-zA-Z_])(?:u8|[uUL])?'(?:\\.|[^'\\\n])+'        # a character, but not the mark in 1'000
    """,
    re.VERBOSE | re.DOTALL,
)
_DIRECTIVE = re.compile(r"^[ \t]*#(?:\\\n|[^\n])*", re.MULTILINE)


def listed(*patterns):
    """Tracked files and new ones that git does not ignore, by git's patterns."""
    output = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard", "--", *patterns],
        capture_output=True, text=True, check=True).stdout
    return sorted({path for path in output.split("\0") if path and os.path.isfile(path)})


def cpp_files():
    return [path for path in listed("*.cpp", "*.h") if path.split("/")[0] in TOP_FOLDERS]


def read(path):
    with open(path, encoding="utf-8", errors="replace") as file:
        return file.read()


def is_third_party_quote(included):
    """Whether `#include "…"` names a library's header rather than one of ours."""
    return included.split("/")[0] not in TOP_FOLDERS


def code_only(text):
    """The text with comments, literals and directives blanked; every line keeps its number."""
    def blank(match):
        found = match.group(0)
        kept = '""' if found.rstrip("'\"") != found and not found.startswith("/") else ""
        return kept + "\n" * found.count("\n")

    return _DIRECTIVE.sub(lambda match: "\n" * match.group(0).count("\n"), _LITERALS.sub(blank, text))
