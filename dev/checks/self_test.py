"""Shows each check code that it must find, and code that it must leave alone."""
import os
import tempfile

import compiled
import coroutines
import layout
import words

AWAITS = {
    # what stands in a coroutine's body: whether the rule is broken
    "co_await f(a, b);": False,
    "co_return co_await f(a);": False,
    "const auto r = co_await f(a, b);": False,
    "Result<int, E> r = co_await m_x->f<int, 3>(std::move(a), *b, 1'000, 'x');": False,
    "const auto [a, b] = co_await f();": False,
    "if (a)\n    co_await f();\nelse\n    co_return co_await g();": False,
    "for (auto& x : list)\n    co_await f(x);": False,
    "switch (a) {\ncase 1: co_await f(); break;\ndefault: co_await g();\n}": False,
    "co_await w.run([&a, this](const T& t) { if (t) { return g(a + 1, {1}); } return 2; });": False,
    "co_await w.run([] { return 1; });": False,
    "{\n    const std::lock_guard lock(m);\n    ++n;\n}\nco_await f();": False,
    'log("co_await in a text", R"(if (co_await f()))"); // if (co_await f())': False,
    "auto work = [x] { return x; };\nco_await w.run(work);": False,
    "const auto g = [x](int i) { return [i] { return i; }; };\nco_await f();": False,
    "if (co_await f()) {}": True,
    "while (!co_await f()) {}": True,
    "switch (co_await f()) {}": True,
    "for (const auto& x : co_await f()) {}": True,
    "r = co_await f();": True,
    "const int n = 1 + co_await f();": True,
    "const int n = co_await f() + 1;": True,
    "const bool b = co_await f() < 3;": True,
    "const int n = c ? co_await f() : 0;": True,
    "const auto v = (co_await f()).value();": True,
    "g(co_await f());": True,
    "EXPECT_TRUE(co_await f());": True,
    "const T t{co_await f()};": True,
    "return_value = T{1, co_await f()};": True,
    "*p = co_await f();": True,
    "p->x = co_await f();": True,
    "co_await f({1, 2});": True,
    "co_await f(Options{.a = 1});": True,
    "const auto r = co_await f(a, std::vector<int>{});": True,
    "co_await w.run([text] { return text; });": True,
    "co_await w.run([t = std::move(t)]() mutable { return t; });": True,
    "co_await w.run([=] { return 1; });": True,
    "const std::lock_guard lock(m);\nco_await f();": True,
    "std::unique_lock lock(m);\nif (a) {\n    co_await f();\n}": True,
    "auto t = [&] { co_return; };": True,
    "scope.start([x]() -> Task<void> { co_await f(); }());": True,
    "scope.start([this](int i) -> Task<int> { const auto r = co_await f(i); co_return r; }(1));": True,
}

INCLUDES = {
    # file, include: whether it is forbidden
    ("core/audio/A.cpp", '"core/storage/B.h"'): False,
    ("core/audio/A.cpp", '"core/audio/B.h"'): False,
    ("core/audio/A.cpp", '"ports/B.h"'): False,
    ("core/audio/A.cpp", '"base/B.h"'): False,
    ("core/session/A.cpp", '"core/pipeline/B.h"'): False,
    ("core/session/A.cpp", '"core/audio/B.h"'): False,
    ("app/overlay/A.cpp", '"core/session/B.h"'): False,
    ("app/main.cpp", '"platform/pulse/B.h"'): False,
    ("app/desktop/A.cpp", '"platform/pulse/B.h"'): False,
    ("app/desktop/A.cpp", "<QtDBus/QDBusConnection>"): False,
    ("tests/core/audio/A.cpp", '"platform/media/B.h"'): False,
    ("core/audio/A.cpp", "<vector>"): False,
    ("core/audio/A.cpp", "<fmt/format.h>"): False,
    ("base/A.cpp", "<QCoreApplication>"): False,
    ("base/A.h", "<nlohmann/json.hpp>"): False,
    ("platform/pulse/A.cpp", "<pulse/pulseaudio.h>"): False,
    ("app/whisper/A.cpp", "<whisper.h>"): False,
    ("tests/app/whisper/A.cpp", "<whisper.h>"): False,
    ("core/audio/A.cpp", '"core/speech/B.h"'): True,
    ("core/storage/A.cpp", '"core/audio/B.h"'): True,
    ("core/pipeline/A.cpp", '"core/session/B.h"'): True,
    ("core/session/A.cpp", '"platform/pulse/B.h"'): True,
    ("platform/pulse/A.cpp", '"core/audio/B.h"'): True,
    ("platform/pulse/A.cpp", '"platform/media/B.h"'): True,
    ("base/A.cpp", '"models/B.h"'): True,
    ("models/A.h", '"ports/B.h"'): True,
    ("app/cli/A.cpp", '"app/overlay/B.h"'): True,
    ("app/cli/A.cpp", '"tests/support/B.h"'): True,
    ("gadgets/A.cpp", '"base/B.h"'): True,
    ("core/audio/A.cpp", '"../storage/B.h"'): True,
    ("models/A.h", "<QString>"): True,
    ("core/audio/A.cpp", "<QtGui/QImage>"): True,
    ("base/A.cpp", "<QImage>"): True,
    ("app/desktop/A.cpp", "<QtWidgets/QApplication>"): True,
    ("core/speech/A.cpp", "<whisper.h>"): True,
    ("core/speech/A.cpp", '"whisper.h"'): True,
    ("core/audio/A.cpp", "<libavcodec/avcodec.h>"): True,
    ("platform/media/A.cpp", "<pulse/simple.h>"): True,
    ("core/storage/A.cpp", "<nlohmann/json.hpp>"): True,
    ("core/storage/A.cpp", "<spdlog/spdlog.h>"): True,
    ("app/main.h", "<CLI/CLI.hpp>"): True,
    ("core/audio/A.cpp", "<gtest/gtest.h>"): True,
}

WORDS = {
    "a part of the special case, in 2.1 parts": False,
    "see P" + "art 5.5": True,
    "as parts" + " 1.2 and 3 say": True,
    "what the sp" + "ec says": True,
}

HEADERS = {
    "#pragma once\n#include <string>\ninline std::string f() { return {}; }\n": False,
    "#pragma once\ninline std::string f() { return {}; }\n": True,
}


def wrong(what, expected, faults):
    if bool(faults) == expected:
        return 0
    print(f"{'not found' if expected else f'found by mistake ({faults[0][1]})'}: {what}")
    return 1


def header_faults(text):
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "A.h")
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        fault = compiled.header_fault(path, ["-std=c++20"])
    return [(1, fault)] if fault else []


def main():
    count = 0
    for body, expected in AWAITS.items():
        text = f"Task<int> coroutine(int a)\n{{\n{body}\nco_return 1;\n}}\n"
        count += wrong(body, expected, list(coroutines.check("core/a/A.cpp", text)))
    for (path, included), expected in INCLUDES.items():
        faults = list(layout.check(path, f"#pragma once\n\n#include {included}\n"))
        count += wrong(f"{path} includes {included}", expected, faults)
    for text, expected in WORDS.items():
        count += wrong(text, expected, list(words.check_words("A.md", text)))
    for lines, expected in {400: False, 401: True}.items():
        count += wrong(f"{lines} lines", expected, list(words.check_length("A.cpp", "x\n" * lines)))
    for text, expected in HEADERS.items():
        count += wrong(text, expected, header_faults(text))
    total = len(AWAITS) + len(INCLUDES) + len(WORDS) + 2 + len(HEADERS)
    print(f"{total - count} of {total} snippets were judged rightly.")
    return 1 if count else 0
