# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# shellcheck disable=SC2154 # root, logs and jobs are set by ./dev, which reads this file
# ./dev lint

run_lint() {
    ensure_packages build lint
    local preset
    preset=$(select_preset debug)
    say "format"
    project_files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror
    say "shell scripts"
    # shellcheck disable=SC2046 # names without spaces
    shellcheck dev .ci/run scripts/dev/*.sh docs/site/filter $(grep -sl '^#!/usr/bin/env bash' scripts/*)
    say "rules of the tree"
    scripts/check-tree
    # The analyzers need to know how each file is compiled, and nothing that is built.
    quietly "configuring $preset" "configure-$preset" cmake --preset "$preset"
    quietly "clang-tidy" tidy run_clang_tidy "build/$preset"
    quietly "cppcheck" cppcheck cppcheck "--project=build/$preset/compile_commands.json" --quiet -j "$jobs" \
        --enable=warning,performance,portability --inline-suppr --error-exitcode=1 "--file-filter=*/src/*"
    quietly "clang's static analyzer" scan-build run_scan_build "$preset"
    # shellcheck disable=SC2034 # said in the end
    figure="gcc's and clang's warnings, clang-tidy, cppcheck and scan-build are clean with $(git grep -ohE 'NOLINT(NEXTLINE|BEGIN)?\(|cppcheck-suppress ' -- src ul include | wc -l) waiver"
}

# Builds the libraries anew under the analyzer, which fails if it reports anything.
run_scan_build() {
    local folder=build/scan-build
    scan-build -o build/scan-build-reports cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Debug \
        -DSARN_BUILD_TESTS=OFF -DSARN_BUILD_EXAMPLES=OFF -DCMAKE_CXX_COMPILER_LAUNCHER= \
        "-DOPENSSL_ROOT_DIR=$(libcrypto_root "$1")"
    scan-build -o build/scan-build-reports --status-bugs cmake --build "$folder" --clean-first -j "$jobs"
}

run_clang_tidy() {
    project_files 'src/*.cpp' 'ul/src/*.cpp' 'examples/*.cpp' | grep -v '/windows/' |
        xargs -P "$jobs" -n 4 clang-tidy --quiet -p "$1"
}
