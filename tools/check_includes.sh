#!/usr/bin/env bash
# Checks the direction of the #includes between the layers: each group of files may include only the groups named on its
# line. Also keeps windows.h in its place, and every include of the library relative to the top of the tree.
set -u
cd "$(dirname "$0")/.." || exit 2

# group : files (an extended regular expression of paths) : groups it may include besides itself
rules='
base   : crypto/base/.*                                                            :
bignum : crypto/bignum/.*                                                          : base
hash   : crypto/hash/.*                                                            : base
cipher : crypto/cipher/.*                                                          : base
text   : crypto/encoding/(byte_buffer|base64|armour|crc24|status)[a-z0-9_]*\..*    : base
der    : crypto/encoding/(der|oid)[a-z0-9_]*\..*                                   : base bignum text
pka    : crypto/pka/.*                                                             : base bignum hash text der
keys   : crypto/encoding/key_[a-z0-9_]*\..*                                        : base bignum text der pka
x509   : crypto/encoding/x509[a-z0-9_]*\..*                                        : base bignum text der pka keys hash
strings: Includes/stringFuncs/.*                                                   : base
json   : json/.*                                                                   : base strings
system : Includes/system/.*                                                        : base strings
dialog : Includes/cDlg/.*                                                          : base strings system
net    : net/.*                                                                    : base text strings system
public : include/.*                                                                : base bignum hash cipher text der pka keys x509 strings json system dialog net
flat   : dll/.*                                                                    : base hash cipher text der pka keys x509 strings system net public
speed  : speed/.*                                                                  : base bignum hash cipher text der pka keys x509
cli    : cli/.*                                                                    : base bignum hash cipher text der pka keys x509 strings json system dialog net speed
bench  : bench/.*                                                                  : base speed
fuzz   : fuzz/.*                                                                   : base bignum hash cipher text der pka keys x509 strings json dialog net tests
tests  : tests/.*                                                                  : base bignum hash cipher text der pka keys x509 strings json system dialog net cli public
'

group_of() { # PATH: prints the group that the file belongs to
    while IFS=':' read -r group files _; do
        [ -n "$group" ] || continue
        if [[ $1 =~ ^(${files// /})$ ]]; then echo "${group// /}"; return; fi
    done <<<"$rules"
}

allowed() { # GROUP: prints what it may include
    while IFS=':' read -r group _ uses; do
        [ "${group// /}" = "$1" ] && echo "$1 $uses"
    done <<<"$rules"
}

declare -A groups
broken=0 checked=0
complain() { echo "check_includes: $*"; broken=1; }

while IFS= read -r file; do
    own=$(group_of "$file")
    [ -n "$own" ] || { complain "$file belongs to no layer"; continue; }
    may=" $(allowed "$own") "
    while IFS= read -r included; do
        checked=$((checked + 1))
        [ -e "$included" ] || { complain "$file includes \"$included\", which is not a path from the top of the tree"; continue; }
        [ -n "${groups[$included]:-}" ] || groups[$included]=$(group_of "$included")
        case "$may" in
            *" ${groups[$included]} "*) ;;
            *) complain "$file ($own) includes $included (${groups[$included]})" ;;
        esac
    done < <(sed -nE 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*"([^"]+)".*/\1/p' "$file")
    case "$own" in
        base | strings | system | dialog | net | flat | cli | bench | tests) ;;
        *) grep -qE '#[[:space:]]*include[[:space:]]*<windows\.h>' "$file" && complain "$file includes windows.h, which the engine keeps to crypto/base" ;;
    esac
done < <(find crypto Includes json net include dll speed cli bench fuzz tests -name '*.h' -o -name '*.cpp' -o -name '*.inc' | sort)

[ "$checked" -gt 0 ] || complain "no include was found: the check itself is broken"
[ "$broken" -eq 0 ] && echo "check_includes: $checked includes point the right way"
exit $broken
