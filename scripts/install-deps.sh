#!/usr/bin/env bash
# Installs every Debian package that building, testing and benchmarking
# Cadrelle need. Idempotent: a quick no-op when everything is there.
# Run as root (or with sudo available).
set -euo pipefail

PACKAGES=(
  build-essential cmake ninja-build pkg-config ccache
  libwxgtk3.2-dev libgtk-3-dev libexpat1-dev
  libx11-dev libxss-dev libcurl4-openssl-dev ca-certificates iproute2 openssl
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
  tzdata xvfb xauth xdotool xprintidle
  libglib2.0-dev libxext-dev libxtst-dev libpng-dev
  openbox x11-utils dbus-daemon dbus-bin libglib2.0-bin python3 python3-dbus python3-dbusmock desktop-file-utils
  libsodium-dev libsqlite3-dev
  librsvg2-bin imagemagick
  libayatana-appindicator3-dev python3-xlib python3-gi trayer
  gettext wx3.2-i18n fonts-wqy-microhei appstream dpkg-dev man-db
)

missing=()
for pkg in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$pkg")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

SUDO=""
if [ "$(id -u)" -ne 0 ]; then
  SUDO="sudo"
fi
echo "Installing: ${missing[*]}"
$SUDO apt-get update -qq
DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
