#!/usr/bin/env bash
# Installs what is needed, builds Cadrelle and starts it. Extra arguments go
# to the program (for example --app-dir DIR).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build --target cadrelle
exec build/src/app/cadrelle "$@"
