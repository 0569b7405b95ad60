#!/usr/bin/env bash
# Keys, signatures and ciphertexts of toolbelt.exe against OpenSSL's, in both directions.
# Usage: openssl_interop.sh [EMULATOR] TOOLBELT.EXE
set -u
export LC_ALL=C.UTF-8
tool=("$@")
tool[-1]=$(realpath "${tool[-1]}")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
checks=0 failures=0

# expect TITLE COMMAND...: the command must succeed.
expect() {
    local title=$1
    shift
    checks=$((checks + 1))
    if ! "$@" >log 2>&1; then
        failures=$((failures + 1))
        echo "FAILED: $title: $*"
        tail -n 5 log
    fi
}
toolbelt() { "${tool[@]}" "$@" </dev/null; }
# The size and the kind that OpenSSL reads out of a public key.
openssl_reads() { openssl pkey -pubin -in "$1" -noout -text | grep -qE "^ *$2 \(?$3 bit"; }
same() { cmp -s "$1" "$2"; }
refused() { ! "$@"; }

head -c 100000 /dev/urandom >file
head -c 32 /dev/urandom >message

for options in "512" "1032 --exponent 3" "2048" "4096 --exponent 65539" "520 --safe-primes"; do
    name=rsa-${options// /}
    # shellcheck disable=SC2086
    expect "generate $name" toolbelt key generate rsa --bits $options --out "$name"
    expect "key check" openssl rsa -in "$name.key" -check -noout
    expect "public key" openssl_reads "$name.pub" "Public-Key:" "${options%% *}"
    for digest in md5 sha1 ripemd160 sha256 sha512; do
        [ "${options%% *}" = 512 ] && [ $digest = sha512 ] && continue # does not fit
        [ "${options%% *}" = 520 ] && [ $digest = sha512 ] && continue
        [ $digest != sha256 ] && [ "$name" != rsa-2048 ] && continue
        provider=()
        [ $digest = ripemd160 ] && provider=(-provider legacy -provider default)
        expect "sign $digest" toolbelt sign --key "$name.key" -a $digest -o ours file
        expect "OpenSSL verifies" openssl dgst "${provider[@]}" -$digest -verify "$name.pub" -signature ours file
        expect "OpenSSL signs" openssl dgst "${provider[@]}" -$digest -sign "$name.key" -out theirs file
        expect "the same signature" same ours theirs
        expect "toolbelt verifies" toolbelt verify --key "$name.pub" -a $digest --signature theirs file
        expect "not another file" refused toolbelt verify --key "$name.pub" -a $digest --signature theirs message
    done
    expect "encrypt" toolbelt encrypt --key "$name.pub" message ours
    expect "OpenSSL decrypts" openssl pkeyutl -decrypt -inkey "$name.key" -in ours -out back
    expect "the message" same message back
    expect "OpenSSL encrypts" openssl pkeyutl -encrypt -pubin -inkey "$name.pub" -in message -out theirs
    expect "decrypt" toolbelt decrypt --key "$name.key" theirs back2
    expect "the message" same message back2
done

for bits in 512 1024; do
    expect "generate dsa $bits" toolbelt key generate dsa --bits $bits --out dsa
    expect "key check" openssl pkey -in dsa.key -check -noout
    expect "public key" openssl_reads dsa.pub "Public-Key:" $bits
    for digest in sha1 sha256; do # OpenSSL cuts the longer one to q's 160 bits as well
        expect "sign" toolbelt sign --key dsa.key -a $digest -o ours file
        expect "OpenSSL verifies" openssl dgst -$digest -verify dsa.pub -signature ours file
        expect "OpenSSL signs" openssl dgst -$digest -sign dsa.key -out theirs file
        expect "toolbelt verifies" toolbelt verify --key dsa.pub -a $digest --signature theirs file
        expect "not another file" refused toolbelt verify --key dsa.pub -a $digest --signature theirs message
    done
    rm -f dsa.key dsa.pub
done

expect "generate elgamal" toolbelt key generate elgamal --bits 512 --out elgamal
expect "a DH key" openssl_reads elgamal.pub "DH Public-Key:" 512
expect "encrypt" toolbelt encrypt --key elgamal.pub message ours
expect "decrypt" toolbelt decrypt --key elgamal.key ours back
expect "the message" same message back
expect "sign" toolbelt sign --key elgamal.key -a sha256 -o ours file
expect "verify" toolbelt verify --key elgamal.pub -a sha256 --signature ours file

[ $checks -gt 100 ] || { echo "only $checks checks were made"; exit 1; }
echo "$checks checks against OpenSSL, $failures failed"
[ $failures -eq 0 ]
