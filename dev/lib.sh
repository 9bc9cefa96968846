# shellcheck shell=bash
# What the scripts of this folder share. Everything that they say goes to standard error: standard output belongs to the
# program that dev/run starts.
set -euo pipefail

root=$(cd -P "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# Clones and build folders differ in their path only: let the compiler cache see them alike.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1

say() { printf '%s\n' "$*" >&2; }
die() {
    say "$@"
    exit 1
}
onTerminal() { [ -t 2 ] && [ -z "${CI:-}" ]; }

# quietly LOG COMMAND…: runs the command with its output in LOG and nothing on the terminal but a line of progress.
# Shows what matters of the log when the command fails.
quietly() {
    local log=$1 status=0
    shift
    mkdir -p "$(dirname "$log")"
    if onTerminal; then
        "$@" 2>&1 </dev/null | tee "$log" | showProgress || status=$?
    else
        "$@" >"$log" 2>&1 </dev/null || status=$?
    fi
    [ "$status" -eq 0 ] || {
        # ninja's lines about the steps that went well only hide the one that did not
        grep -vE '^\[[0-9]+/[0-9]+\] ' "$log" | tail -n 200 >&2 || true
        say "Failed: $* (the whole output is in $log)"
    }
    return "$status"
}

showProgress() {
    local line width
    width=$(tput cols 2>/dev/null) || width=80
    while IFS= read -r line; do
        printf '\r\033[K%s' "${line:0:width-1}" >&2
    done
    printf '\r\033[K' >&2
}

# configure PRESET [-DNAME=VALUE…]: makes build/PRESET when it is new, or older than the presets, or has other values.
configure() {
    local preset=$1 folder=$root/build/$1 wanted=$*
    [ -e "$folder/build.ninja" ] && [ "$(cat "$folder/.configured" 2>/dev/null)" = "$wanted" ] &&
        [ "$folder/.configured" -nt "$root/CMakePresets.json" ] && return
    shift
    (cd "$root" && quietly "$root/build/logs/$preset-configure.log" cmake --preset "$preset" "$@") || return
    printf '%s' "$wanted" >"$folder/.configured"
}

# build PRESET [TARGET…]: builds the targets, or everything, in build/PRESET; one build at a time in a folder.
build() {
    local preset=$1
    shift
    (
        flock 9
        configure "$preset" "${configureOptions[@]}"
        quietly "$root/build/logs/$preset.log" ninja -C "$root/build/$preset" -j "${VOCALITH_JOBS:-$(nproc)}" "$@"
    ) 9>"$(lockFile "$preset")"
}

lockFile() {
    mkdir -p "$root/build"
    printf '%s' "$root/build/.$1.lock"
}

# The tests are part of a build as soon as what they need is installed.
configureOptions=(-DVOCALITH_TESTS=OFF)
if [ -e /usr/include/gtest/gtest.h ] && [ -e /usr/include/gmock/gmock.h ]; then
    configureOptions=(-DVOCALITH_TESTS=ON)
fi
