# Sourced by every script: strict mode, the tree's root, headings, privileges.
# shellcheck shell=bash
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
cd "$root"

heading() { printf '\n==== %s\n' "$*"; }
note() { printf '     %s\n' "$*"; }
fail() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

cores() { nproc 2>/dev/null || echo 2; }

# Runs a command as root: directly if we are root, else through sudo. Without a terminal for a
# password, sudo fails instead of prompting.
as_root() {
  if [[ $(id -u) -eq 0 ]]; then
    "$@"
  elif ! command -v sudo >/dev/null; then
    return 127
  elif [[ -z ${CI:-} ]] && { : </dev/tty; } 2>/dev/null; then
    sudo "$@"
  else
    sudo -n "$@"
  fi
}

# configure [--programs] <preset>: CMake's configure step, with ccache if installed. --programs
# leaves out the tests, benches and fuzz drivers, which need more packages, unless the folder is
# already configured with them.
configure() {
  local options=()
  if [[ $1 == --programs ]]; then
    shift
    if [[ ! -e build/$1/build.ninja ]] ||
      ! grep -qs '^QUORVEX_BUILD_TESTS:.*=ON$' "build/$1/CMakeCache.txt"; then
      options=(-DQUORVEX_BUILD_TESTS=OFF -DQUORVEX_BUILD_BENCH=OFF -DQUORVEX_BUILD_FUZZ=OFF)
    fi
  fi
  local log="build/$1.configure.log"
  mkdir -p build
  if command -v ccache >/dev/null; then options+=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
  if ! cmake --preset "$1" "${options[@]}" >"$log" 2>&1; then
    cat "$log"
    fail "configuring preset $1 failed"
  fi
  grep -h 'page trees was not tried' "$log" || true
}

# build [--programs] <preset> [target…]: configure and build.
build() {
  local what=() targets=()
  if [[ $1 == --programs ]]; then
    what=(--programs)
    shift
  fi
  local preset=$1
  shift
  if [[ $# -gt 0 ]]; then targets=(--target "$@"); fi
  configure "${what[@]}" "$preset"
  cmake --build --preset "$preset" --parallel "$(cores)" "${targets[@]}"
}
