#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Draws the pictures of the documentation into this folder: python3 docs/pictures/draw.py"""
import html
import math
import pathlib

FOLDER = pathlib.Path(__file__).resolve().parent
CHARACTER = 7.3  # width of a character at the size below
GAP, PADDING, WIDTH = 8, 10, 760
COLOURS = {"plain": "#eef2f6", "ours": "#dbe9f8", "secret": "#fbe3d6", "foreign": "#e7e7e7", "random": "#e3f2dd"}


class Picture:
    def __init__(self, title):
        self.title, self.y, self.items = title, 0, []

    def text(self, x, y, words, style=""):
        self.items.append(f'<text x="{x:.0f}" y="{y:.0f}" {style}>{html.escape(words)}</text>')

    def box(self, x, y, width, height, colour):
        self.items.append(f'<rect x="{x:.1f}" y="{y:.1f}" width="{width:.1f}" height="{height}" rx="4" '
                          f'fill="{COLOURS[colour]}" stroke="#5b6b7b"/>')

    def heading(self, words):
        self.y += 16
        self.text(0, self.y, words, 'font-weight="bold"')
        self.y += 10

    def row(self, boxes):
        """Boxes side by side across the picture: (name, size or description, colour, weight)."""
        total = sum(box[3] for box in boxes)
        room, x = WIDTH - GAP * (len(boxes) - 1), 0
        for name, size, colour, weight in boxes:
            width = room * weight / total
            longest = max(len(name), len(size)) * CHARACTER + 4
            assert longest <= width, f"{self.title}: '{name}' needs {longest:.0f}, has {width:.0f}"
            self.box(x, self.y, width, 44, colour)
            middle = 'text-anchor="middle"'
            self.text(x + width / 2, self.y + 18, name, middle)
            self.text(x + width / 2, self.y + 35, size, middle + ' fill="#44505c"')
            x += width + GAP
        self.y += 44 + GAP

    def arrow(self, words):
        assert WIDTH / 2 + 14 + len(words) * CHARACTER <= WIDTH, f"{self.title}: '{words}' is too long"
        self.items.append(f'<path d="M{WIDTH / 2} {self.y} v18 m-5 -6 l5 6 l5 -6" fill="none" stroke="#5b6b7b"/>')
        self.text(WIDTH / 2 + 14, self.y + 14, words, 'fill="#44505c"')
        self.y += 18 + GAP

    def save(self, name):
        height = self.y + PADDING
        body = "\n".join(self.items)
        (FOLDER / f"{name}.svg").write_text(
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="-2 -2 {WIDTH + 4} {height + 4:.0f}" role="img" '
            f'font-family="ui-monospace, monospace" font-size="12">\n<title>{html.escape(self.title)}</title>\n'
            f'<rect x="-2" y="-2" width="{WIDTH + 4}" height="{height + 4:.0f}" fill="white"/>\n{body}\n</svg>\n')


def draw_architecture():
    picture = Picture("Data flow one way")
    picture.row([("your program", "the host", "plain", 1.4), ("tools", "the command sarn, a host too", "ours", 1)])
    picture.arrow("calls, and catches ul::CError")
    picture.row([("include/sarn", "ciphers, digests, keys, Base64, signatures, configurations", "ours", 1)])
    picture.row([("src/cipher", "registry, CBC", "ours", 1), ("src/digest", "states", "ours", 1),
                 ("src/keys", "HMAC, Base64", "ours", 1), ("src/signature", "files, INI", "ours", 1)])
    picture.row([("src/frame", "errors, owners, set-up of libcrypto", "ours", 1)])
    picture.arrow("each layer uses only the layers below it")
    picture.row([("ul", "objects, text, buffers, files, paths", "ours", 1.2), ("libcrypto", "all primitives", "foreign", 0.6),
                 ("zlib", "checksums", "foreign", 0.5)])
    picture.save("architecture")


def draw_ciphertext():
    picture = Picture("The output of encrypt and encryptWithoutPadding")
    picture.heading("encrypt without an IV")
    picture.row([("IV, random", "8 or 16 bytes", "random", 1), ("ciphertext", "whole blocks", "secret", 3),
                 ("last block: rest and padding", "each padding byte is their number", "secret", 2.4)])
    picture.heading("encrypt with an IV")
    picture.row([("ciphertext", "whole blocks", "secret", 3), ("last block: rest and padding",
                                                              "each padding byte is their number", "secret", 2.4)])
    picture.heading("encryptWithoutPadding, with an IV")
    picture.row([("ciphertext", "whole blocks", "secret", 3), ("last block, if the text does not fill it",
                                                              "rest and zero bytes", "secret", 2.4)])
    picture.save("ciphertext")


def draw_states():
    picture = Picture("Saved states of digests; integers have 4 bytes, least significant first")
    picture.heading("md4, md5, sha1, sha256")
    picture.row([("version", "4: 1", "ours", 1), ("layout", "4: 0x1010102F", "ours", 1.2), ("digest size", "4", "ours", 1),
                 ("context size", "4", "ours", 1.1), ("context", "92, 92, 96, 112", "secret", 1.4)])
    picture.row([("result length", "4", "ours", 1), ("result", "as given", "secret", 1.4), ("initialized", "1", "ours", 1),
                 ("finished", "1", "ours", 1)])
    picture.heading("the context")
    picture.row([("chaining values", "16, 16, 20, 32", "secret", 1.3), ("bits so far", "8", "plain", 1),
                 ("block", "64", "secret", 1.5), ("fill", "4: below 64", "plain", 1), ("sha256 only", "4: 32", "plain", 1)])
    picture.heading("adler32, crc32")
    picture.row([("version", "4: 1", "ours", 1), ("checksum", "4", "plain", 1), ("finished", "1", "ours", 1)])
    picture.heading("md4-sha1, md4-sha1-adler32")
    picture.row([("version", "4: 1", "ours", 0.8), ("first state", "as above", "secret", 2),
                 ("second state", "as above", "secret", 2)])
    picture.row([("result length", "4", "ours", 1), ("result", "as given", "secret", 1.4), ("finished", "1", "ours", 1),
                 ("result ready", "1", "ours", 1)])
    picture.save("digest-state")


def draw_signature_file():
    picture = Picture("A signature file")
    for size in ("64 characters", "64 characters"):
        picture.row([("Base64", size, "ours", 6), ("LF", "1", "plain", 0.6)])
    picture.row([("Base64", "the rest, with =", "ours", 3), ("LF", "1", "plain", 0.6)])
    picture.arrow("decoded")
    picture.row([("signature", "RSA: as long as the key. DSA: a DER sequence of two numbers", "secret", 1)])
    picture.save("signature-file")


def draw_configuration():
    picture = Picture("A signed configuration")
    picture.row([("job.ini", "INI text in UTF-8, or Base64 of it", "ours", 1), ("job.ini.sig", "a signature file", "secret", 0.6)])
    picture.arrow("the bytes on disk are verified")
    picture.row([("trusted", "nothing is parsed before this", "random", 1)])
    picture.arrow("parsed: every line is valid or refused")
    picture.row([("[section]", "name = value", "plain", 1), ("/section/name", "the key of the value", "plain", 1)])
    picture.save("configuration")


def draw_peers():
    """A row for each operation in peers.csv, a dot for each library; `./dev bench peers` writes that file."""
    colours = {"sarn": "#d62728", "botan": "#1f77b4", "crypto++": "#ff7f0e", "libgcrypt": "#2ca02c",
               "nettle": "#17a2b8"}
    picture, ratios = Picture("Time in multiples of libcrypto 1.1.1"), {}
    for line in (FOLDER / "peers.csv").read_text().splitlines():
        operation, library, ratio = line.split(";")
        ratios.setdefault(operation, {})[library] = float(ratio)

    def place(ratio):
        return 200 + 76 * math.log2(max(ratio, 0.25) / 0.25)

    def dot(x, y, library, title=""):
        picture.items.append(f'<circle cx="{x:.0f}" cy="{y:.0f}" r="5" fill="{colours[library]}"><title>{title}</title></circle>')

    picture.heading("Time in multiples of libcrypto 1.1.1; further left is faster")
    for index, library in enumerate(colours):
        dot(8 + 100 * index, picture.y + 8, library)
        picture.text(18 + 100 * index, picture.y + 12, library)
    picture.y += 40
    bottom = picture.y + 20 * len(ratios)
    for ratio in (0.25, 0.5, 1, 2, 4, 8, 16, 32):
        picture.items.append(f'<path d="M{place(ratio):.0f} {picture.y} V{bottom}" stroke="{"#222" if ratio == 1 else "#ddd"}"/>')
        picture.text(place(ratio), picture.y - 4, f"{ratio:g}", 'text-anchor="middle"')
    for operation, libraries in ratios.items():
        picture.text(0, picture.y + 14, operation)
        for library, ratio in sorted(libraries.items(), key=lambda item: item[0] == "sarn"):
            dot(place(ratio), picture.y + 10, library, f"{library} {ratio:.2f}")
        picture.y += 20
    picture.save("peers")


draw_architecture()
draw_ciphertext()
draw_states()
draw_signature_file()
draw_configuration()
draw_peers()
