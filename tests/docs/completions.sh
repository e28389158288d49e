#!/usr/bin/env bash
# completions.sh <folder of the completions>: the installed shells can read their files, bash
# completes with its own, and the offered options are those in the man page.
set -euo pipefail
failed=0
root=$(cd "$(dirname "$0")/../.." && pwd)
cd "$1"

for command in quorvex quorvex-search quorvex-view quorvex-progress; do
  bash -n "$command"
  if command -v zsh >/dev/null; then zsh -n "_$command"; fi
  if command -v fish >/dev/null; then fish -n "$command.fish"; fi
  if ! diff <(grep -oE -- ' --[A-Za-z-]+' "$command" | tr -d ' ' | sort -u) \
    <(grep -E '^\.It Fl' "$root/man/$command.1" | grep -oE 'Fl -[A-Za-z-]+' | sed 's/Fl /-/' | sort -u); then
    echo "$command: offered (<) and described in the man page (>) are not the same"
    failed=1
  fi
done

source ./quorvex
source ./quorvex-progress
source ./quorvex-view
compopt() { :; } # only allowed while completing
pgrep() { echo 1234; }
completes() { # expected, command, words…
  local expected=$1
  shift
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  "_$1" || true # compgen fails where nothing fits
  if [[ ${COMPREPLY[*]} != "$expected" ]]; then
    echo "$*: expected '$expected', got '${COMPREPLY[*]}'"
    failed=1
  fi
}
completes '--list-files --list-file-terms' quorvex --list-f
completes 'beacon' quorvex -I b
completes 'lsm beacon' quorvex --index-format =
completes 'quorvex.fish' quorvex -C -f quorvex.f
completes '' quorvex -r
completes '' quorvex-view quorvex-view.f
completes 'quorvex-view.fish' quorvex-view --book = .. quorvex-view.f
completes '--help' quorvex-progress --h
completes '1234' quorvex-progress 1

exit "$failed"
