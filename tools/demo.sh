#!/usr/bin/env bash
# The main job, on real input: toolbelt.exe checks every certificate of this machine's trust store, the test chains of
# tests/vectors, each with its issuer, and damaged certificates; then it posts a JSON document to a server on loopback.
# The dialogs are shown on a virtual screen and pictured in build/screenshots. Exits 1 when something is not as expected.
# ./run demo sets up and builds first.
set -u
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/common.sh"
store=/usr/share/ca-certificates
vectors=$root/tests/vectors/certificates
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unexpected=0

# verify ARGS...: the tool's lines about files, without its line of totals. Its exit code says only whether all are ok.
verify() {
    wine "$build_dir/windows/bin/toolbelt.exe" cert verify "$@" >"$work/out" 2>"$work/err"
    local status=$?
    [ "$status" -le 1 ] || [ "$status" -eq 3 ] || die "toolbelt.exe ended with $status: $(cat "$work/err")"
    tr -d '\r' <"$work/out" | grep -E '^[^ ].*: [a-z]' | grep -v ' in total:'
}

# table TITLE: shows "FILE: verdict" lines of standard input as a table with totals, and keeps them in $work/table.
table() {
    sed -E 's|^.*/([^/]*): ([a-z].*)$|\1: \2|' >"$work/table"
    printf '\n%s\n\n  %-66s %s\n' "$1" CERTIFICATE VERDICT
    awk -F': ' '{ printf "  %-66s %s\n", $1, $2 }' "$work/table"
    sed -E 's/^.*: //' "$work/table" | sort | uniq -c | sort -rn |
        awk '{ n = $1; $1 = ""; total += n; text = text (text ? "," : "") " " n $0 } END { printf "\n  Total %d:%s\n", total, text }'
}

# unexpected_if COUNT TEXT
unexpected_if() {
    [ "$1" -eq 0 ] && return
    printf '  Unexpected: %s\n' "$2"
    unexpected=$((unexpected + $1))
}

mapfile -t files < <(find "$store" -name '*.crt' | sort)
[ "${#files[@]}" -gt 0 ] || die "no certificates below $store (package ca-certificates)"
verify "${files[@]}" | table "The trust store: the self-signed certificates of $store, each checked with its own key"
unexpected_if "$(grep -cE ': (bad signature|malformed)' "$work/table")" "a certificate of the trust store was refused"
unexpected_if $((${#files[@]} - $(wc -l <"$work/table"))) "certificates of the trust store without a verdict"

# The index names for every certificate the one that signed it, and what another program says of the signature.
awk '$1 == "file" { file = $3 } $1 == "issuer-file" { issuer = $3 }
     $1 == "signature-check" { print issuer, file, $3 }' "$vectors/index.txt" >"$work/index"
cut -d' ' -f1 "$work/index" | sort -u | while read -r issuer; do
    mapfile -t members < <(awk -v issuer="$issuer" '$1 == issuer { print $2 }' "$work/index")
    (cd "$vectors" && verify --at 2024-01-01 --issuer "$issuer" "${members[@]}")
done | sort | table "The test chains of tests/vectors: each certificate checked with its issuer's key, as of 2024-01-01"
while read -r _ file check; do
    verdict=$(sed -n "s/^$file: //p" "$work/table")
    case "$check:$verdict" in
        good:ok | good:expired | good:"not yet valid" | good:unsupported*) ;;
        bad:"bad signature" | bad:malformed* | bad:unsupported*) ;;
        *) unexpected_if 1 "$file is \"$verdict\", but its signature is $check" ;;
    esac
done <"$work/index"

# A good certificate damaged in several ways.
good=$vectors/real-godaddy-class2.der
size=$(wc -c <"$good")
flip() { # OFFSET FILE: another octet there
    cp "$good" "$2" && printf '\x5a' | dd of="$2" bs=1 seek="$1" conv=notrunc status=none
}
cp "$vectors/bad-truncated.pem" "$work/truncated.pem"
head -c $((size - 1)) "$good" >"$work/last-octet-missing.der"
{ cat "$good" && printf '\0'; } >"$work/octet-added.der"
flip 100 "$work/changed-name.der"
flip $((size / 2)) "$work/changed-key-or-extension.der"
flip $((size - 10)) "$work/changed-signature.der"
: >"$work/empty.der"
verify "$work"/*.pem "$work"/*.der | table "Damaged certificates: each must be refused"
unexpected_if "$(grep -c ': ok' "$work/table")" "a damaged certificate was accepted"
unexpected_if $((7 - $(wc -l <"$work/table"))) "damaged certificates without a verdict"

printf '\nA JSON document, posted to a server on loopback; its answer, formatted:\n\n'
cat >"$work/item.json" <<'JSON'
{"item": {"name": "Gr\u00fc\u00dfe", "amount": 3, "tags": ["a", "b"], "paid": true, "note": null}}
JSON
sed 's/^/  posted   /' "$work/item.json"
# shellcheck disable=SC2016
"$root/tests/net/with_server.py" bash -c 'wine "$0" post "http://127.0.0.1:${TOOLBELT_TEST_PORTS%% *}/json" "$1"' \
    "$build_dir/windows/bin/toolbelt.exe" "$work/item.json" >"$work/answer.json" 2>"$work/err" ||
    unexpected_if 1 "the post failed: $(cat "$work/err")"
wine "$build_dir/windows/bin/toolbelt.exe" json format - <"$work/answer.json" 2>"$work/err" | tr -d '\r' | tee "$work/formatted" |
    sed 's/^/  answer   /'
unexpected_if $((1 - $(grep -c '"paid":true' "$work/formatted"))) "the answer does not hold what was posted: $(cat "$work/err")"

printf '\nThe dialogs, shown and pictured:\n\n'
"$root/tools/screenshots.sh" || unexpected_if 1 "a dialog could not be shown"

printf '\nUnexpected verdicts: %d\n' "$unexpected"
[ "$unexpected" -eq 0 ]
