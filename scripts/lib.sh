# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# Shared by the commands. Each command sources this file first. It changes to the project's folder and prints the last
# line:
#     ./dev COMMAND: passed: SUMMARY
# Exit status: 0 passed, 2 wrong arguments, 3 cannot run on this machine, anything else failed.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
command=$(basename "$0")
logs=$root/build/logs
jobs=$(nproc)
lanes=(release debug asan tsan clang clang-libc++ windows arm64 s390x i386 libcrypto=3.0 libcrypto=3.5)
summary=''
preset=''
mkdir -p "$logs"

say() { printf '==> %s\n' "$*"; }

# Sets the summary at the end of the last line.
conclude() { summary=$*; }

cannot_run() {
    conclude "$*"
    exit 3
}

# Removes temporary files. A command that makes some redefines this.
clean_up() { :; }

print_last_line() {
    local status=$? verdict
    trap - EXIT
    clean_up
    case $status in
        0) verdict=passed ;;
        2) exit 2 ;;
        3) verdict='NOT RUN' ;;
        *) verdict="FAILED (exit status $status)" ;;
    esac
    printf '%s\n' "./dev $command: $verdict${summary:+: $summary}"
    exit "$status"
}
trap print_last_line EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# --- Help: the lines of a command's file that start with "#: ", the first of them as a summary. ---

show_head() { sed -n "s/LANES/${lanes[*]}/; s/^#: \{0,1\}//p" "scripts/commands/$1"; }

# Prints the words that a command accepts as arguments, one per line.
list_choices() { show_head "$1" | sed -n 's/^choices: //p' | tr ' ' '\n'; }

show_usage() {
    show_head "$command" >&2
    exit 2
}

if [[ ${1:-} == --help && -z ${passes_options:-} ]]; then
    trap - EXIT
    show_head "$command"
    exit 0
fi

# Reports an unknown word with the closest match, and exits: refuse_word WORD CANDIDATE...
refuse_word() {
    local word=$1 best='' score best_score=0 candidate
    shift
    for candidate in "$@"; do
        score=0
        while [[ ${candidate:score:1} == "${word:score:1}" && $score -lt ${#candidate} ]]; do score=$((score + 1)); done
        ((score > best_score)) && best=$candidate best_score=$score
    done
    [[ -z $best ]] || best=" Did you mean '$best'?"
    echo "./dev: unknown word '$word'.$best Try: ./dev help" >&2
    exit 2
}

# Refuses an argument that is not among the command's choices.
require_choice() {
    local choices
    mapfile -t choices < <(list_choices "$command")
    [[ " ${choices[*]} " == *" $1 "* ]] || refuse_word "$1" "${choices[@]}"
}

require_number() {
    [[ $1 =~ ^[0-9]+$ ]] && return
    echo "./dev $command: '$1' is not a number" >&2
    show_usage
}

# Refuses more arguments than a command accepts: at_most COUNT "$@"
at_most() { (($# - 1 <= $1)) || show_usage; }

# --- Steps ---

# Runs a long step with its output in a log: quietly TITLE LOG COMMAND...
# Prints the last line of the log from time to time, and the end of the log if the step fails.
quietly() {
    local title=$1 log=$logs/$2.log ticks=0 step status=0
    shift 2
    say "$title (log: ${log#"$root"/})"
    # In its own process group, so that an interrupt also ends its child processes.
    set -m
    "$@" </dev/null >"$log" 2>&1 &
    step=$!
    set +m
    # shellcheck disable=SC2064 # expanded now, for this step
    trap "kill -- -$step 2>/dev/null; exit 130" INT TERM
    while kill -0 "$step" 2>/dev/null; do
        sleep 0.2
        ticks=$((ticks + 1))
        ((ticks % 50 == 0)) && printf '    %s\n' "$(tail -n 1 "$log" | cut -c1-110)"
    done
    wait "$step" || status=$?
    trap 'exit 130' INT
    trap 'exit 143' TERM
    ((status == 0)) && return
    say "failed: $title. End of its output:"
    grep -E -A 12 'FAILED|[Ee]rror[: ]' "$log" | head -n 60 || tail -n 40 "$log"
    return 1
}

# Runs a program and shows its output except the last line, which becomes the summary.
show_and_conclude() {
    local status=0 log=$logs/$command-output.log
    "$@" | tee "$log" | sed -u '$d' || status=$?
    conclude "$(tail -n 1 "$log")"
    return "$status"
}

# Lists the matching files of the project, untracked ones included.
list_files() {
    local file
    git ls-files --cached --others --exclude-standard -- "$@" | while read -r file; do
        if [[ -e $file ]]; then echo "$file"; fi
    done
}

# --- Packages: scripts/packages.txt has a section for each purpose. ---

list_packages() {
    sed -n "/^\[$1\]/,/^\[/p" scripts/packages.txt | sed 's/#.*//; /^\[/d; /^ *$/d' | awk '{ print $1 }'
}

ensure_packages() {
    local wanted missing as_root=()
    wanted=$(for section in "$@"; do list_packages "$section"; done)
    # shellcheck disable=SC2086 # one word per package
    missing=$({ dpkg-query -W -f='${Package} ${db:Status-Status}\n' $wanted 2>/dev/null || true; } |
        awk '$2 == "installed" { print $1 }' | sort -u | comm -13 - <(sort -u <<<"$wanted") | tr '\n' ' ')
    [[ -z $missing ]] && return
    if ((EUID != 0)); then
        sudo -n true 2>/dev/null ||
            cannot_run "packages are missing; to install them as root or with passwordless sudo:" \
                "apt-get install --no-install-recommends $missing"
        as_root=(sudo -n)
    fi
    say "installing packages: $missing"
    quietly "apt-get update" apt-update "${as_root[@]}" apt-get update
    # shellcheck disable=SC2086
    quietly "apt-get install" apt-install "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y --no-install-recommends $missing
}

# --- Builds ---

# Installs the packages of a lane, builds its libcrypto, and sets `preset` to the CMake preset of the lane.
prepare_lane() {
    local lane=$1 status=0
    preset=$lane
    ensure_packages build
    case $lane in
        libcrypto=3.0) preset=system-openssl ;;
        libcrypto=3.5)
            preset=libcrypto-3.5
            scripts/build-libcrypto linux-x86_64 3.5 || status=$?
            ;;
        windows)
            ensure_packages windows
            scripts/build-libcrypto windows-x86_64 || status=$?
            ;;
        arm64 | s390x | i386)
            ensure_packages "$lane"
            scripts/unpack-packages "$lane" zlib1g zlib1g-dev || status=$?
            ((status != 0)) || scripts/build-libcrypto "linux-$lane" || status=$?
            ;;
        *)
            [[ $lane != [at]san ]] || ensure_packages clang
            [[ $lane != clang-libc++ ]] || ensure_packages libc++
            scripts/build-libcrypto linux-x86_64 || status=$?
            ;;
    esac
    if ((status == 3)) && [[ $lane == release && $command =~ ^(demo|build|test|install)$ ]]; then
        say "using the system's libcrypto instead: it lacks IDEA and has Blowfish and CAST-128 in its legacy provider"
        preset=system-openssl
    elif ((status == 3)); then
        cannot_run "cannot download the libraries for $lane"
    elif ((status != 0)); then
        exit "$status"
    fi
}

# Builds the prepared lane: build all, or build TARGET...
build() {
    [[ -f build/$preset/build.ninja ]] || quietly "configuring $preset" "configure-$preset" cmake --preset "$preset"
    quietly "building $preset" "build-$preset" cmake --build --preset "$preset" -j "$jobs" --target "$@"
}

# Runs the tests of the prepared lane that ctest selects: run_ctest [OPTION...]
run_ctest() {
    local log=$logs/test-$preset.log
    say "running the tests of $preset"
    # The log has a line for each passed test; the screen shows their number from time to time. Many tests wait for
    # processes, disks and threads.
    ctest --preset "$preset" -j $((2 * jobs)) --no-tests=error "$@" </dev/null | tee "$log" |
        awk '/ Passed /  { if (++passed % 50 == 0) print "    " passed " passed"; fflush(); next }
             /^ *Start / { next }
             { print; fflush() }'
    if grep -q 'The following tests did not run' "$log"; then
        echo "tests were skipped"
        return 1
    fi
    conclude "$(sed -n 's/^100% tests passed.* out of \([0-9]*\)$/\1 tests/p' "$log")"
}

# Prints the folder of a preset's libcrypto; prints nothing for the system's.
find_libcrypto() { sed -n 's/^OPENSSL_ROOT_DIR:[A-Z]*=//p' "build/$1/CMakeCache.txt"; }

# Builds of the same sources have the same date: that of the last change.
set_source_date() {
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md)
    export SOURCE_DATE_EPOCH
}

# Runs the tests of a program that match a filter, and fails if none do: run_filtered PROGRAM FILTER NAME
# Writes their results to build/NAME.xml.
run_filtered() {
    local log=$logs/$3.log
    if ! "build/$preset/tests/$1" --gtest_brief=1 "--gtest_filter=$2" "--gtest_output=xml:build/$3.xml" \
        >"$log" 2>&1; then
        tail -n 40 "$log"
        return 1
    fi
    grep -q '<testcase ' "build/$3.xml" && return
    echo "no test of $1 matches $2"
    return 1
}
