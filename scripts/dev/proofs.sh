# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# shellcheck disable=SC2154 # root, logs and jobs are set by ./dev, which reads this file
# shellcheck disable=SC2034 # figure is said in the end
# ./dev fuzz, faults, soak, secrets, mutate and coverage. Each prints its figure in its last lines.

# Where the libcrypto lies that a preset builds against; nothing for the system's.
libcrypto_root() {
    sed -n 's/^OPENSSL_ROOT_DIR:[A-Z]*=//p' "build/$1/CMakeCache.txt"
}

require_reference() {
    local preset
    preset=$(select_preset release)
    [[ $preset == release ]] && return
    say "this needs the reference libcrypto, which cannot be built here"
    exit 3
}

require_number() {
    [[ $2 =~ ^[0-9]+$ ]] && return
    echo "./dev $1: '$2' is no number" >&2
    exit 2
}

run_fuzz() {
    local seconds=${1:-600}
    require_number fuzz "$seconds"
    ensure_packages build fuzz
    require_reference
    configure_and_build fuzz
    say "fuzzing for $seconds s on $jobs processors (logs: build/fuzz-work/)"
    conclude scripts/fuzz "$root/build/fuzz/fuzz" "$root/build/fuzz-work" "$seconds" "${2:-}"
}

# Runs the tests of a program that match, with their figures, or ends.
run_counted() {
    local program=$1 filter=$2 results=$root/build/$3.xml
    "build/release/tests/$program" --gtest_brief=1 "--gtest_filter=$filter" "--gtest_output=xml:$results" \
        >"$logs/$3.log" 2>&1 || { tail -n 40 "$logs/$3.log" && exit 1; }
}

run_faults() {
    ensure_packages build
    require_reference
    configure_and_build release
    mkdir -p "$logs"
    say "failing every allocation and every call of a dependency, in each scenario"
    run_counted sarn_injection_tests '*' injections
    run_counted sarn_fault_tests '*' faults
    conclude count_injections
}

count_injections() {
    python3 - build/injections.xml <<'PYTHON'
import re, sys

text = open(sys.argv[1]).read()
found = re.findall(r'name="Each(Allocation|Call)[^"]*"[^>]*>\s*<properties>\s*<property name="injections" value="(\d+)"', text)
allocations = [int(count) for kind, count in found if kind == "Allocation"]
calls = [int(count) for kind, count in found if kind == "Call"]
print(f"{sum(allocations)} failed allocations and {sum(calls)} failed calls of dependencies in {len(allocations)} scenarios: "
      "no crash, no false success (goals: 10000 in 60)")
sys.exit(0 if sum(allocations) >= 10000 and len(allocations) >= 60 else 1)
PYTHON
}

run_soak() {
    local operations=${1:-10000000}
    require_number soak "$operations"
    ensure_packages build
    require_reference
    configure_and_build release --target sarn_soak
    say "threads, forks and first uses"
    build/release/tests/sarn_soak first-use 200
    build/release/tests/sarn_soak forks 1000
    conclude build/release/tests/sarn_soak threads "$operations"
}

run_secrets() {
    ensure_packages build
    require_reference
    configure_and_build release
    mkdir -p "$logs"
    say "searching memory for keys, passwords and plaintexts"
    run_counted sarn_injection_tests '*Secrets*' secrets-in-memory
    run_counted sarn_fault_tests '*Wiped*:*LeaveNo*:*TCryptBuffer*' secrets-in-blocks
    figure="$(grep -c '<testcase name="AreGone' build/secrets-in-memory.xml) uses of a secret, every way out of each: none found in memory"
}

run_mutate() {
    local count=${1:-1060}
    require_number mutate "$count"
    ensure_packages build
    require_reference
    [[ -f build/release/build.ninja ]] || cmake --preset release >/dev/null
    say "trying $count changes of the sources on $jobs processors; this takes about an hour (copies: build/mutants/)"
    conclude scripts/mutate "$count" "$root/build/mutants" "$(libcrypto_root release)"
}

run_coverage() {
    ensure_packages build fuzz
    require_reference
    configure_and_build coverage
    say "running the tests (HTML: build/coverage-work/html/index.html)"
    conclude scripts/coverage "$root/build/coverage" "$root/build/coverage-work"
}

run_memcheck() {
    ensure_packages build
    require_reference
    configure_and_build release
    say "running the tests under valgrind; this takes a while (logs: build/logs/memcheck-*)"
    conclude scripts/memcheck "$root/build/release" "$logs"
}
