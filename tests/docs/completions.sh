#!/usr/bin/env bash
# completions.sh <folder of the completions>: the shells that are here can read theirs, and bash
# completes with it; every option that is offered is described in the man page and the README.
set -euo pipefail
root=$(cd "$(dirname "$0")/../.." && pwd)
cd "$1"

bash -n quorvex
if command -v zsh >/dev/null; then zsh -n _quorvex; fi
if command -v fish >/dev/null; then fish -n quorvex.fish; fi

source ./quorvex
compopt() { :; } # only allowed while completing
failed=0
completes() { # expected, words…
  local expected=$1
  shift
  COMP_WORDS=(quorvex "$@") COMP_CWORD=$#
  _quorvex || true # compgen fails where nothing fits
  if [[ ${COMPREPLY[*]} != "$expected" ]]; then
    echo "quorvex $*: expected '$expected', got '${COMPREPLY[*]}'"
    failed=1
  fi
}
completes '--list-files --list-file-terms' --list-f
completes 'beacon' -I b
completes 'lsm beacon' --index-format =
completes 'quorvex.fish' -C -f quorvex.f
completes '' -r

for option in $(grep -oE -- ' --[A-Za-z-]+' quorvex | sort -u); do
  grep -qE "Fl -${option#--}( |$)" "$root/man/quorvex.1" || { echo "$option: not in the man page"; failed=1; }
  grep -qF -- "\`$option" "$root/README.md" || { echo "$option: not in the README"; failed=1; }
done
exit "$failed"
