"""Runs the checks; see dev/lint."""
import os
import subprocess
import sys
import time

import compiled
import coroutines
import layout
import self_test
import sources
import words


def git(*arguments):
    return subprocess.run(["git", *arguments], capture_output=True, text=True, check=False).stdout.strip()


def base_commit():
    """What "changed" is measured from: where this branch left the main one; on the main one itself, a day ago."""
    if os.environ.get("VOCALITH_LINT_BASE"):
        return os.environ["VOCALITH_LINT_BASE"]
    head = git("rev-parse", "--verify", "--quiet", "HEAD")
    for main in ("origin/HEAD", "origin/main", "main"):
        base = git("merge-base", "HEAD", main)
        if base and base != head:
            return base
    return git("rev-list", "-1", "--before=1 day ago", "HEAD")


def changed_sources():
    """The source files that have changed, and for a changed header one that includes it."""
    everything = sources.cpp_files()
    base = base_commit()
    if not base:
        return [path for path in everything if path.endswith(".cpp")]
    changed = set(git("diff", "--name-only", base).splitlines())
    changed |= set(git("ls-files", "--others", "--exclude-standard").splitlines())
    if ".clang-tidy" in changed:
        return [path for path in everything if path.endswith(".cpp")]
    found = set()
    for path in changed & set(everything):
        if path.endswith(".cpp"):
            found.add(path)
            continue
        users = [user for user in everything if user.endswith(".cpp") and path in compiled.own_includes(user)]
        found.update(sorted(users, key=lambda user: user.rsplit(".", 1)[0] != path.rsplit(".", 1)[0])[:1])
    return sorted(found)


def text_faults(check, paths):
    for path in paths:
        for line, message in check(path, sources.read(path)):
            yield f"{path}:{line}: {message}"


def main(arguments):
    if arguments == ["--self-test"]:
        return self_test.main()
    if arguments not in ([], ["--all"]):
        print("usage: dev/lint [--all | --self-test]", file=sys.stderr)
        return 2
    cpp = sources.cpp_files()
    tidied = [path for path in cpp if path.endswith(".cpp")] if arguments else changed_sources()
    checks = [
        ("folders and libraries", text_faults(layout.check, cpp)),
        ("coroutines", text_faults(coroutines.check, cpp)),
        ("length", text_faults(words.check_length, cpp + sources.listed("dev", "*.cmake", "*CMakeLists.txt"))),
        ("words", text_faults(words.check_words, [p for p in sources.listed() if not p.endswith((".wav", ".bin"))])),
        ("format", compiled.check_format(cpp)),
        ("headers alone", compiled.check_headers([path for path in cpp if path.endswith(".h")])),
        (f"clang-tidy ({len(tidied)} files)", compiled.check_tidy(tidied, bool(arguments))),
    ]
    failed = []
    for name, faults in checks:
        started = time.monotonic()
        count = 0
        for fault in faults:
            count += 1
            print(fault)
        print(f"{name}: {'ok' if count == 0 else f'{count} faults'} ({time.monotonic() - started:.1f} s)", flush=True)
        if count:
            failed.append(name)
    print("Lint failed: " + ", ".join(failed) if failed else "Lint passed.")
    return 1 if failed else 0


sys.exit(main(sys.argv[1:]))
