"""Reading a captured print stream in the deployment tests."""

import os
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tools"))
import sealed_blob  # noqa: E402

UEL = b"\x1b%-12345X"
TRAILER = UEL + b"@PJL EOJ\n"
ENTER_PS = b"@PJL ENTER LANGUAGE=POSTSCRIPT\n"
PREFIX = "com.korvanel.qd.jtz.printsettings."


def visible(data):
    """The bytes with ESC, CR and other control bytes made visible."""
    out = []
    for byte in data:
        if byte == 0x1B:
            out.append("<ESC>")
        elif byte == 0x0D:
            out.append("\\r")
        elif byte == 0x0A:
            out.append("\n")
        elif byte < 0x20 or byte == 0x7F:
            out.append("<%02X>" % byte)
        elif byte < 0x80:
            out.append(chr(byte))
        else:
            out.append("<%02X>" % byte)
    return "".join(out)


class Stream:
    """A print stream cut into header (through the language switch), body
    (the PostScript) and trailer (the last universal exit language on)."""

    def __init__(self, data):
        self.data = data
        enter = data.find(ENTER_PS)
        end = data.rfind(UEL)
        if enter < 0 or end < enter:
            raise ValueError("not a print stream:\n" + visible(data[:400]))
        self.header = data[:enter + len(ENTER_PS)]
        self.body = data[enter + len(ENTER_PS):end]
        self.trailer = data[end:]

    def header_lines(self):
        """The header's lines, each with its line end; the universal exit
        language stays on the first."""
        return self.header.splitlines(keepends=True)


def match_lines(test, expected, actual):
    """Asserts that `actual` lines equal `expected`, one for one, where an
    expected entry is bytes (equal) or a compiled pattern (full match)."""
    shown = "\n".join(visible(line) for line in actual)
    for index, want in enumerate(expected):
        test.assertLess(index, len(actual), "line %d missing:\n%s" % (index, shown))
        line = actual[index]
        if isinstance(want, bytes):
            test.assertEqual(want, line, "line %d:\n%s" % (index, shown))
        else:
            test.assertIsNotNone(want.fullmatch(line), "line %d:\n%s" % (index, shown))
    test.assertEqual(len(expected), len(actual), "extra lines:\n" + shown)


# ---- Passwords -------------------------------------------------------------------

def stored_password(source_dir, key_dir, password):
    """A password as the print dialog stores it in the ticket, made by
    scripts/stored-password."""
    result = subprocess.run([sys.executable, os.path.join(source_dir, "scripts", "stored-password"),
                             password, key_dir], stdout=subprocess.PIPE, check=True)
    return result.stdout.decode().strip()


def open_sealed_field(private_key, field):
    """Opens a password field of the print stream: base64 of a key-transport
    blob. Returns (key digest, payload)."""
    parts = sealed_blob.open_field(field, private_key)
    return parts["digest"], parts["payload"]
