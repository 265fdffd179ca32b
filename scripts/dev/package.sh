# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
# shellcheck disable=SC2154 # root, logs and jobs are set by ./dev, which reads this file
# shellcheck disable=SC2034 # figure is said in the end
# ./dev docs, package, abi and reproduce: what leaves the project for others.

# Two builds of one state of the sources carry one date: that of the last change.
set_source_date() {
    SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md)
    export SOURCE_DATE_EPOCH
}

run_docs() {
    ensure_packages build package
    [[ -f build/packages/build.ninja ]] || quietly "configuring packages" configure-packages cmake --preset packages
    quietly "making the site" docs cmake --build --preset packages --target docs
    say "open $root/build/packages/docs/html/index.html"
    figure=$(grep ' links in ' "$logs/docs.log" || echo "nothing has changed since it was made")
}

run_package() {
    if [[ -n ${1:-} && $1 != try ]]; then
        suggest "$1" try
    fi
    ensure_packages build package windows
    set_source_date
    local folder=$root/build/packages/packages
    rm -rf "$folder"
    configure_and_build packages
    quietly "making the Debian packages" cpack-deb cpack -G DEB --config build/packages/CPackConfig.cmake
    # They are not sent to Debian itself, which would want a bug that asked for them.
    quietly "asking lintian" lintian lintian --allow-root --suppress-tags initial-upload-closes-no-bugs \
        --fail-on error,warning "$folder"/*.deb
    scripts/make-sbom build/packages "$folder/sarn.spdx.json"
    package_for_windows "$folder"
    ls "$folder"
    figure="$(find "$folder" -name '*.deb' | wc -l) packages that lintian accepts, and a ZIP for Windows, in ${folder#"$root"/}/"
    [[ ${1:-} == try ]] || return 0
    conclude scripts/try-packages "$folder"
}

package_for_windows() {
    [[ $(select_preset windows) == windows ]] || exit 3
    configure_and_build windows --target ul sarn
    quietly "making the ZIP for Windows" cpack-zip cpack -G ZIP --config build/windows/CPackConfig.cmake -B "$1"
    rm -rf "$1/_CPack_Packages"
    scripts/make-sbom build/windows "$1/sarn-windows.spdx.json"
}

# What the binary interface is made of; types that are not in the headers are left out.
readonly abi_options=(--headers-dir ul/include --headers-dir include --drop-private-types --no-show-locs
    --no-parameter-names --exported-interfaces-only --no-elf-needed --no-corpus-path --no-comp-dir-path)

run_abi() {
    if [[ -n ${1:-} && $1 != update ]]; then
        suggest "$1" update
    fi
    ensure_packages build package
    configure_and_build packages
    local library baseline changed=0
    for library in build/packages/ul/libul.so build/packages/src/libsarn.so; do
        baseline=tests/data/abi/$(basename "$library" .so).abi
        if [[ ${1:-} == update ]]; then
            abidw "${abi_options[@]}" --out-file "$baseline" "$library"
            continue
        fi
        # What is new breaks nobody; it is shown, and the list of exports asks whether it was meant.
        abidiff "$baseline" "$library" || true
        abidiff --no-added-syms "$baseline" "$library" >/dev/null || changed=1
    done
    if ((changed)); then
        say "this breaks programs that are compiled already, see docs/abi.md. If that is meant: ./dev abi update"
        return 1
    fi
    figure="$(cat tests/data/abi/*.abi | grep -c '<elf-symbol') symbols are as tests/data/abi/ has them"
}

run_reproduce() {
    ensure_packages build package
    conclude scripts/reproduce "$root" "$jobs"
}
