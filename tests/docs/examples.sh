#!/usr/bin/env bash
# examples.sh <build folder> <page>…: runs what the pages show, in order and in one folder, and
# compares the output. CONTRIBUTING.md explains the marks.
set -euo pipefail

sources=$PWD
build=$(cd "$1" && pwd)
shift
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

mkdir -p "$scratch/run/build" "$scratch/bin"
# shellcheck disable=SC2016
printf '#!/bin/sh\nexec "$@"\n' >"$scratch/bin/sudo"
chmod +x "$scratch/bin/sudo"
export PATH=$scratch/bin:$build:$PATH
# Installs into a separate root, where CMake looks for it.
export DESTDIR=$scratch/root CMAKE_PREFIX_PATH=$scratch/root/usr
export XDG_CACHE_HOME=$scratch/cache
cd "$scratch/run"
ln -s "$sources/examples" examples
ln -s "$sources/examples/larkfield/en.lproj" en.lproj
ln -s "$build" build/release

complain() {
  printf '%s: %s\n' "$page" "$*"
  failed=1
}

# The command, with the example book if the page's book is missing.
here() { printf '%s' "${1//"${missing:-/dev/null/none}"/examples/larkfield/en.lproj}"; }

finish_command() {
  [[ -n $command ]] || return 0
  local printed pattern status=0
  printed=$(bash -c "$(here "$command")" 2>&1) || status=$?
  # Everything is literal but the ellipsis; trailing blank lines are ignored, as above.
  pattern=$(sed 's/[][*?\\()|!+@]/\\&/g; s/…/*/g' <<<"$expected")
  # shellcheck disable=SC2053
  if [[ -n $missing ]]; then
    # The example book may not answer a question about another one.
    [[ $status -le 1 ]] || complain "ended with $status: $command"$'\n'"$printed"
  elif [[ $printed != $pattern ]]; then
    complain "$ $command"
    diff <(echo "$expected") <(echo "$printed") || true
  fi
  command=
}

stands_in() { # file of the sources, line
  grep -qF -- "$2" "$sources/$1" || complain "not in $1: $2"
}

block_line() {
  local line=$1 printed
  if [[ $marker == 'file: '* ]]; then
    printf '%s\n' "$line" >>"${marker#file: }"
  elif [[ -z ${line// /} ]]; then
    return
  elif [[ $marker == 'part of: '* ]]; then
    stands_in "${marker#part of: }" "$line"
  elif [[ $marker == 'run by: '* ]]; then
    line=${line%%#*}
    line=${line%"${line##*[! ]}"}
    stands_in "${marker#run by: }" "$line"
  elif [[ $language == sh ]]; then
    printed=$(bash -c "$(here "$line")" 2>&1) || complain "failed: $line"$'\n'"$printed"
  elif [[ -z $language ]]; then
    complain "nothing tells what becomes of: $line"
  fi
}

follow() {  # reads a page of Markdown
  local line state=text marker='' language='' command='' expected='' indent='' missing=''
  while IFS= read -r line; do
    # Inside a list everything is indented by two columns.
    if [[ $state == text ]]; then
      indent=${line%%[![:space:]]*}
    fi
    line=${line#"$indent"}
    case $state:$line in
      'text:<!-- book: '*)
        missing=${line#<!-- book: } missing=${missing% -->}
        if [[ -d $missing ]]; then missing=''; fi
        ;;
      'text:<!-- '*) marker=${line#<!-- } marker=${marker% -->} ;;
      'text:|'*)
        if [[ $marker == 'table of: '* ]]; then stands_in "${marker#table of: }" "$line"; fi
        ;;
      'text:```console') state=console ;;
      'text:```'*)
        state=block language=${line#'```'}
        if [[ $marker == 'file: '* ]]; then
          mkdir -p "$(dirname "${marker#file: }")"
          : >"${marker#file: }"
        fi
        ;;
      'console:$ '*)
        finish_command
        command=${line#\$ } expected=
        ;;
      'console:```')
        finish_command
        state=text marker=
        ;;
      'block:```') state=text marker= ;;
      console:*) expected+=${expected:+$'\n'}$line ;;
      block:*) block_line "$line" ;;
    esac
  done
}

man_page_blocks() {
  sed -n '/^\.Bd -literal/,/^\.Ed/{s/^\.Bd.*/```sh/; s/^\.Ed/```/; s/\\e/\\/g; s/\\(dq/"/g; p}' "$1"
}

for page in "$@"; do
  case $page in
    *.md) follow <"$sources/$page" ;;
    *) follow < <(man_page_blocks "$sources/$page") ;;
  esac
done
exit "$failed"
