#!/usr/bin/env bash
# Installs the Debian packages that building and testing Tarvex needs, and
# only those that are missing.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libgif-dev libutfcpp-dev libspng-dev libturbojpeg0-dev zlib1g-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  python3-pil
)

missing=()
for package in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$package")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
