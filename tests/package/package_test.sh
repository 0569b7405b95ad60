#!/usr/bin/env bash
# The product as somebody gets it: installed, moved to another folder, and used by programs that know nothing but that
# folder. Usage: package_test.sh BUILD CTEST-EMULATOR; the vectors and examples are those of this tree.
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$1 wine=$2
. "$root/tools/common.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
vectors=$root/tests/vectors
g++() { i686-w64-mingw32-g++-posix "$@"; }
passed=0
check() { # TITLE COMMAND...: its output is shown when it fails. A function's steps are joined by &&: set -e is off here
    "${@:2}" >"$work/output" 2>&1 || { cat "$work/output"; echo "package_test: failed: $1"; exit 1; }
    passed=$((passed + 1))
}
run() { "$wine" "$@" </dev/null | tr -d '\r'; } # a program's output; its exit code is the pipe's
set -o pipefail

cmake --install "$build" --prefix "$work/first" >/dev/null

# What lies there, and what it holds of the machine that built it: nothing.
files="bin/toolbelt.dll bin/toolbelt.dll.debug bin/toolbelt.exe bin/toolbelt.exe.debug include/toolbelt/toolbelt.h
include/toolbelt/toolbelt_c.h lib/libtoolbelt.dll.a lib/toolbelt.def lib/pkgconfig/toolbelt.pc
lib/cmake/toolbelt/toolbelt-config.cmake share/doc/toolbelt/licenses/json-parser.txt share/doc/toolbelt/examples/CMakeLists.txt"
for file in $files; do check "$file is installed" test -s "first/$file"; done
no_trace() { # the root may be a short path that others hold too, so its folders are looked for
    local status=0
    grep -rlF -e "$root/crypto" -e "$root/Includes" -e "$root/cli" -e "$build/" -e "$work" first || status=$?
    [ "$status" -eq 1 ]
}
check "nothing tells where it was built" no_trace
imports_itself() { i686-w64-mingw32-dlltool -d first/lib/toolbelt.def -l own.a && grep -aq 'toolbelt\.dll' own.a; }
check "toolbelt.def makes an import library of toolbelt.dll" imports_itself
small() { [ "$(stat -c %s first/bin/toolbelt.dll)" -lt 1500000 ]; }
check "the DLL is below 1.5 MB" small
at_load() { [ "$(i686-w64-mingw32-nm "$build/bin/toolbelt.dll" | sed -n 's/.*_GLOBAL__sub_I_//p')" = _ZN9__gnu_cxx9__freeresEv ]; }
check "the runtime's constructor alone runs when the DLL is loaded" at_load
sections() { i686-w64-mingw32-objdump -h "$1" | grep -c '\.debug_' || true; }
parted() { [ "$(sections "first/bin/$1")" = 0 ] && [ "$(sections "first/bin/$1.debug")" -gt 0 ] && i686-w64-mingw32-objdump -h "first/bin/$1" | grep gnu_debuglink; }
check "the DLL's symbols lie beside it" parted toolbelt.dll
check "the program's symbols lie beside it" parted toolbelt.exe

# Every header by itself; and no export without a header.
alone() { i686-w64-mingw32-g++-posix -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Werror -I first/include -x c++ -include "$1" /dev/null; }
export -f alone
check "every header compiles alone" bash -c 'cd first/include && find toolbelt -name "*.h" -printf "%p\0" | (cd ../.. && xargs -0 -P 2 -I {} bash -c "alone {}")'
marked() { (cd "$root" && grep -rlE '^[^/]*\bTB_API ' --include='*.h' crypto Includes json net) | while read -r header; do [ -e "first/include/toolbelt/$header" ] || { echo "$header"; return 1; }; done; }
check "every header with an export is installed" marked

# Somebody else's program, by find_package: where it was installed, and where it was moved to.
configure() { cmake -S "$1/share/doc/toolbelt/examples" -B "$2" -DCMAKE_PREFIX_PATH="$work/$1" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_SYSTEM_NAME=Windows \
    -DCMAKE_CXX_COMPILER=i686-w64-mingw32-g++-posix -DCMAKE_RC_COMPILER=i686-w64-mingw32-windres -G Ninja; }
check "a program finds the package" configure first program
check "it builds" cmake --build program --target check_chain
mv first "a moved folder"
check "a program finds the moved package" configure "a moved folder" examples
check "the examples build" cmake --build examples --parallel 2

chain() { # CODE VERDICT FILES...: what check_chain says of the first certificate
    local code=0
    (cd "$vectors/certificates" && cat "${@:3}") >chain.pem && { run "$exe/check_chain.exe" chain.pem >verdict || code=$?; } &&
        [ "$code" = "$1" ] && head -n 1 verdict | grep -qE ": $2\$"
}
for exe in program examples; do check "$exe: a chain holds" chain 0 ok a-leaf.pem a-inter.pem a-root.pem; done
check "a wrong signature is found" chain 1 "bad signature" bad-signature.pem a-inter.pem a-root.pem
check "an issuer that is no authority is found" chain 1 "issued by no authority" b-nonca-leaf.pem b-leaf.pem b-inter2.pem

signs() { # PROGRAM
    cp "$root/README.md" letter && [ "$(run "$1" "$vectors/keys/rsa2048.private.pem" letter letter.sig)" = "$(sha256sum <letter | cut -d ' ' -f 1)" ] &&
        openssl dgst -sha256 -verify "$vectors/keys/rsa2048.pub.pem" -signature letter.sig letter
}
check "a signature is read by openssl" signs examples/hash_and_sign.exe

hex() { od -An -vtx1 | tr -d ' \n'; }
encrypts() {
    head -c 32 /dev/urandom >key && run examples/encrypt_file.exe key letter letter.asc &&
        sed '/^[-=]/d' letter.asc | tr -d '\r' | base64 -d >letter.bin &&
        tail -c +17 letter.bin | openssl enc -d -aes-256-cfb -K "$(hex <key)" -iv "$(head -c 16 letter.bin | hex)" | cmp - letter &&
        run examples/encrypt_file.exe -d key letter.asc letter.again && cmp letter letter.again
}
check "a file is encrypted as openssl does, and back" encrypts

generates() {
    run examples/generate_key.exe 512 new.key new.pub >progress && grep -q 'Finds prime Q' progress && grep -q 'found after' progress &&
        openssl rsa -in new.key -check -noout && openssl rsa -in new.key -pubout | diff - <(tr -d '\r' <new.pub)
}
check "a new key is one to openssl" generates

dialog() { [ "$("$root/tools/with_screen.sh" "$wine" examples/coloured_dialog.exe 500 2>/dev/null </dev/null | tr -d '\r')" = OK ]; }
check "a dialog with a coloured header closes itself" dialog

# The same by pkg-config; and by a C compiler of another family, whose program knows the flat surface alone.
flags() { PKG_CONFIG_LIBDIR="a moved folder/lib/pkgconfig" pkgconf "$@" toolbelt; }
by_pkgconf() { # quoted as the shell takes it: the folder's name has blanks
    mkdir -p configured && eval "g++ -std=c++20 -static $(flags --cflags) '$root/examples/hash_and_sign.cpp' -o configured/sign.exe $(flags --libs)" &&
        cp "a moved folder/bin/toolbelt.dll" configured && signs configured/sign.exe
}
check "a program is built by pkg-config" by_pkgconf
by_clang() {
    mkdir -p other && clang --target=i686-w64-windows-gnu --sysroot=/usr/i686-w64-mingw32 --ld-path="$(command -v i686-w64-mingw32-ld)" \
        -L"$(dirname "$(i686-w64-mingw32-gcc-posix -print-libgcc-file-name)")" -std=c11 -Wall -Wextra -Wpedantic -Werror \
        -DTOOLBELT_VERSION="\"$(flags --modversion)\"" -I "a moved folder/include" "$root/tests/dll/c_surface_test.c" -o other/c.exe \
        -L "a moved folder/lib" -ltoolbelt && cp "a moved folder/bin/toolbelt.dll" other
}
check "clang builds a C program with the flat surface" by_clang

# What posts, beside a server. Into files: processes that Wine starts with the first post would hold a pipe open.
printf '{"name": "\303\244", "comment": "for me", "password": "secret"}' >document.json
with_server() {
    "$root/tests/net/with_server.py" bash -ec '
        "$1" examples/json_post.exe "http://127.0.0.1:${TOOLBELT_TEST_PORTS%% *}/json" document.json >posted
        "$2/tools/run_suite.sh" "$1" other/c.exe "$2/tests/vectors"' - "$wine" "$root" </dev/null
}
check "both programs post, and the C program's checks pass" with_server
posted() { tr -d '\r' <posted | grep -x 'method: POST' && grep -q '"name": *"ä"' posted && grep -q '"password": *""' posted && ! grep -q 'for me\|secret' posted; }
check "what is hidden is not in the document" posted

echo "package_test: $passed checks passed"
