#!/usr/bin/env python3
"""Reference table for the Shift-JIS (JIS X 0213) converter tests.

Writes one line per Basic Multilingual Plane code point, made with Python's
own shift_jisx0213 codec: "XXXX HEX" (the code point and its bytes, upper
case) or "XXXX -" when the codec has no form for it. Surrogate code points
have no form on their own and come out as "-".
"""
import sys


def main():
    lines = []
    for code_point in range(0x10000):
        try:
            encoded = chr(code_point).encode("shift_jisx0213")
            lines.append("%04X %s" % (code_point, encoded.hex().upper()))
        except UnicodeEncodeError:
            lines.append("%04X -" % code_point)
    sys.stdout.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
