#!/usr/bin/env bash
# Acts as another program: installs the library into an empty folder, builds examples/c with
# pkg-config and examples/cpp with CMake against it, and asks the example book. Then replaces the
# library by one of a later release, and asks again without building.
set -euo pipefail
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
  *__asan_*) export CFLAGS='-g -fsanitize=address,undefined' ;;
  *__tsan_*) export CFLAGS='-g -fsanitize=thread' ;;
  *) run=(valgrind --quiet --leak-check=full --error-exitcode=9) ;;
esac
export CXXFLAGS=${CFLAGS:-} LD_LIBRARY_PATH=$folder/usr/$libraries

cp -r examples/c examples/cpp "$folder"
PKG_CONFIG_PATH=$folder/usr/$libraries/pkgconfig make -s -C "$folder/c"
cmake -S "$folder/cpp" -B "$folder/cpp" -G Ninja -DCMAKE_PREFIX_PATH="$folder/usr" >/dev/null
cmake --build "$folder/cpp" >/dev/null

ask() {
  local words
  for words in 'pair a phone' phoe -bird; do
    "${run[@]}" "$folder/c/ask" "$folder/index" "$words" || echo "$?"
    "$folder/cpp/ask" "$folder/index" "$words" || echo "$?"
  done
  "${run[@]}" "$folder/c/ask" "$folder/no index" bird 2>&1 || echo "$?"
}
answers=$(ask)
grep -F '/en.lproj/phone.html  Larkfield on your [phone]' <<<"$answers"
grep -F '/en.lproj/phone.html  Larkfield on your phone' <<<"$answers"
grep -F 'Did you mean: phone' <<<"$answers"
grep -F 'No such file or directory' <<<"$answers"

cp "$later" "$folder/usr/$libraries/libquorvex.so.2"
diff <(echo "$answers") <(ask)
