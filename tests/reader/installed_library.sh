#!/usr/bin/env bash
# Acts as another program: installs the library into an empty folder, builds examples/c with
# pkg-config and examples/cpp with CMake against it, and asks the example book. Then replaces the
# library by one of a later release, and asks again without building.
set -euo pipefail
shopt -s inherit_errexit
build=$1 libraries=$2 quorvex=$3 library=$4 later=$5
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

for component in library development; do
  cmake --install "$build/src/reader" --prefix "$folder/usr" --component "$component" >/dev/null
done
"$quorvex" -Cf "$folder/index" -I lsm examples/larkfield

# A library built with a sanitizer needs programs that have it, too.
symbols=$(nm -D "$library")
run=()
case $symbols in
  *__asan_*) export CFLAGS='-g -fsanitize=address,undefined -fno-sanitize-recover=all' ;;
  *__tsan_*) export CFLAGS='-g -fsanitize=thread' ;;
  *) run=(valgrind --quiet --leak-check=full --error-exitcode=9) ;;
esac
export CXXFLAGS=${CFLAGS:-} LD_LIBRARY_PATH=$folder/usr/$libraries

mkdir "$folder/c" "$folder/cpp"
cp examples/c/{Makefile,ask.c} "$folder/c"
cp examples/cpp/{CMakeLists.txt,ask.cpp} "$folder/cpp"
PKG_CONFIG_PATH=$folder/usr/$libraries/pkgconfig make -s -C "$folder/c"
cmake -S "$folder/cpp" -B "$folder/cpp" -G Ninja -DCMAKE_PREFIX_PATH="$folder/usr" >/dev/null
cmake --build "$folder/cpp" >/dev/null

ask() { # expected status, command…
  local expected=$1 status=0
  shift
  "$@" || status=$?
  [[ $status -eq $expected ]] || { echo "ended with $status: $*" >&2 && return 1; }
}
ask_all() {
  local program
  for program in c cpp; do
    if [[ $program == cpp ]]; then run=(); fi
    ask 0 "${run[@]}" "$folder/$program/ask" "$folder/index" 'pair a phone'
    ask 0 "${run[@]}" "$folder/$program/ask" "$folder/index" 'pair a phoe'
    ask 1 "${run[@]}" "$folder/$program/ask" "$folder/index" -bird
    ask 2 "${run[@]}" "$folder/$program/ask" "$folder/no index" bird 2>&1
  done
}
answers=$(ask_all)
grep -F '/en.lproj/phone.html  Larkfield on your [phone]' <<<"$answers"
grep -F '/en.lproj/phone.html  Larkfield on your phone' <<<"$answers"
grep -F 'Searched for: pair a phone' <<<"$answers"
grep -F 'No such file or directory' <<<"$answers"

cp "$later" "$folder/usr/$libraries/$(basename "$later")"
later_answers=$(ask_all)
diff <(echo "$answers") <(echo "$later_answers")
nm -D "$folder/usr/$libraries/$(basename "$later")" | grep -F quorvex_hit_later
