# The books that scripts/bench measures. Sourced; needs $work, $timed's programs and $quorvex.
# shellcheck shell=bash
# shellcheck disable=SC2154 # set by scripts/bench

installed="python3 postgresql cppreference openjdk rust handbook"

newest() { printf '%s\n' "$@" | sort -V | tail -n 1; }
source_of() {
  case $1 in
    python3) newest /usr/share/doc/python3*/html ;;
    postgresql) newest /usr/share/doc/postgresql-doc-*/html ;;
    cppreference) echo /usr/share/cppreference ;;
    openjdk) newest /usr/share/doc/openjdk-*-doc ;;
    rust) echo /usr/share/doc/rust-doc/html ;;
    handbook) echo /usr/share/doc/debian-handbook/html ;;
    handbook-ja) echo /usr/share/doc/debian-handbook/html/ja-JP ;;
  esac
}

# Copies only the pages, with links resolved, so that every tool sees the same files.
copy_pages() {  # source, target
  (cd -L "$1" && find -L . -type f \( -iname '*.html' -o -iname '*.htm' \) -print0) |
    (cd "$1" && xargs -0 cp -L --parents -t "$2")
}

# A book of $2 pages in the folder $1: the installed books again and again, by hard links.
repeat_books() {
  local left=$2 copy book pages count
  for ((copy = 1; left > 0; ++copy)); do
    local before=$left
    for book in $installed; do
      pages=$(pages_of "$book") || continue
      count=$(find "$pages" -type f | wc -l)
      if ((count <= left)); then
        mkdir -p "$1/$copy"
        cp -al "$pages" "$1/$copy/$book"
      else
        mkdir -p "$1/$copy/$book"
        count=$left
        # sort reads everything before head ends it, unlike find
        (cd "$pages" && find . -type f | LC_ALL=C sort | sed -n "1,${left}p" | tr '\n' '\0' |
          xargs -0 -r cp -l --parents -t "$1/$copy/$book")
      fi
      left=$((left - count))
      if ((left == 0)); then return; fi
    done
    ((left < before)) || return 1 # no book is installed
  done
}

# Prints the folder with the pages of a book; makes it the first time. A number stands for a book of
# that many pages. Fails if the book is not installed.
pages_of() {
  local source target=$work/books/$1
  if [[ ! -d $target ]]; then
    rm -rf "$target.partial"
    mkdir -p "$target.partial"
    if [[ $1 =~ ^[1-9][0-9]*$ ]]; then
      repeat_books "$target.partial" "$1" || return 1
    else
      source=$(source_of "$1")
      if [[ -z $source || ! -d $source ]]; then rmdir "$target.partial"; return 1; fi
      copy_pages "$source" "$target.partial"
    fi
    mv "$target.partial" "$target"
  fi
  echo "$target"
}

# The index of a book in the form lsm or beacon, made again if the program is newer.
index_of() {  # book, form
  local index=$work/indexes/$1.$2.bchelpindex options=(-I "$2" -a)
  if [[ ! $index -nt $quorvex ]]; then
    mkdir -p "$work/indexes"
    if [[ $2 == lsm ]]; then options+=(-s en -l en); fi
    "$quorvex" -C "${options[@]}" -f "$index" "$(pages_of "$1")" >/dev/null
  fi
  echo "$index"
}
