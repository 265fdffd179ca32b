# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash disable=SC2154 # the variable work
# Downloads from another Debian release, or for another processor, without changing the machine's own apt state and
# without root. Sourced by scripts that set `work` to a folder for temporary files.

# Prints "URI SUITE" for the machine's mirrors of a release and of its security updates: list_mirrors RELEASE
list_mirrors() {
    # shellcheck disable=SC2016 # apt's variables, not the shell's
    apt-get indextargets --format '$(REPO_URI) $(RELEASE)' 'Created-By: Packages' | sort -u |
        awk -v release="$1" '
            $2 ~ /-security$/ && !security { security = $1 }
            $2 !~ /-/ && !main { main = $1 }
            END {
                if (main) print main, release
                if (security) print security, release "-security"
            }'
}

# Runs apt on the state below `work`: apt_private COMMAND ARGUMENT...
apt_private() {
    "$1" -o Dir::State="$work/apt/state" -o Dir::State::status=/dev/null -o Dir::Cache="$work/apt/cache" \
        -o Dir::Etc::SourceList="$work/apt/sources.list" -o Dir::Etc::SourceParts=- -o Dir::Etc::Preferences=- \
        -o Dir::Etc::PreferencesParts=- -o APT::Sandbox::User="$(id -un)" -o Acquire::Languages=none \
        -o APT::Architecture="$processor" -o APT::Architectures="$processor" "${@:2}"
}

# Fetches the lists of a release: prepare_apt deb|deb-src RELEASE [PROCESSOR]
prepare_apt() {
    processor=${3:-$(dpkg --print-architecture)}
    mkdir -p "$work/apt/state/lists/partial" "$work/apt/cache/archives/partial"
    local uri suite
    while read -r uri suite; do
        # Only tests use packages, and mirrors may lack the lists of security updates for less common processors.
        [[ $1 == deb && $suite == *-security ]] && continue
        echo "$1 [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] $uri $suite main"
    done < <(list_mirrors "$2") >"$work/apt/sources.list"
    [[ -s $work/apt/sources.list ]] || { echo "apt on this machine has no Debian mirror"; return 1; }
    apt_private apt-get update -o APT::Update::Error-Mode=any
}
