#!/usr/bin/env bash
# Installs the Debian packages the engine, its tests and its example need,
# only when one of them is missing.
set -euo pipefail
packages=(build-essential cmake pkg-config clang-format
  libsdl1.2-dev libx11-dev libegl-dev libgles-dev libegl-mesa0 libgl1-mesa-dri
  libtinyxml-dev libmpeg2-4-dev libpng-dev libjpeg62-turbo-dev
  libgtest-dev libgmock-dev libbenchmark-dev libstb-dev xvfb xauth
  libfreetype-dev fonts-dejavu-core libassimp-dev assimp-testmodels doxygen)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  apt-get update -qq
  apt-get install -y -qq --no-install-recommends "${missing[@]}" </dev/null
fi
