# shellcheck shell=bash
# What the scripts of this folder share; they set `repository`.
: "${repository:?}"

Fail() {
    printf 'package: %s\n' "$1" >&2
    exit 1
}

# Runs a command whose output is of interest only when it fails.
Quietly() {
    local output
    output=$("$@" 2>&1 </dev/null) || Fail "failed: $*
$output"
}

Run() {
    "$repository/scripts/wine" "$@" </dev/null | tr -d '\r'
}

ExpectOutput() {
    [ "$2" = "$1" ] || Fail "expected
$1
found
$2"
}

# A copy of the sources, with what scripts/setup has fetched.
CopySources() {
    rm -rf "$1"
    mkdir -p "$1/build/deps" || exit 1
    tar -C "$repository" -c --exclude=./build --exclude='./.*' . | tar -C "$1" -x || exit 1
    tar -C "$repository/build/deps" -c --exclude=./npm . | tar -C "$1/build/deps" -x || exit 1
}
