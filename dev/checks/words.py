"""Length of files, and words that the project does not use about itself."""
import re

MOST_LINES = 400

# Code and documents speak for themselves and refer to no other paper.
UNWANTED = re.compile(r"\b[Pp]arts? [0-9]+\.[0-9]|\bthe s[p]ec\b|\bs[p]ec\.md\b|[Ss]pecification [Pp]art")


def check_words(_path, text):
    for number, line in enumerate(text.splitlines(), 1):
        match = UNWANTED.search(line)
        if match:
            yield number, f'"{match.group(0)}": say what is meant instead'


def check_length(_path, text):
    lines = text.count("\n")
    if lines > MOST_LINES:
        yield lines, f"{lines} lines, and {MOST_LINES} are the most: these are two ideas"
