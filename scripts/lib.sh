# Shared by scripts/test and scripts/demo: installing what is missing.
# shellcheck shell=bash

EFFECTS_ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
export EFFECTS_ROOT

say() { printf '==> %s\n' "$*"; }
die() { printf 'error: %s\n' "$*" >&2; exit 2; }

# Installs the Debian packages that are not installed yet. Quick when all are
# there; a failing 'apt-get update' is tolerated (the old index may do).
ensure_packages() {
  local missing=() p
  for p in "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
  done
  [[ ${#missing[@]} -eq 0 ]] && return 0
  say "installing: ${missing[*]}"
  local sudo=()
  if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || die "missing packages ${missing[*]} and no root rights to install them"
    sudo=(sudo)
  fi
  command -v apt-get >/dev/null || die "missing packages ${missing[*]} and no apt-get to install them"
  "${sudo[@]}" apt-get update -qq >/dev/null 2>&1 || say "apt-get update failed; trying the existing index"
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null \
    || die "could not install: ${missing[*]}"
}

NATIVE_PACKAGES=(cmake make g++ googletest libpng-dev libmpfr-dev pkg-config binutils file python3 python3-numpy python3-pytest)
WINDOWS_PACKAGES=(g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix binutils-mingw-w64-x86-64 binutils-mingw-w64-i686 wine64)
CHECK_PACKAGES=(python3 clang libclang-rt-14-dev imagemagick openimageio-tools)
X86_PACKAGES=(g++-multilib qemu-user)

# The 64-bit Wine launcher lives outside PATH on Debian.
wine64_launcher() {
  local w
  for w in /usr/lib/wine/wine64 "$(command -v wine64 2>/dev/null)"; do
    [[ -n "$w" && -x "$w" ]] && { echo "$w"; return 0; }
  done
  return 1
}

configure_and_build() {  # preset [targets...]
  local preset=$1; shift
  local log="$EFFECTS_ROOT/build/logs/$preset.log"
  mkdir -p "$EFFECTS_ROOT/build/logs"
  (cd "$EFFECTS_ROOT" && cmake --preset "$preset" && \
     if [[ $# -gt 0 ]]; then cmake --build --preset "$preset" -j"$(nproc)" --target "$@";
     else cmake --build --preset "$preset" -j"$(nproc)"; fi) >"$log" 2>&1
}
