#!/usr/bin/env bash
# Installs the library into an empty folder, builds the program of docs/searching.md against it with
# CMake and with pkg-config, and searches the example book with both.
set -euo pipefail
build=$1 libraries=$2 quorvex=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

for component in library development; do
  cmake --install "$build/src/reader" --prefix "$folder/usr" --component "$component" >/dev/null
done
mkdir "$folder/program"
sed -n '/^```cpp$/,/^```$/p' docs/searching.md | sed '/^```/d' >"$folder/program/ask.cpp"
sed -n '/^```cmake$/,/^```$/p' docs/searching.md | sed '/^```/d' >"$folder/program/CMakeLists.txt"
"$quorvex" -Cf "$folder/index" -I lsm examples/larkfield

# A library built with a sanitizer needs programs that have it too.
symbols=$(nm -D "$4")
if [[ $symbols == *__asan_* ]]; then export LD_PRELOAD=$(gcc -print-file-name=libasan.so); fi
if [[ $symbols == *__tsan_* ]]; then export CXXFLAGS=-fsanitize=thread; fi

LD_PRELOAD='' cmake -S "$folder/program" -B "$folder/program/build" -G Ninja \
  -DCMAKE_PREFIX_PATH="$folder/usr" >/dev/null
LD_PRELOAD='' cmake --build "$folder/program/build" >/dev/null
ASAN_OPTIONS=detect_leaks=0 "$folder/program/build/ask" "$folder/index" photos | grep '/'

export PKG_CONFIG_PATH=$folder/usr/$libraries/pkgconfig
flags=$(LD_PRELOAD='' pkg-config --define-variable=prefix="$folder/usr" --cflags --libs quorvex)
# shellcheck disable=SC2086  # flags are several words
LD_PRELOAD='' g++ -std=c++20 ${CXXFLAGS:-} "$folder/program/ask.cpp" $flags -o "$folder/ask"
LD_LIBRARY_PATH=$folder/usr/$libraries ASAN_OPTIONS=detect_leaks=0 "$folder/ask" "$folder/index" photos | grep '/'
