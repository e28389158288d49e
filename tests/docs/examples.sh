#!/usr/bin/env bash
# examples.sh <folder of quorvex> <page>…: does what the pages show and compares what comes out.
#
# A block of code behind "<!-- file: NAME -->" is written to that file. In a block marked "console", a
# line that begins with "$ " is run, and the lines up to the next one are what it prints; "…" stands
# for any text, line breaks included.
set -euo pipefail

PATH=$(cd "$1" && pwd):$PATH
shift
pages=("${@/#/"$PWD"/}")
examples=$PWD/examples
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
failed=0

finish_command() {
  [[ -n $command ]] || return 0
  local printed pattern
  printed=$(bash -c "$command" 2>&1 || true)
  # Everything is literal but the ellipsis; blank lines at the end do not count, here as above.
  pattern=$(sed 's/[][*?\\()|!+@]/\\&/g; s/…/*/g' <<<"$expected")
  # shellcheck disable=SC2053
  if [[ $printed != $pattern ]]; then
    printf '%s\n$ %s\n' "$page" "$command"
    diff <(echo "$expected") <(echo "$printed") || true
    failed=1
  fi
  command=
}

for page in "${pages[@]}"; do
  mkdir "$scratch/run"
  cd "$scratch/run"
  ln -s "$examples" examples
  state=text file= command= expected= indent=
  while IFS= read -r line; do
    # Inside a list everything stands two columns to the right.
    if [[ $state == text ]]; then
      indent=${line%%[![:space:]]*}
    fi
    line=${line#"$indent"}
    case $state:$line in
      'text:<!-- file: '*) file=${line#<!-- file: } file=${file% -->} ;;
      'text:```console') state=console ;;
      'text:```'*)
        state=block
        if [[ -n $file ]]; then
          mkdir -p "$(dirname "$file")"
          : >"$file"
        fi
        ;;
      'console:$ '*)
        finish_command
        command=${line#\$ } expected=
        ;;
      'console:```')
        finish_command
        state=text
        ;;
      'block:```') state=text file= ;;
      console:*) expected+=${expected:+$'\n'}$line ;;
      block:*) if [[ -n $file ]]; then printf '%s\n' "$line" >>"$file"; fi ;;
    esac
  done <"$page"
  cd /
  rm -r "$scratch/run"
done
exit "$failed"
