"""Which folder may include what. The two tables below are the only place where that is said.

A folder is looked up by its longest prefix; what it may include is its own files, what it `uses`, and everything that
those use in turn.
"""
import functools
import os
import re
import subprocess

import sources

EVERYTHING = "*"

# folder: the folders that it uses
USES = {
    "base": [],
    "models": ["base"],
    "ports": ["models"],
    "core/storage": ["ports"],
    "core/audio": ["ports", "core/storage"],
    "core/speech": ["ports", "core/storage"],
    "core/ai": ["ports", "core/storage"],
    "core/output": ["ports", "core/storage"],
    "core/pipeline": ["core/storage", "core/audio", "core/speech", "core/ai", "core/output"],
    "core/session": ["core/pipeline"],
    "platform": ["ports"],
    "app/whisper": ["core"],
    "app/mcp": ["core"],
    "app/overlay": ["core"],
    "app/cli": ["core"],
    "app/ui": ["core"],
    "app/desktop": [EVERYTHING],
    "app/main.cpp": [EVERYTHING],
    "app/Program.h": [EVERYTHING],
    "tests": [EVERYTHING],
    "bench": [EVERYTHING],
}

# what a library's includes look like, and the folders that may write them (what is free of the layers always may)
LIBRARIES = {
    "Qt Core": (r"QtCore/|Q[A-Z]\w*$", ["base", "core", "platform", "app"]),
    "Qt D-Bus": (r"QtDBus/", ["platform", "app"]),
    "Qt Gui and above": (r"Qt(Gui|Widgets|Qml|Quick\w*|Svg)/", ["app/ui"]),
    "nlohmann-json": (r"nlohmann/", ["base", "models"]),
    "tl::expected": (r"tl/", ["base"]),
    "spdlog": (r"spdlog/", ["base"]),
    "the PulseAudio client": (r"pulse/", ["platform/pulse"]),
    "FFmpeg": (r"lib(av|sw)\w+/", ["platform/media"]),
    "PocketSphinx": (r"(pocketsphinx|sphinxbase)[/.]", ["platform/pocketsphinx"]),
    "whisper.cpp": (r"(whisper|parakeet|ggml\S*|gguf)\.h$", ["app/whisper"]),
    "CLI11": (r"CLI/", ["app/cli"]),
    "GoogleTest": (r"g(test|mock)/", []),
    "Google Benchmark": (r"benchmark/", []),
    "ICU": (r"unicode/", ["base", "core/pipeline"]),
    "SQLite": (r"sqlite3", ["core/storage"]),
    "libcsv": (r"csv\.h$", ["core/pipeline"]),
    "GLib": (r"(gio|glib)/|glib", ["platform/freedesktop"]),
    "X11": (r"(X11|xcb)/", ["platform/x11"]),
    "Wayland": (r"wayland-\S+\.h$", ["platform/wayland"]),
}
FREE_OF_LAYERS = ["app/main.cpp", "app/Program.h", "tests", "bench"]

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)')


def inside(path, folder):
    return path == folder or path.startswith(folder + "/")


def room_of(path, table=USES):
    """The entry of the table that the file belongs to: the longest one."""
    return max((folder for folder in table if inside(path, folder)), key=len, default=None)


@functools.cache
def reachable(folder):
    """The folders whose headers the folder may include, itself among them."""
    found = {folder}
    for used in USES.get(folder, []):
        found |= reachable(used)
        for below in USES:
            if inside(below, used):
                found |= reachable(below)
    return frozenset(found)


def own_include_fault(path, included):
    room = room_of(path)
    if room is None:
        return "the file is in a folder that dev/checks/layout.py does not know"
    allowed = reachable(room)
    if EVERYTHING in allowed or any(inside(included, folder) for folder in allowed):
        # platform/ is one entry for many technologies, and none of them may see another
        if room != "platform" or not included.startswith("platform/"):
            return None
        if included.split("/")[1] == path.split("/")[1]:
            return None
        return "one platform folder does not use another"
    return f"{room} may not use {included.rsplit('/', 1)[0]}"


@functools.cache
def qt_core_folder():
    asked = subprocess.run(["pkg-config", "--variable=includedir", "Qt6Core"], capture_output=True, text=True, check=False)
    return os.path.join(asked.stdout.strip() or "/usr/include/qt6", "QtCore")


def library_fault(path, included):
    if any(inside(path, folder) for folder in FREE_OF_LAYERS):
        return None
    for library, (pattern, folders) in LIBRARIES.items():
        if not re.match(pattern, included):
            continue
        if not any(inside(path, folder) for folder in folders):
            return f"{room_of(path) or path} may not use {library}"
        if library == "Qt Core" and not os.path.exists(os.path.join(qt_core_folder(), included.split("/")[-1])):
            return f"<{included}> is not of Qt Core"
        return None
    return None


def check(path, text):
    """Yields (line, message) for each include that the tables do not allow."""
    for number, line in enumerate(text.splitlines(), 1):
        match = INCLUDE.match(line)
        if not match:
            continue
        own, library = match.groups()
        if own and own.startswith("."):
            yield number, "includes are written from the root of the tree"
        elif own and not sources.is_third_party_quote(own):
            fault = own_include_fault(path, own)
            if fault:
                yield number, fault
        else:
            fault = library_fault(path, own or library)
            if fault:
                yield number, fault
