#!/usr/bin/env bash
# Two builds in different folders give the same bytes. Here a few objects, compiled anew from a copy of the tree in another
# folder, and a second link of the DLL; `./run package --verify` builds the whole anew. Usage: same_bytes_test.sh BUILD
set -eu
root=$(cd "$(dirname "$0")/../.." && pwd)
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CCACHE_DISABLE=1
mkdir "$work/build"
(cd "$root" && cp -r crypto Includes json net dll include "$work")

# elsewhere NAME: the command that makes this output, moved to the other folders.
elsewhere() {
    ninja -C "$build" -t commands -s "$1" | sed -e "s#$build#$work/build#g" -e "s#$root/\(crypto\|Includes\|json\|net\|dll\|include\)#$work/\1#g" \
        -e "s#-I$root\b#-I$work#g" -e "s#prefix-map=$root=#prefix-map=$work=#g"
}
# Files whose code or debug symbols name their source.
for object in Includes/system/CMakeFiles/tb_system.dir/advapi_dll.cpp.obj dll/CMakeFiles/toolbelt.dir/c_rsa.cpp.obj \
    crypto/bignum/CMakeFiles/tb_bignum.dir/gcd.cpp.obj; do
    mkdir -p "$work/build/$(dirname "$object")"
    (cd "$work/build" && bash -c "$(elsewhere "$object")")
    cmp "$build/$object" "$work/build/$object"
done
mkdir -p "$work/build/bin" "$work/build/dll"
(cd "$build" && bash -c "$(ninja -t commands -s bin/toolbelt.dll | sed -e "s#-o bin/#-o $work/build/bin/#" -e "s#implib,#implib,$work/build/#" -e "s#output-def,$build#output-def,$work/build#")")
cmp "$build/bin/toolbelt.dll" "$work/build/bin/toolbelt.dll"
cmp "$build/dll/libtoolbelt.dll.a" "$work/build/dll/libtoolbelt.dll.a"
echo "same_bytes_test: 3 objects, the DLL and its import library are the same"
