# The commands that scripts/bench measures. Sourced; needs $work, $out, $quorvex and $bench.
# shellcheck shell=bash
# shellcheck disable=SC2034,SC2154 # set by and for scripts/bench

have() { command -v "$1" >/dev/null; }

# The allocator that quorvex links, so that the bare parse gets it, too.
allocator_library() {
  ldconfig -p 2>/dev/null | sed -n 's/.* => \(.*libmimalloc\.so[.0-9]*\)$/\1/p' | head -n 1
}

# A 48 by 48 picture, which zimwriterfs requires; one white one does for every book.
picture=iVBORw0KGgoAAAANSUhEUgAAADAAAAAwAQAAAAB/ecQqAAAAEElEQVR4nGP4DwUMo4xBywAAGJKPcepcR3AAAAAASUVORK5CYII=

# Prepares $out for the tool $1, which makes something of the pages in $2, and sets `command`; fails
# without the tool.
prepare() {
  local tool=$1 pages=$2
  rm -rf "$out" "$out.conf"
  mkdir -p "$out"
  local index=$out/i.bchelpindex
  case $tool in
    floor) command=(env "LD_PRELOAD=$allocator" "$bench/floor" "$pages") ;;
    bare-floor) command=("$bench/floor" "$pages") ;;
    queries) command=(env "LD_PRELOAD=$allocator" "$bench/floor" --queries "$pages") ;;
    quorvex-lsm) command=("$quorvex" -C -I lsm -a -s en -l en -f "$index" "$pages") ;;
    quorvex-lsm-1) command=("$quorvex" -1 -C -I lsm -a -s en -l en -f "$index" "$pages") ;;
    quorvex-beacon) command=("$quorvex" -C -I beacon -a -f "$index" "$pages") ;;
    quorvex-fts) command=("$bench/full_text_only" "$pages" "$out/i") ;;
    swish-e)
      have swish-e || return 1
      printf 'IndexOnly .html .htm\nDefaultContents HTML2\nParserWarnLevel 0\n' >"$out.conf"
      command=(swish-e -v 0 -c "$out.conf" -i "$pages" -f "$out/index") ;;
    omindex)
      have omindex || return 1
      command=(omindex --db "$out/db" --url / "$pages") ;;
    recollindex)
      have recollindex || return 1
      mkdir -p "$out.conf"
      printf 'topdirs = %s\nloglevel = 1\ncachedir = %s\n' "$pages" "$out" >"$out.conf/recoll.conf"
      command=(recollindex -c "$out.conf" -z) ;;
    pagefind)
      have pagefind || return 1
      command=(pagefind --site "$pages" --output-path "$out") ;;
    qhelpgenerator)
      have qhelpgenerator || return 1
      local project name
      name=$(basename "$pages")
      project=$pages/../$name.qhp
      { echo '<?xml version="1.0"?><QtHelpProject version="1.0"><namespace>b</namespace>'
        echo '<virtualFolder>d</virtualFolder><filterSection><files>'
        (cd "$pages" && find . -type f |
          sed "s/&/\&amp;/g;s/</\&lt;/g;s|^\./\(.*\)|<file>$name/\1</file>|")
        echo '</files></filterSection></QtHelpProject>'; } >"$project"
      command=(qhelpgenerator "$project" -o "$out/b.qch") ;;
    zimwriterfs)
      have zimwriterfs || return 1
      base64 -d <<<"$picture" >"$pages/quorvex-bench.png"
      local first
      first=$(cd "$pages" && find . -name '*.html' | sort | sed -n 1p)
      command=(zimwriterfs "--welcome=${first#./}" --illustration=quorvex-bench.png --language=eng
        --name=b --title=b --description=b --creator=b --publisher=b "$pages" "$out/b.zim") ;;
    *) return 1 ;;
  esac
}

# What people ask: a task, a name, a phrase, one word, and a misspelt one.
questions=("read a file line by line" "HashMap" '"default value"' "sort" "concurrrent queue")

# record BOOK TOOL ROUND COMMAND…: one line of results; up to $accepted is a good exit status.
accepted=0
record() {
  local book=$1 tool=$2 round=$3 status=0
  shift 3
  rm -f "$work/time"
  "$bench/timed" "$work/time" "$@" >"$work/log" 2>&1 </dev/null || status=$?
  if ((status > accepted)); then
    echo "$tool failed on $book ($status): $(tail -n 1 "$work/log")" >&2
    return
  fi
  printf '%s\t%s\t%s\t%s\t%s\n' "$book" "$tool" "$round" "$(cat "$work/time")" \
    "$(find "$out" -type f -printf '%s\n' | awk '{ sum += $1 } END { printf "%d", sum }')" >>"$results"
}

# Searches from process start to answers, each next to the reference, a bare parse of the example
# book: about as short, and independent of what is measured.
measure_search() {  # book, tool, round, index
  local run question accepted=1 # nothing found
  for ((run = 0; run < searches; ++run)); do
    for question in "${questions[@]}"; do
      record "$1" start "$3" "$bench/floor" examples/larkfield
      record "$1" "$2" "$3" "$quorvex_search" "$4" "$question"
    done
  done
}

# measure BOOK TOOL ROUND: measures it once; silently nothing if the tool is not installed.
measure() {
  local book=$1 tool=$2 round=$3 index pages command run
  pages=$(pages_of "$book")
  case $tool in
    search-lsm | list-? | library) index=$(index_of "$book" lsm) ;;
    search-beacon*) index=$(index_of "$book" beacon) ;;
    *)
      prepare "$tool" "$pages" || return 0
      record "$book" "$tool" "$round" "${command[@]}"
      rm -f "$pages/quorvex-bench.png"
      return ;;
  esac
  rm -rf "$out"
  mkdir -p "$out"
  case $tool in
    search-lsm) measure_search "$book" "$tool" "$round" "$index" ;;
    search-beacon)
      "$quorvex_search" "$index" "${questions[0]}" >/dev/null || true # fills the cache
      measure_search "$book" "$tool" "$round" "$index" ;;
    search-beacon-first)
      rm -rf "$XDG_CACHE_HOME/quorvex"
      accepted=1 record "$book" "$tool" "$round" "$quorvex_search" "$index" "${questions[0]}" ;;
    list-?) record "$book" "$tool" "$round" "$quorvex" "-${tool#list-}" -I lsm -f "$index" ;;
    library)
      for ((run = 0; run < searches; ++run)); do
        record "$book" start "$round" "$bench/floor" examples/larkfield
      done
      record "$book" library-process "$round" "$bench/search_latency" "$index"
      # Processor time of one of a thousand searches, by words and meaning, ten answers each.
      sed -n 's/^both .*median *\([0-9.]*\) ms *99th percentile *\([0-9.]*\) ms.*/\1 \2/p' "$work/log" |
        while read -r median most; do
          printf '%s\t%s\t%s\t%s\t%s\t0\t0\t0\n' "$book" library "$round" "$median" "$median" \
            "$book" library-99 "$round" "$most" "$most" >>"$results"
        done ;;
  esac
}
