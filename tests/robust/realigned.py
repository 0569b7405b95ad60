#!/usr/bin/env python3
"""Demands that every function of a 32-bit Windows library that keeps aligned vectors on its stack aligns the stack
itself: it may be entered, as an export or a callback, with a stack at any multiple of four.
Usage: realigned.py OBJDUMP LIBRARY"""
import re
import subprocess
import sys

listing = subprocess.run([sys.argv[1], "-d", "--no-show-raw-insn", sys.argv[2]], check=True, capture_output=True,
                         text=True).stdout
ON_STACK = r"[^ ]*\(%e[sb]p[,)]"
# Aligned moves, and whatever else takes a whole vector from memory in the older encoding.
ALIGNED = re.compile(r"\sv?mov(?:aps|apd|dqa(?:32|64)?|ntps|ntpd|ntdq)\s(?=.*%e[sb]p).*%([xyz])mm|"
                     r"\s(?!v|mov|lddqu|cvt|pinsr|pextr|\w+s[sd]\s)\w+\s+(?:\$\w+,)?" + ON_STACK + r"[^ ]*%(x)mm")
ALIGNS = re.compile(r"\sand\s+\$0xffffff([0-9a-f])0,%esp")
BYTES = {"x": 16, "y": 32, "z": 64}
functions = vectors = 0
wrong = []
for function in re.split(r"\n\n(?=[0-9a-f]+ <)", listing):
    head = re.match(r"[0-9a-f]+ <(.*)>:", function)
    if not head:
        continue
    functions += 1
    needed = max((BYTES[x or y] for x, y in ALIGNED.findall(function)), default=0)
    if needed:
        vectors += 1
        given = max((256 - int(digit + "0", 16) for digit in ALIGNS.findall(function)), default=0)
        if given < needed:
            wrong.append(f"{head.group(1)}: {needed} bytes wanted, {given} given")
print(f"{functions} functions, {vectors} of them with aligned vectors on the stack, {len(wrong)} without aligning it")
print("\n".join(wrong))
sys.exit(not functions or not vectors or bool(wrong))
