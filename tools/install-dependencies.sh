#!/usr/bin/env bash
# Installs the Debian packages that building and testing need, if any is missing, and any
# further packages named as arguments (for example lcov for tools/coverage.sh). A name with
# ":arm64" adds that architecture to dpkg first (multiarch packages for the arm64 cross build).
# Runs as root on Debian 12; does nothing (and needs no network) when all are present.
set -euo pipefail

packages=(
    cmake g++ ninja-build ccache pkg-config libbenchmark-dev
    qtbase5-dev qttools5-dev-tools liblog4cplus-dev libsystemd-dev systemd
    qt6-base-dev qt6-l10n-tools libgl-dev libxml2-utils
    clang libclang-rt-14-dev
    "$@"
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
        missing+=("$package")
    fi
done

if [ ${#missing[@]} -gt 0 ]; then
    echo "Installing missing packages: ${missing[*]}"
    for package in "${missing[@]}"; do
        architecture="${package#*:}"
        if [ "$architecture" != "$package" ] \
            && ! dpkg --print-foreign-architectures | grep -qx "$architecture"; then
            dpkg --add-architecture "$architecture"
        fi
    done
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
