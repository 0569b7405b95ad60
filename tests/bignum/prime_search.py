#!/usr/bin/env python3
"""Computes tests/vectors/primes.txt: tables of small primes, and searches by one worker with every report it makes.

Witnesses come from the runtime's rand(), which starts from seed 1 in every thread, so all of it is determined.
"""
from math import gcd


class Rand:
    state = 1

    def byte(self):
        self.state = (self.state * 214013 + 2531011) % 2**32
        return self.state >> 16 & 0xFF

    def fermat(self, n):
        if n == 1:
            return False
        a = 0
        while a == 0:
            a = int.from_bytes(bytes(self.byte() for _ in range(8)), "big") % n
        return pow(a, n - 1, n) == 1


def table(count):
    rand, entries, candidate = Rand(), [2], 3
    while len(entries) < 4 * count:
        if rand.fermat(candidate):
            entries.append(candidate)
        candidate += 2
    return entries


def test(rand, primes, n, rounds, status):
    """The result and the status of the probable-prime test."""
    if any(n % p == 0 for p in primes):
        return False, -1
    if rounds == 0:
        return True, status
    if n % 2 == 0:
        return False, -2
    passed = 0
    while passed < rounds and rand.fermat(n):
        passed += 1
    return passed == rounds, passed


def search(start, safe, e, primes):
    cursor, bits, rand, reports = start & ~1, start.bit_length(), Rand(), []
    while True:
        cursor = cursor + 2 & ~(1 << bits)
        c = cursor | 2 if safe else cursor
        if e and gcd(c, e) != 1:
            continue
        p, status = c + 1, 0
        steps = [(p, 0), (c // 2, 1), (p, 25), (c // 2, 24)] if safe else [(p, 25)]
        for n, rounds in steps:
            good, status = test(rand, primes, n, rounds, status)
            if not good:
                break
        reports.append(status)
        if good:
            return p, reports


def text(number):
    digits = f"{number:x}"
    return digits.rjust(len(digits) + len(digits) % 2, "0")


print("# Computed by tests/bignum/prime_search.py.")
for count in (1, 3, 40):
    print(f"\ntable = {count}\nentries =", *table(count))
for start, safe, e, count in (
    (0xC90FDAA22168C234C4C6628B80DC1CD129024E088A67CC74020BBEA63B139B22, 0, 65537, 0),
    (0xB7E151628AED2A6ABF7158809CF4F3C762E71630, 0, 3, 0),
    (0x9E3779B97F4A7C15F39CC0605CEDC87A, 0, 0, 2),  # a short table: many candidates fail in a round
    (29339, 0, 0, 1),  # 29341 and 75361 are Carmichael numbers, which fail in a later one
    (75359, 0, 0, 1),
    (0xD1310BA698DFB5AC2FFD72DBD01ADFB7B8E1AFED6A267E96, 0, 3 * 5 * 7 * 11 * 13 * 17 * 19 * 23 * 29 * 31, 0),
    (0xFFFFFFFFFFFFFFFF, 0, 0, 4),  # begins anew in its 64 bits
    (0x3FFFFFFFFFFFFFFFFFF, 1, 1, 4),  # in 66
    (0x8A5D2F1C3B6E49F7, 1, 3, 0),
    (0xE4A1B2C3D4E5F60718293A4B, 1, 0, 0),
):
    while True:  # closer to the prime, for a short list
        prime, reports = search(start, safe, e, table(count or start.bit_length()))
        if len(reports) <= 100:
            break
        start = prime - 180
    print(f"\nsearch = {text(start)}\nsafe = {safe}\ne = {text(e)}\ntable = {count}")
    print(f"prime = {text(prime)}\nreports =", *reports)
