# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# shellcheck disable=SC2154 # root, logs and jobs are set by ./dev, which reads this file
# ./dev exchange

# Every build writes a bundle, every build reads every bundle, and what must not depend on the build is compared.
run_exchange() {
    local lane preset status names=() programs=()
    for lane in release libcrypto=3.0 libcrypto=3.5 windows; do
        ensure_lane_packages "$lane"
        status=0
        preset=$(select_preset "$lane") || status=$?
        if ((status == 3)) && [[ $lane == libcrypto=3.5 ]]; then
            say "NOT taking part: $lane, whose source cannot be had here"
            continue
        fi
        ((status == 0)) || exit "$status"
        configure_and_build "$preset" --target sarn_exchange
        names+=("$(exchange_name "$lane")")
        programs+=("$(exchange_program "$preset")")
    done
    rm -rf build/exchange
    scripts/exchange "$root/build/exchange" "${names[@]}" "${programs[@]}"
}

exchange_name() {
    case $1 in
        release) echo linux-1.1.1 ;;
        windows) echo windows-1.1.1 ;;
        *) echo "linux-${1#libcrypto=}" ;;
    esac
}

exchange_program() {
    if [[ $1 == windows ]]; then
        echo build/windows/bin/sarn_exchange.exe
    else
        echo "build/$1/tests/sarn_exchange"
    fi
}
