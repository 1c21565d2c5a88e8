#!/usr/bin/env bash
# Installs the Debian packages that building and testing need, if any is missing, and any
# further packages named as arguments (for example lcov for tools/coverage.sh).
# Runs as root on Debian 12; does nothing (and needs no network) when all are present.
set -euo pipefail

packages=(
    cmake g++ ninja-build ccache pkg-config libbenchmark-dev
    qtbase5-dev qttools5-dev-tools liblog4cplus-dev libsystemd-dev systemd
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
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
