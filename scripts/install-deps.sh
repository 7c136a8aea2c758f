#!/usr/bin/env bash
# Installs every Debian package the project builds, tests and runs with.
# Safe to run again: apt-get skips what is already there.
set -euo pipefail

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

PACKAGES=(
  build-essential cmake ninja-build pkg-config ccache
  libgtest-dev googletest libcli11-dev
  libxml2-dev libpcre2-dev libssl-dev
  unixodbc unixodbc-dev odbc-mariadb tdsodbc libmariadb-dev
  mariadb-server mariadb-client time bc
  default-jdk-headless maven
  clang-14 libclang-rt-14-dev mdbtools
)

missing=()
for p in "${PACKAGES[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

if [ "${#missing[@]}" -gt 0 ]; then
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
