"""The checks that run a compiler: clang-format, every header alone, clang-tidy.

What has passed is remembered by a hash of everything that it depends on, under build/lint or VOCALITH_LINT_CACHE.
"""
import concurrent.futures
import functools
import hashlib
import json
import os
import re
import shlex
import subprocess

import layout
import sources

CACHE = os.environ.get("VOCALITH_LINT_CACHE") or os.path.join("build", "lint")
COMPILE_COMMANDS = os.path.join("build", "release", "compile_commands.json")
JOBS = int(os.environ.get("VOCALITH_JOBS") or os.cpu_count() or 2)

# gcc's, that clang does not know; and launchers
DROPPED_FLAGS = {"-foptimize-sibling-calls", "-Wno-restrict", "-c"}
# gcc is the compiler of the project and says what it has to say; clang is here for clang-tidy's own checks
CLANG_FLAGS = ["-Wno-unknown-warning-option", "-Wno-ignored-optimization-argument", "-Wno-everything"]


def run(command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=False, **options)


def in_parallel(work, items):
    with concurrent.futures.ThreadPoolExecutor(JOBS) as pool:
        yield from pool.map(work, items)


@functools.cache
def version(tool):
    return run([tool, "--version"]).stdout


@functools.cache
def own_includes(path):
    found = set()
    for line in sources.read(path).splitlines():
        match = layout.INCLUDE.match(line)
        if match and match.group(1) and os.path.isfile(match.group(1)):
            found.add(match.group(1))
    return frozenset(found)


def dependencies(path):
    """The file and every file of ours that it includes, directly or not."""
    found, left = {path}, [path]
    while left:
        for included in own_includes(left.pop()) - found:
            found.add(included)
            left.append(included)
    return found


class Passed:
    """Remembers what has passed a check, so that only what has changed is checked again."""

    def __init__(self, name, *circumstances):
        self.folder = os.path.join(CACHE, name)
        self.circumstances = "\0".join(circumstances)
        os.makedirs(self.folder, exist_ok=True)

    def stamp(self, path, *more):
        digest = hashlib.sha256(self.circumstances.encode())
        for text in more:
            digest.update(text.encode() + b"\0")
        for dependency in sorted(dependencies(path)):
            digest.update(dependency.encode() + b"\0" + sources.read(dependency).encode() + b"\0")
        return os.path.join(self.folder, digest.hexdigest())

    @staticmethod
    def known(stamp):
        if not os.path.exists(stamp):
            return False
        os.utime(stamp)
        return True

    @staticmethod
    def remember(stamp):
        with open(stamp, "w", encoding="utf-8"):
            pass

    def forget_old(self, most=4000):
        """Keeps the folder small: the stamps used last stay."""
        stamps = sorted(os.scandir(self.folder), key=lambda entry: entry.stat().st_mtime)
        for entry in stamps[:-most]:
            os.unlink(entry.path)


@functools.cache
def compile_flags():
    """For each source file, the compiler's flags without the launcher, the source and the output."""
    with open(COMPILE_COMMANDS, encoding="utf-8") as file:
        entries = json.load(file)
    found = {}
    for entry in entries:
        words = shlex.split(entry["command"])
        words = words[next(i for i, word in enumerate(words) if re.search(r"(\+\+|g?cc|clang)[-\d.]*$", word)
                           and "ccache" not in word) + 1:]
        if "-o" in words:
            del words[words.index("-o"):words.index("-o") + 2]
        path = os.path.relpath(entry["file"], os.getcwd())
        found[path] = [word for word in words if word != "-c" and word != entry["file"]]
    return found


def flags_for_header(path):
    """The flags of the source file that is nearest in the tree."""
    def nearness(source):
        shared = len(os.path.commonprefix([path.split("/")[:-1], source.split("/")[:-1]]))
        return shared, source.rsplit(".", 1)[0] == path.rsplit(".", 1)[0], source.startswith("tests/")

    return compile_flags()[max(compile_flags(), key=nearness)]


def relative(flags):
    return " ".join(flags).replace(os.getcwd(), "")


def check_format(paths):
    for start in range(0, len(paths), 100):
        result = run(["clang-format", "--dry-run", "-Werror", *paths[start:start + 100]])
        wrong = re.findall(r"^(\S+?):(\d+):\d+: error:", result.stderr, re.MULTILINE)
        first = {path: line for path, line in reversed(wrong)}
        for path in sorted(first):
            yield f"{path}:{first[path]}: not formatted: clang-format -i {path}"
        if result.returncode and not first:
            yield result.stderr.strip()


def header_fault(path, flags):
    result = run(["c++", *flags, "-O0", "-fsyntax-only", "-x", "c++", "-"], input=f'#include "{path}"\n')
    return f"{path}: does not compile alone\n{result.stderr.rstrip()}" if result.returncode else None


def check_headers(paths):
    passed = Passed("headers", version("c++"))

    def compile_alone(path):
        flags = flags_for_header(path)
        stamp = passed.stamp(path, relative(flags))
        if passed.known(stamp):
            return None
        fault = header_fault(path, flags)
        if fault is None:
            passed.remember(stamp)
        return fault

    yield from filter(None, in_parallel(compile_alone, paths))
    passed.forget_old()


def write_clang_commands(folder):
    os.makedirs(folder, exist_ok=True)
    commands = [{"directory": os.getcwd(), "file": path,
                 "arguments": ["clang++", *(f for f in flags if f not in DROPPED_FLAGS), *CLANG_FLAGS, "-c", path]}
                for path, flags in compile_flags().items()]
    with open(os.path.join(folder, "compile_commands.json"), "w", encoding="utf-8") as file:
        json.dump(commands, file)


def tidy_faults(result):
    """What clang-tidy found. Not what clang cannot parse: the project's compiler is gcc, and clang 14 does not know all of
    its library's ranges."""
    parts = re.split(r"^(?=\S+:\d+:\d+: (?:error|warning): )", result.stdout, flags=re.MULTILINE)
    found = [part.replace(os.getcwd() + "/", "").rstrip() for part in parts if part.strip()]
    if result.returncode and not found:
        return [result.stderr.strip()]
    return [fault for fault in found if "[clang-diagnostic-" not in fault.splitlines()[0]]


def check_tidy(paths, thorough):
    """Thorough means with clang's static analyzer, which takes two thirds of the time."""
    folder = os.path.join("build", "lint")
    write_clang_commands(folder)
    passed = Passed("tidy", version("clang-tidy"), sources.read(".clang-tidy"))

    def tidy(path):
        flags = relative(compile_flags()[path])
        stamps = {way: passed.stamp(path, flags, str(way)) for way in {True, thorough}}
        if any(passed.known(stamp) for stamp in stamps.values()):
            return []
        left_out = [] if thorough else ["--checks=-clang-analyzer-*"]
        result = run(["clang-tidy", "--quiet", "-p", folder, *left_out, path])
        faults = tidy_faults(result)
        if not faults:
            passed.remember(stamps[thorough])
        return faults

    told = set()  # a header's fault is found again with every file that includes it
    for faults in in_parallel(tidy, [path for path in paths if path in compile_flags()]):
        yield from [fault for fault in faults if fault not in told]
        told.update(faults)
    passed.forget_old()
