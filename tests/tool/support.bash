# shellcheck shell=bash
# What the tests of the host tool share. Sourced, with $repository and $bin set (the folder of the tool under test), in an
# empty directory.

export LC_ALL=C.UTF-8

# What is not the same for programs of both widths.
width=32-bit
controlLibrary=ControlLib32.dll
nvapi=nvapi.dll
wineWidth=()
if [[ $bin == */x64 ]]; then
    width=64-bit
    controlLibrary=ControlLib.dll
    nvapi=nvapi64.dll
    wineWidth=(--x64)
fi

Boards() {
    echo "$repository/boards/$1.json"
}

# Runs the tool; leaves its results in $output, its messages in $messages, its exit code in $status.
Tool() {
    output=$("$repository/scripts/wine" "$bin/gputunectl.exe" "$@" </dev/null 2>messages.txt)
    status=$?
    # The library's log has Windows line ends.
    output=${output//$'\r'/}
    messages=$(cat messages.txt)
}

On() {
    local board=$1
    shift
    Tool --simulate "$(Boards "$board")" "$@"
}

failures=0
Fail() {
    failures=$((failures + 1))
    printf '%s\n--- results (exit code %s)\n%s\n--- messages\n%s\n' "$1" "$status" "$output" "$messages" >&2
}

ExpectStatus() {
    [ "$status" -eq "$1" ] || Fail "expected exit code $1"
}

# A line of the results that matches the whole pattern.
ExpectLine() {
    grep -qxE "$1" <<<"$output" || Fail "expected a line: $1"
}

ExpectMessage() {
    grep -qE "$1" <<<"$messages" || Fail "expected a message: $1"
}

# No line of the results or messages has this.
ExpectNo() {
    ! grep -qE "$1" <<<"$output$messages" || Fail "expected nothing with: $1"
}

# Prints a board file of a board without faults, whose driver answers `result` to these calls and does nothing.
Answering() { # <board> <result> <entry points...>
    local board=$1 result=$2 faults=''
    shift 2
    for entryPoint in "$@"; do
        faults+="${faults:+, }{\"entryPoint\": \"$entryPoint\", \"result\": $result}"
    done
    sed "\$ s/}\$/, \"faults\": [$faults]}/" "$(Boards "$board")"
}
