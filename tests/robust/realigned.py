#!/usr/bin/env python3
"""Demands that every function of a 32-bit Windows library that keeps aligned vectors on its stack aligns the stack
itself: it may be entered, as an export or a callback, with a stack at any multiple of four.
Usage: realigned.py OBJDUMP LIBRARY"""
import re
import subprocess
import sys

listing = subprocess.run([sys.argv[1], "-d", "--no-show-raw-insn", sys.argv[2]], check=True, capture_output=True,
                         text=True).stdout
# Aligned moves, and whatever takes a whole vector from memory in the older encoding.
STORES = re.compile(r"\s(?:v?mov(?:aps|apd|dqa|dqa32|dqa64|ntps|ntdq)|(?!v|mov[udqlhs]|movup|movdqu|lddqu|cvt|pinsr|pextr|"
                    r"\w+s[sd]\s)\w+)\s+(?:\$\w+,)?[^ ]*\(%e[sb]p[,)][^ ]*%xmm|\smov(?:aps|apd|dqa)\s.*\(%e[sb]p[,)]")
ALIGNS = re.compile(r"\sand\s+\$0xffffff[0-9a-f]0,%esp")
functions = vectors = 0
wrong = []
for function in re.split(r"\n\n(?=[0-9a-f]+ <)", listing):
    head = re.match(r"[0-9a-f]+ <(.*)>:", function)
    if not head:
        continue
    functions += 1
    if STORES.search(function):
        vectors += 1
        if not ALIGNS.search(function):
            wrong.append(head.group(1))
print(f"{functions} functions, {vectors} of them with aligned vectors on the stack, {len(wrong)} without aligning it")
print("\n".join(wrong))
sys.exit(not functions or not vectors or bool(wrong))
