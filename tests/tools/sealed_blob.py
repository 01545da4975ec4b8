#!/usr/bin/env python3
"""Opens what the filter seals, for the tests: a key-transport blob, taken
apart by its header and opened with the openssl tool and a private key, so
that the check shares no code with the filter's own cryptography.

    sealed_blob.py PRIVATE_KEY FILE [--field]

FILE holds the blob, or with --field a password field's base64 text. Prints
one "name hex" line per part; exits 1 with the reason when the blob does
not open.
"""
import base64
import hashlib
import hmac
import subprocess
import sys


def _openssl(arguments, data):
    result = subprocess.run(["openssl"] + arguments, input=data,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
    if result.returncode != 0:
        raise ValueError("openssl %s: %s" % (arguments[0], result.stderr.decode()))
    return result.stdout


def open_blob(blob, private_key):
    """The parts of a mode-1 blob: its header fields, the wrapped and the
    unwrapped content key, the AES key (HMAC-SHA256 of the salt), IV,
    ciphertext and payload. The wrapped key takes what the lengths leave."""
    if len(blob) < 80:
        raise ValueError("shorter than the 80-byte header")
    parts = {"magic": blob[0:2], "cipher_length": blob[2:6], "total_length": blob[6:10],
             "aes_mode": blob[10:11], "key_type": blob[11:12], "reserved": blob[12:16],
             "digest": blob[16:48], "salt": blob[48:80]}
    if parts["magic"] != b"\x08\x01" or blob[10] != 1:
        raise ValueError("not a key-transport blob in AES mode 1")
    cipher_length = int.from_bytes(parts["cipher_length"], "little")
    total = int.from_bytes(parts["total_length"], "little")
    if total != len(blob):
        raise ValueError("total length %d but %d bytes" % (total, len(blob)))
    wrapped_length = total - 80 - 16 - cipher_length
    if cipher_length == 0 or cipher_length % 16 or wrapped_length <= 0:
        raise ValueError("ciphertext length %d does not fit the blob" % cipher_length)
    parts["wrapped_key"] = blob[80:80 + wrapped_length]
    parts["iv"] = blob[80 + wrapped_length:96 + wrapped_length]
    parts["cipher"] = blob[96 + wrapped_length:]
    parts["content_key"] = _openssl(
        ["pkeyutl", "-decrypt", "-inkey", private_key, "-pkeyopt", "rsa_padding_mode:oaep",
         "-pkeyopt", "rsa_oaep_md:sha256", "-pkeyopt", "rsa_mgf1_md:sha256"], parts["wrapped_key"])
    parts["aes_key"] = hmac.new(parts["content_key"], parts["salt"], hashlib.sha256).digest()
    parts["payload"] = _openssl(["enc", "-d", "-aes-256-cbc", "-K", parts["aes_key"].hex(),
                                 "-iv", parts["iv"].hex()], parts["cipher"])
    return parts


def open_field(text, private_key):
    """A password field: strict base64 of a blob."""
    try:
        blob = base64.b64decode(text, validate=True)
    except ValueError as error:
        raise ValueError("the field is not strict base64: %r (%s)" % (text, error))
    return open_blob(blob, private_key)


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    with open(sys.argv[2], "rb") as source:
        data = source.read()
    try:
        parts = open_field(data, sys.argv[1]) if sys.argv[3:] == ["--field"] \
            else open_blob(data, sys.argv[1])
    except ValueError as error:
        sys.exit(str(error))
    for name, value in parts.items():
        print(name, value.hex())


if __name__ == "__main__":
    main()
