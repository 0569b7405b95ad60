#!/usr/bin/env python3
"""Writes tests/vectors/keccak-per-update.txt: what the engine's Keccak-512 gives where it departs from the standard one.

    python3 tests/hash/keccak_per_update.py tests/vectors/digests.txt > tests/vectors/keccak-per-update.txt

Written from the definition of Keccak alone (bits of the state as a dictionary of lanes, padding as a list of bytes). Before
it writes anything it must reproduce the standard Keccak-512 records of digests.txt.
"""
import sys

MASK = (1 << 64) - 1


def rol(lane, n):
    return (lane << n | lane >> (64 - n)) & MASK if n else lane


def permute(a):
    register = 1
    for _ in range(24):
        c = [a[x, 0] ^ a[x, 1] ^ a[x, 2] ^ a[x, 3] ^ a[x, 4] for x in range(5)]
        a = {(x, y): a[x, y] ^ c[(x - 1) % 5] ^ rol(c[(x + 1) % 5], 1) for x, y in a}
        x, y, moved = 1, 0, {(0, 0): a[0, 0]}
        for t in range(24):
            moved[y, (2 * x + 3 * y) % 5] = rol(a[x, y], (t + 1) * (t + 2) // 2 % 64)
            x, y = y, (2 * x + 3 * y) % 5
        a = {(x, y): moved[x, y] ^ ~moved[(x + 1) % 5, y] & moved[(x + 2) % 5, y] & MASK for x, y in moved}
        for j in range(7):
            a[0, 0] ^= (register & 1) << (2**j - 1)
            register = register << 1 ^ (0x171 if register & 0x80 else 0)
    return a


def absorb(a, padded):
    for at in range(0, len(padded), 72):
        for i in range(9):
            a[i % 5, i // 5] ^= int.from_bytes(padded[at + 8 * i : at + 8 * i + 8], "little")
        a = permute(a)
    return a


def pad(message, closing_lost):
    padded = bytearray(message) + b"\x01"
    padded += bytes(-len(padded) % 72)
    if not (closing_lost and len(message) % 72 == 71):
        padded[-1] |= 0x80
    return bytes(padded)


def digest(pieces, standard=False):
    a = {(x, y): 0 for x in range(5) for y in range(5)}
    for piece in pieces:
        whole = piece and len(piece) % 72 == 0 and not standard
        a = absorb(a, piece if whole else pad(piece, closing_lost=not standard))
    return b"".join(a[i % 5, i // 5].to_bytes(8, "little") for i in range(8)).hex()


def decode(text):
    form, _, rest = text.partition(":")
    if form == "hex":
        return bytes.fromhex(rest)
    if form == "repeat":
        byte, _, count = rest.partition(":")
        return bytes.fromhex(byte) * int(count)
    return bytes(i % 251 for i in range(int(rest)))


updates = []
for block in open(sys.argv[1]).read().split("\n\n"):
    record = dict(line.split(" = ", 1) for line in block.splitlines() if " = " in line)
    if record.get("digest") != "Keccak-512":
        continue
    message = decode(record["input"])
    if len(message) > 10000:
        continue  # slow here, and nothing that shorter ones do not show
    if digest([message], standard=True) != record["value"]:
        sys.exit("this script disagrees with " + record["input"])
    if digest([message]) != record["value"]:
        updates.append([record["input"]])
assert sorted(len(decode(u[0])) for u in updates) == [71, 71, 72, 72, 143, 143, 144, 144]
updates += [["hex:", "hex:"], ["hex:6162", "hex:63"], ["pattern:72", "hex:"], ["pattern:71", "pattern:72", "pattern:73"]]

print("# Digests that the engine's Keccak-512 gives by design, other than Keccak-512 of the concatenated updates.")
print("# Every update is padded by itself; one of a non-zero multiple of 72 bytes not at all; one with the remainder 71")
print("# without the closing 0x80. Computed by tests/hash/keccak_per_update.py from the definition of Keccak.")
for pieces in updates:
    print()
    for piece in pieces:
        print("update =", piece)
    print("value =", digest([decode(piece) for piece in pieces]))
