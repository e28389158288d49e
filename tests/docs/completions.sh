#!/usr/bin/env bash
# completions.sh <folder of the completions>: the shells that are here can read theirs, and bash
# completes with it; every option that is offered is described in the man page.
set -euo pipefail
failed=0
root=$(cd "$(dirname "$0")/../.." && pwd)
cd "$1"

for command in quorvex quorvex-search; do
  bash -n "$command"
  if command -v zsh >/dev/null; then zsh -n "_$command"; fi
  if command -v fish >/dev/null; then fish -n "$command.fish"; fi
  for option in $(grep -oE -- ' --[A-Za-z-]+' "$command" | sort -u); do
    if ! grep -qE "Fl -${option#--}( |$)" "$root/man/$command.1"; then
      echo "$command $option: not in the man page"
      failed=1
    fi
  done
done

source ./quorvex
compopt() { :; } # only allowed while completing
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

exit "$failed"
