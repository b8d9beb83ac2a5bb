#!/usr/bin/env bash
# What is installed to a prefix of one's own works from there: programs, examples built by find_package and
# by pkg-config, the Python package; headers in every standard that they are for.
# Usage: check_install.sh BUILD_FOLDER
build=$(realpath "$1")
. "$(dirname "${BASH_SOURCE[0]}")/../system/lib.sh" "$build/bin"
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" > installed
lib=$(dirname "$(find "$prefix" -name libnuvprinter.so)")
[ "$(du -sm "$prefix" | cut -f 1)" -lt 20 ] || wrong "$(du -sm "$prefix") MB: is it stripped?"
for file in share/man/man1/nuvctl.1 share/bash-completion/completions/nuvctl lib/udev/rules.d/70-nuvconnect5.rules \
  share/doc/NuvConnect5/examples/find_printers.cpp share/doc/NuvConnect5/README.md; do
  [ -e "$prefix/$file" ] || wrong "no $file"
done

# compiles LANGUAGE STANDARD HEADER...
compiles() {
  printf '#include <%s>\n' "${@:3}" | c++ -x "$1" "-std=$2" -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror \
    -I "$prefix/include" -fsyntax-only - 2> err || wrong "$*"
}
for standard in c99 c11; do
  compiles c "$standard" nuvconnect/NuvConnect5.h nuvprinter/nuvprinter.h nuvfile/NuvFile.h
done
for standard in c++11 c++14 c++17 c++20; do
  compiles c++ "$standard" nuvprinter/nuvprinter.h nuvconnect/IConnectingFramework.h nuvconnect/NuvConnect5.h
done
compiles c++ c++17 nuvconnect/NuvConnect5.h nuvprinter/nuvprinter.hpp
echo '#include <nuvprinter/nuvprinter.hpp>' | c++ -x c++ -std=c++14 -I "$prefix/include" -fsyntax-only - 2> err &&
  wrong "C++14"
grep -q 'nuvprinter.hpp needs C++17' err || wrong "the reason"

mv "$prefix" "$work/moved"
prefix=$work/moved lib=${lib/prefix/moved}
export PKG_CONFIG_PATH=$lib/pkgconfig
start_nuvsim log --address 127.0.0.1 --serial SN1
seq -f 'G1 X%g' 3 > lines
expect 0 "$prefix/bin/nuvfile" create --machine-id 3DPSNKG53WTW00001 lines crown.nuv
expect 0 "$prefix/bin/nuvctl" --address 127.0.0.1 send crown.nuv
cmake -S "$prefix/share/doc/NuvConnect5/examples" -B examples -DCMAKE_PREFIX_PATH="$prefix" > log2
cmake --build examples > log2
expect 0 examples/find_printers 127.0.0.1
grep -q SN1 out || wrong "the list"
# shellcheck disable=SC2046
cc -std=c99 "$prefix/share/doc/NuvConnect5/examples/list_printers.c" $(pkg-config --cflags --libs nuvprinter) -o by_hand
expect 0 env LD_LIBRARY_PATH="$lib" ./by_hand 127.0.0.1
grep -q SN1 out || wrong "the list by hand"
# shellcheck disable=SC2046
cc "$prefix/share/doc/NuvConnect5/examples/print_file.c" $(pkg-config --cflags --libs nuvconnect5) -o by_hand
expect 0 env LD_LIBRARY_PATH="$lib" PYTHONPATH="$prefix/lib/python3/dist-packages" /usr/bin/python3 -m nuvprinter list 127.0.0.1

# wants VERSION COMPONENT: an exit code.
wants() {
  mkdir -p want
  printf 'cmake_minimum_required(VERSION 3.16)\nproject(p C)\nfind_package(NuvConnect5 %s REQUIRED COMPONENTS %s)\n' "$@" \
    > want/CMakeLists.txt
  rm -rf want/build
  cmake -S want -B want/build -DCMAKE_PREFIX_PATH="$prefix" > out 2> err
}
wants 0.1 tools || wrong "the programs"
wants 0.2 connect && wrong "0.1 for 0.2"
sed -i 's/0\.1\.0/0.2.0/' "$lib/cmake/NuvConnect5/NuvConnect5ConfigVersion.cmake"
wants 0.1 connect && wrong "0.2 for 0.1"
wants 0.2 nothing && wrong "a component that there is not"
grep -q 'component nothing is not installed' err || wrong "the reason"
finish "what is installed works from a prefix of one's own"
