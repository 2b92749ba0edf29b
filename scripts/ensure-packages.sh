#!/usr/bin/env bash
# Installs the Debian packages named on the command line that are missing
# (run as root or with sudo). Used by the benchmark and comparison scripts.
set -euo pipefail
missing=()
for p in "$@"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
((${#missing[@]})) || exit 0
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "Installing: ${missing[*]}" >&2
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
