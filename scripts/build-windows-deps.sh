#!/usr/bin/env bash
# Builds the static x86_64-w64-mingw32 libraries the Windows build of Cadrelle
# links (zlib, libpng, expat, libsodium, wxWidgets for MSW, GoogleTest) from
# Debian's own source packages into one prefix, cached outside the clone:
#
#   ${CADRELLE_WIN_CACHE:-/var/cache/cadrelle-win}/<key>/prefix
#
# <key> hashes the source package versions, the mingw-w64 g++ version, the
# build recipe (this script from its "recipe" line on) and the toolchain
# file, so a second run with nothing changed is a quick no-op, and a change of
# any of them builds a fresh prefix beside the old one. Runs for one cache
# wait for each other (flock).
#
# Stages (all idempotent): Debian packages (mingw-w64, wine64, nsis, ...), a
# deb-src entry beside the existing Debian sources, the sources
# (apt-get source), the builds. Run as root. Prints the prefix on its last
# line of output.
#
#   CADRELLE_WIN_CACHE   cache root (default /var/cache/cadrelle-win)
#   CADRELLE_WIN_JOBS    parallel compile jobs (default: number of cores)
set -euo pipefail

SCRIPT=$(readlink -f "$0")
HOST=x86_64-w64-mingw32
CACHE_ROOT=${CADRELLE_WIN_CACHE:-/var/cache/cadrelle-win}
JOBS=${CADRELLE_WIN_JOBS:-$(nproc)}
NICE=(nice -n 15)
APT=(apt-get -o DPkg::Lock::Timeout=600 -o Acquire::Retries=3)

log() { echo "== build-windows-deps: $*" >&2; }

SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi

# ---------------------------------------------------------------- packages
PACKAGES=(
  g++-mingw-w64-x86-64-posix gcc-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64
  mingw-w64-x86-64-dev wine64 nsis
  cmake ninja-build make pkg-config dpkg-dev googletest ccache
  autoconf automake libtool
)
missing=()
for pkg in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$pkg")
  fi
done
if [ ${#missing[@]} -gt 0 ]; then
  log "installing ${missing[*]}"
  $SUDO "${APT[@]}" update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO "${APT[@]}" install -y -qq --no-install-recommends "${missing[@]}"
fi

CC="$HOST-gcc-posix"
CXX="$HOST-g++-posix"

# ---------------------------------------------------------------- deb-src
# A deb-src twin of every deb822 entry in debian.sources (same URIs, suites,
# components and key), in a file of its own; or, for a one-line
# sources.list, deb-src twins of its deb lines.
SRC_LIST=/etc/apt/sources.list.d/cadrelle-deb-src.sources
added_sources=0
has_deb_src() {
  grep -rqsE '^[[:space:]]*(Types:.*deb-src|deb-src[[:space:]])' \
    /etc/apt/sources.list /etc/apt/sources.list.d/ 2>/dev/null
}
if ! has_deb_src; then
  if [ -f /etc/apt/sources.list.d/debian.sources ]; then
    log "adding $SRC_LIST"
    sed -E 's/^Types:.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources \
      | $SUDO tee "$SRC_LIST" >/dev/null
  elif [ -f /etc/apt/sources.list ]; then
    log "adding deb-src lines to /etc/apt/sources.list.d/cadrelle-deb-src.list"
    grep -E '^[[:space:]]*deb[[:space:]]' /etc/apt/sources.list | sed -E 's/^([[:space:]]*)deb /\1deb-src /' \
      | $SUDO tee /etc/apt/sources.list.d/cadrelle-deb-src.list >/dev/null
  else
    echo "no Debian sources found to add deb-src entries beside" >&2
    exit 1
  fi
  added_sources=1
fi

SOURCE_PACKAGES=(zlib libpng1.6 expat libsodium wxwidgets3.2)

# The sources are kept in $CACHE_ROOT/sources (apt-get source --download-only),
# so the key comes from what is on disk and a warm run needs no network.
# apt-get source takes the newest version the indices name; a mirror can lack
# it (a security update not yet mirrored), so older ones are tried in turn.
SOURCES="$CACHE_ROOT/sources"
candidate_versions() {  # newest first
  local vs v out=()
  mapfile -t vs < <(apt-cache showsrc --only-source "$1" 2>/dev/null | awk '/^Version:/{print $2}' | sort -u)
  for v in "${vs[@]}"; do
    local i=0
    while [ $i -lt ${#out[@]} ] && dpkg --compare-versions "${out[$i]}" gt "$v"; do i=$((i + 1)); done
    out=("${out[@]:0:$i}" "$v" "${out[@]:$i}")
  done
  printf '%s\n' "${out[@]}"
}
dsc_name() { echo "${1}_${2#*:}.dsc"; }  # package, version (no epoch in file names)

if [ "$added_sources" = 1 ] || [ -z "$(apt-cache showsrc --only-source wxwidgets3.2 2>/dev/null)" ]; then
  log "apt-get update (source indices)"
  $SUDO "${APT[@]}" update -qq
fi
$SUDO mkdir -p "$SOURCES"
[ -z "$SUDO" ] || $SUDO chown "$(id -u):$(id -g)" "$CACHE_ROOT" "$SOURCES"
# One run at a time per cache: a second one waits, then finds the prefix built.
exec 9>"$CACHE_ROOT/.lock"
flock 9

declare -A DSC
for src in "${SOURCE_PACKAGES[@]}"; do
  mapfile -t versions < <(candidate_versions "$src")
  [ ${#versions[@]} -gt 0 ] || { echo "apt-get source knows no $src" >&2; exit 1; }
  for v in "${versions[@]}"; do  # already downloaded?
    if [ -f "$SOURCES/$(dsc_name "$src" "$v")" ]; then DSC[$src]=$(dsc_name "$src" "$v"); break; fi
  done
  if [ -z "${DSC[$src]:-}" ]; then
    for v in "${versions[@]}"; do
      log "apt-get source $src=$v"
      if (cd "$SOURCES" && "${APT[@]}" source --download-only -qq "$src=$v" >"$SOURCES/$src.log" 2>&1); then
        DSC[$src]=$(dsc_name "$src" "$v"); break
      fi
      grep -E '^E:' "$SOURCES/$src.log" >&2 || true
    done
  fi
  [ -n "${DSC[$src]:-}" ] || { echo "no version of $src could be downloaded" >&2; exit 1; }
done

# ---------------------------------------------------------------- key
TOOLCHAIN=$(dirname "$SCRIPT")/../cmake/mingw-w64-x86_64.cmake
key_text="recipe $( (sed -n '/^# -* recipe$/,$p' "$SCRIPT"; cat "$TOOLCHAIN") | sha256sum | cut -d' ' -f1)"$'\n'
key_text+="g++ $($CXX -dumpfullversion) $(dpkg-query -W -f='${Version}' g++-mingw-w64-x86-64-posix)"$'\n'
key_text+="mingw-w64-dev $(dpkg-query -W -f='${Version}' mingw-w64-x86-64-dev)"$'\n'
key_text+="googletest $(dpkg-query -W -f='${Version}' googletest)"$'\n'
for src in "${SOURCE_PACKAGES[@]}"; do
  key_text+="$src ${DSC[$src]}"$'\n'
done
KEY=$(printf '%s' "$key_text" | sha256sum | cut -c1-16)
DIR="$CACHE_ROOT/$KEY"
PREFIX="$DIR/prefix"

if [ -f "$DIR/done" ]; then
  log "cached: $PREFIX"
  echo "$PREFIX"
  exit 0
fi

started=$(date +%s)
log "building into $PREFIX (key $KEY)"
$SUDO mkdir -p "$DIR"
[ -z "$SUDO" ] || $SUDO chown "$(id -u):$(id -g)" "$DIR"
printf '%s' "$key_text" > "$DIR/key.txt"
rm -rf "$DIR/src" "$DIR/build" "$PREFIX"
mkdir -p "$DIR/src" "$DIR/build" "$PREFIX"

# ---------------------------------------------------------------- recipe
# Everything from here on is the build recipe the key hashes.

# Unpacked sources.
for src in "${SOURCE_PACKAGES[@]}"; do
  mkdir -p "$DIR/src/$src"
  dpkg-source --no-check -x "$SOURCES/${DSC[$src]}" "$DIR/src/$src/tree" >"$DIR/src/$src.log" 2>&1 \
    || { cat "$DIR/src/$src.log" >&2; exit 1; }
done
srcdir() { echo "$DIR/src/$1/tree"; }

export PKG_CONFIG_LIBDIR="$PREFIX/lib/pkgconfig"
export PKG_CONFIG_PATH=""
XCONF=(--host="$HOST" --prefix="$PREFIX" --disable-shared --enable-static
       CC="$CC" CXX="$CXX" AR="$HOST-ar" RANLIB="$HOST-ranlib"
       CPPFLAGS="-I$PREFIX/include" LDFLAGS="-L$PREFIX/lib")

run_logged() {  # name, command...: output to build/<name>.log, shown on failure
  local name=$1; shift
  local t0; t0=$(date +%s)
  if ! "$@" >"$DIR/build/$name.log" 2>&1; then
    tail -n 60 "$DIR/build/$name.log" >&2
    echo "build of $name failed; log: $DIR/build/$name.log" >&2
    exit 1
  fi
  log "$name: $(( $(date +%s) - t0 )) s"
}

# zlib: its own configure (the dfsg tree has no win32/ folder), built in its
# tree, static library only.
build_zlib() {
  cd "$(srcdir zlib)"
  CHOST="$HOST" CC="$CC" AR="$HOST-ar" RANLIB="$HOST-ranlib" ./configure --static --prefix="$PREFIX"
  "${NICE[@]}" make -j"$JOBS" libz.a
  make install
}

# expat: the Debian tree is upstream's git layout (no configure): CMake.
build_expat() {
  local b="$DIR/build/expat"
  # Debian's security patches test "#if XML_DTD == 1", as autotools defines
  # it; CMake's template defines it empty.
  sed -i 's/^#cmakedefine XML_DTD$/#cmakedefine XML_DTD 1/' "$(srcdir expat)/expat/expat_config.h.cmake"
  cmake -S "$(srcdir expat)/expat" -B "$b" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$PREFIX" \
    -DEXPAT_SHARED_LIBS=OFF -DEXPAT_BUILD_TOOLS=OFF -DEXPAT_BUILD_EXAMPLES=OFF \
    -DEXPAT_BUILD_TESTS=OFF -DEXPAT_BUILD_DOCS=OFF -DEXPAT_BUILD_PKGCONFIG=ON
  "${NICE[@]}" cmake --build "$b" -j "$JOBS"
  cmake --install "$b"
}

build_autoconf() {  # source package, configure options...
  local src=$1; shift
  local b="$DIR/build/$src"
  mkdir -p "$b" && cd "$b"
  "$(srcdir "$src")/configure" "${XCONF[@]}" "$@"
  "${NICE[@]}" make -j"$JOBS"
  make install
}

build_wx() {
  local b="$DIR/build/wxwidgets3.2"
  mkdir -p "$b" && cd "$b"
  # The dfsg tree lacks the bundled zlib/png/expat/jpeg/tiff copies: the
  # ones of our prefix, no jpeg/tiff. It keeps PCRE2 and nanosvg: builtin.
  # wx's configure refuses options it does not know (no --enable-static).
  "$(srcdir wxwidgets3.2)/configure" --host="$HOST" --prefix="$PREFIX" --disable-shared \
    CC="$CC" CXX="$CXX" AR="$HOST-ar" RANLIB="$HOST-ranlib" \
    CPPFLAGS="-I$PREFIX/include" LDFLAGS="-L$PREFIX/lib" \
    --with-msw \
    --with-zlib=sys --with-libpng=sys --with-expat=sys --with-regex=builtin --with-nanosvg \
    --without-libjpeg --without-libtiff --without-liblzma --without-opengl \
    --disable-mediactrl --disable-webview --disable-stc \
    --enable-aui --enable-propgrid --enable-richtext --enable-html \
    --enable-webrequest --without-libcurl --with-winhttp \
    --disable-tests --without-subdirs
  "${NICE[@]}" make -j"$JOBS"
  make install
}

# GoogleTest from Debian's /usr/src/googletest with the same compiler.
build_gtest() {
  local b="$DIR/build/googletest"
  cmake -S /usr/src/googletest -B "$b" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$TOOLCHAIN" \
    -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX="$PREFIX" \
    -DBUILD_SHARED_LIBS=OFF -Dgtest_disable_pthreads=OFF
  "${NICE[@]}" cmake --build "$b" -j "$JOBS"
  cmake --install "$b"
}

run_logged zlib build_zlib
run_logged libpng1.6 build_autoconf libpng1.6 --without-binconfigs
run_logged expat build_expat
run_logged libsodium-autoreconf bash -c "cd '$(srcdir libsodium)' && autoreconf -fi"
run_logged libsodium build_autoconf libsodium --disable-pie
run_logged googletest build_gtest
run_logged wxwidgets3.2 build_wx

rm -rf "$DIR/build" "$DIR/src"
echo "$(( $(date +%s) - started ))" > "$DIR/build-seconds"
touch "$DIR/done"
log "built in $(cat "$DIR/build-seconds") s: $PREFIX"
echo "$PREFIX"
