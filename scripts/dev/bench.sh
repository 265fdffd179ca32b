# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# shellcheck disable=SC2154 # root, logs and jobs are set by ./dev, which reads this file
# ./dev bench

run_bench() {
    local scope=full
    if [[ ${1:-} == quick ]]; then
        scope=quick
        shift
    fi
    ensure_packages build bench
    [[ $(select_preset bench) == bench ]] || exit 3
    configure_and_build bench
    say "comparing ($scope); a dot for every operation. results.csv and chart.svg go to build/bench/"
    build/bench/bench/sarn_bench build/bench "$scope" "$@" | tee build/bench/table.txt
    show_footprint
    tail -n 1 build/bench/table.txt
}

show_footprint() {
    local library
    printf '\n%s\n' "what the library costs before it does anything"
    for library in build/bench/ul/libul.so build/bench/src/libsarn.so; do
        strip -o build/bench/stripped "$library"
        printf '%-44s %8d bytes\n' "$(basename "$library"), stripped" "$(stat -c %s build/bench/stripped)"
    done
    build/bench/bench/sarn_load_time build/bench/bench/libsarn_probe.so
    build/bench/bench/sarn_object_sizes
    printf '\n'
}
