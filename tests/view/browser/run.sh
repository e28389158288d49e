#!/usr/bin/env bash
# run.sh PROGRAM [STORY…]: the stories, with folders and a browser profile of their own. Without a
# browser they are skipped, unless QUORVEX_NEEDS_BROWSER is set.
set -euo pipefail

browser=$(command -v chromium || true)
driver=$(command -v chromedriver || true)
python=/usr/bin/python3 # the one that has Debian's python3-selenium
if [[ -z $browser || -z $driver ]] || ! "$python" -c 'import selenium' 2>/dev/null; then
  echo "chromium, chromedriver or selenium is missing: scripts/setup browser" >&2
  [[ -z ${QUORVEX_NEEDS_BROWSER:-} ]] || exit 1
  exit 77
fi

home=$(mktemp -d)
trap 'rm -rf -- "$home"' EXIT
unset "${!XDG_@}"
HOME=$home TMPDIR=$home "$python" -B "$(dirname "$0")/stories.py" "$1" "$browser" "$driver" "${@:2}"
