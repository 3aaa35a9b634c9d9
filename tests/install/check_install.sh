#!/usr/bin/env bash
# Installs the built library into a temporary prefix, then builds the demo against that
# installed tree alone: once with find_package, once with pkg-config. Prints a ctest-style line.
set -euo pipefail
build=${1:-build}
src=$(cd "$(dirname "$0")/../.." && pwd)
prefix=$(mktemp -d)
work=$(mktemp -d)
trap 'rm -rf "$prefix" "$work"' EXIT

cmake --install "$build" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name 'libnq_tls20an.so' | head -1)")

# find_package(nq_tls20an)
mkdir -p "$work/cm"
cat > "$work/cm/CMakeLists.txt" <<CM
cmake_minimum_required(VERSION 3.25)
project(use_nq C)
find_package(nq_tls20an REQUIRED)
add_executable(demo $src/examples/demo.c)
target_link_libraries(demo PRIVATE nq_tls20an::nq_tls20an)
CM
cmake -S "$work/cm" -B "$work/cm/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cm/build" >/dev/null
LD_LIBRARY_PATH="$libdir" "$work/cm/build/demo" >/dev/null

# pkg-config
export PKG_CONFIG_PATH="$libdir/pkgconfig"
cc -std=c11 -o "$work/demo_pc" "$src/examples/demo.c" $(pkg-config --cflags --libs nq_tls20an)
LD_LIBRARY_PATH="$libdir" "$work/demo_pc" >/dev/null

soname=$(objdump -p "$libdir/libnq_tls20an.so" | awk '/SONAME/ {print $2}')
[[ "$soname" == libnq_tls20an.so.* ]] || { echo "unexpected SONAME: $soname"; exit 1; }
# Only the library's own names are exported.
foreign=$(nm -D --defined-only "$libdir/libnq_tls20an.so" | awk '{print $3}' | grep -v -E '^(nq_|NQ_)' || true)
[[ -z "$foreign" ]] || { echo "exported names outside the interface:"; echo "$foreign"; exit 1; }
echo "install: 3 passed, 0 failed"
