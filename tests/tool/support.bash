# shellcheck shell=bash
# What the tests of the host tool share. Sourced, with $repository and $programs (the folder of the tool) set, in an empty
# directory.

export LC_ALL=C.UTF-8

# What differs for 64-bit processes: where Wine runs the system's own programs, and patterns for the names of the vendors'
# libraries.
wine=("$repository/scripts/wine")
intelsLibrary='ControlLib32\.dll'
nvidiasLibrary='nvapi\.dll'
case $programs in
    */x64)
        wine+=(--x64)
        intelsLibrary='ControlLib\.dll'
        nvidiasLibrary='nvapi64\.dll'
        ;;
esac

Boards() {
    echo "$repository/boards/$1.json"
}

# Runs the tool; leaves its results in $output, its messages in $messages, its exit code in $status.
Tool() {
    output=$("$repository/scripts/wine" "$programs/gputunectl.exe" "$@" </dev/null 2>messages.txt)
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
