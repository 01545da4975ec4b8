"""Reading a captured print stream in the deployment tests."""

import base64
import hashlib
import hmac
import os
import re
import subprocess
import sys
import tempfile

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


def quoted_field(line):
    """The text between the double quotes of a PJL line."""
    match = re.search(rb'"([^"]*)"', line)
    return match.group(1) if match else None


# ---- Passwords -------------------------------------------------------------------

def _openssl(arguments, data):
    result = subprocess.run(["openssl"] + arguments, input=data,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if result.returncode != 0:
        raise RuntimeError("openssl %s: %s" % (" ".join(arguments), result.stderr.decode()))
    return result.stdout


def stored_password(source_dir, key_dir, password):
    """A password as the print dialog stores it in the ticket, made by
    scripts/stored-password."""
    result = subprocess.run([sys.executable, os.path.join(source_dir, "scripts", "stored-password"),
                             password, key_dir], stdout=subprocess.PIPE, check=True)
    return result.stdout.decode().strip()


def open_sealed_field(key_dir, private_key, field):
    """Opens a password field of the print stream: base64 of a key-transport
    blob. Returns (key digest, payload)."""
    blob = base64.b64decode(field, validate=True)
    if blob[0:2] != b"\x08\x01" or blob[10] != 1 or blob[12:16] != b"\0\0\0\0":
        raise ValueError("not a key-transport blob in AES mode 1")
    clen = int.from_bytes(blob[2:6], "little")
    total = int.from_bytes(blob[6:10], "little")
    if total != len(blob):
        raise ValueError("blob length %d, header says %d" % (len(blob), total))
    digest, salt = blob[16:48], blob[48:80]
    wrapped_len = total - 80 - 16 - clen
    wrapped = blob[80:80 + wrapped_len]
    iv = blob[80 + wrapped_len:96 + wrapped_len]
    cipher = blob[96 + wrapped_len:]
    with tempfile.NamedTemporaryFile() as keyfile:
        keyfile.write(wrapped)
        keyfile.flush()
        content_key = _openssl(["pkeyutl", "-decrypt", "-inkey", private_key,
                                "-pkeyopt", "rsa_padding_mode:oaep",
                                "-pkeyopt", "rsa_oaep_md:sha256",
                                "-pkeyopt", "rsa_mgf1_md:sha256", "-in", keyfile.name], b"")
    aes_key = hmac.new(content_key, salt, hashlib.sha256).digest()
    payload = _openssl(["enc", "-d", "-aes-256-cbc", "-K", aes_key.hex(), "-iv", iv.hex()], cipher)
    return digest, payload
