#!/usr/bin/python3
"""Compiles the help's pages to one .chm file with chmcmd, and mends the faults that chmcmd leaves in the file.

usage: compile.py CHMCMD CHMLS OUTPUT PROJECT.hhp FILE...

The FILEs are the pages, style sheet, pictures, contents and index. The script copies them and PROJECT.hhp into one
folder, because the project names its files without a folder. The same files give the same bytes, wherever and whenever
they are compiled. Needs Python 3, chmcmd, and chmls of the same package.

All faults are mended in place, so that no offset in the archive changes:
- chmcmd writes the page of a numbered topic with its absolute path, which no viewer can open. So the pages are compiled
  in /proc/self/cwd, and the mended topic table (/#IVB) points to the text behind this prefix, such as "/page.html".
  chmcmd stores its own table compressed. So the mended table overwrites the advertisement of chmcmd, which is not
  compressed.
- The header has two identifiers. chmcmd writes the first identifier twice, and strict readers then report damage.
- The file has the time of compiling in two places. The time in /#SYSTEM is set to zero. The time in the header is
  replaced by a number made from the content, because Windows tells versions of a file apart by this time.

The format of the file: https://www.nongnu.org/chmspec/latest/
"""

import hashlib
import shutil
import struct
import subprocess
import sys
import tempfile
from pathlib import Path

WORK = "/proc/self/cwd"  # the current folder, under a name that is the same everywhere
ADVERTISEMENT = "/_#_README_#_"
TIME_IN_HEADER = 0x10  # a big-endian number of four bytes
SECOND_IDENTIFIER = 0x28
IDENTIFIER = bytes.fromhex("11fd017c aa7bd011 9e0c00a0 c922e6ec")


class Entry:
    """One entry of the directory: its numbers and their positions."""

    def __init__(self, archive, position):
        length, position = archive.number(position)
        self.name = archive.bytes[position:position + length].decode()
        self.section_at = position + length
        self.section, self.offset_at = archive.number(self.section_at)
        self.offset, self.length_at = archive.number(self.offset_at)
        self.length, self.end = archive.number(self.length_at)


class Archive:
    """The bytes of a .chm file. The methods change bytes, but add and move none."""

    def __init__(self, content):
        self.bytes = bytearray(content)
        directory, = struct.unpack_from("<Q", content, 0x48)
        self.content, = struct.unpack_from("<Q", content, 0x58)
        header_size, = struct.unpack_from("<I", content, directory + 0x08)
        chunk_size, = struct.unpack_from("<I", content, directory + 0x10)
        chunk_count, = struct.unpack_from("<I", content, directory + 0x2C)
        self.entries = {}
        for chunk in range(chunk_count):
            self.read_chunk(directory + header_size + chunk * chunk_size, chunk_size)

    def read_chunk(self, start, size):
        if self.bytes[start:start + 4] != b"PMGL":
            return  # an index of the chunks
        free, = struct.unpack_from("<I", self.bytes, start + 4)
        position = start + 20
        while position < start + size - free:
            entry = Entry(self, position)
            self.entries[entry.name] = entry
            position = entry.end

    def number(self, position):
        """Returns the number at a position, and the position after the number.

        Each byte holds seven bits of the number. The first byte holds the highest bits.
        """
        value = 0
        while True:
            byte = self.bytes[position]
            position += 1
            value = value << 7 | byte & 0x7F
            if byte < 0x80:
                return value, position

    def set_number(self, start, end, value):
        """Overwrites the number from start to end with the value, and fills the free bytes with leading zeros."""
        for position in range(end - 1, start - 1, -1):
            self.bytes[position] = value & 0x7F | (0x80 if position < end - 1 else 0)
            value >>= 7
        assert value == 0, "the number does not fit"

    def set_topics(self, table):
        topics, advertisement = self.entries["/#IVB"], self.entries[ADVERTISEMENT]
        if advertisement.section != 0 or len(table) > advertisement.length:
            raise SystemExit("there are more numbered topics than fit in the place of the advertisement")
        start = self.content + advertisement.offset
        self.bytes[start:start + advertisement.length] = table.ljust(advertisement.length, b"\0")
        self.set_number(topics.section_at, topics.offset_at, 0)
        self.set_number(topics.offset_at, topics.length_at, advertisement.offset)
        self.set_number(advertisement.length_at, advertisement.end, 0)

    def set_identifier(self):
        self.bytes[SECOND_IDENTIFIER:SECOND_IDENTIFIER + len(IDENTIFIER)] = IDENTIFIER

    def set_times(self):
        system = self.entries["/#SYSTEM"]
        assert system.section == 0
        position = self.content + system.offset + 4
        end = self.content + system.offset + system.length
        while position < end:
            code, length = struct.unpack_from("<HH", self.bytes, position)
            if code == 10:  # the time of compiling
                self.bytes[position + 4:position + 4 + length] = bytes(length)
            position += 4 + length
        self.bytes[TIME_IN_HEADER:TIME_IN_HEADER + 4] = bytes(4)
        self.bytes[TIME_IN_HEADER:TIME_IN_HEADER + 4] = hashlib.sha256(self.bytes).digest()[:4]


def run(folder, *command):
    """Runs a program and returns its output. If the program fails, the script ends."""
    result = subprocess.run(command, cwd=folder, check=False, text=True, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT)
    if result.returncode != 0:
        raise SystemExit(f"{' '.join(command)}\n{result.stdout}")
    return result.stdout


def mended_topics(names, table):
    """Returns the topic table, pointing to the names without the prefix WORK."""
    table = bytearray(table)
    for position in range(8, len(table), 8):
        start, = struct.unpack_from("<I", table, position)
        if not names.startswith(WORK.encode() + b"/", start):
            raise SystemExit(f"the name of a topic does not start with {WORK}")
        struct.pack_into("<I", table, position, start + len(WORK))
    return bytes(table)


def main(chmcmd, chmls, output, project, *files):
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for file in (project, *files):
            shutil.copyfile(file, folder / Path(file).name)
        told = run(folder, chmcmd, f"{WORK}/{Path(project).name}")
        # chmcmd reports missing pages and anchors, but does not fail.
        if "Error" in told or "Warning" in told:
            raise SystemExit(told)
        compiled = Path(output).name
        for table in ("/#STRINGS", "/#IVB"):
            run(folder, chmls, "extract", compiled, table, table.strip("/"))
        archive = Archive((folder / compiled).read_bytes())
        archive.set_topics(mended_topics((folder / "#STRINGS").read_bytes(), (folder / "#IVB").read_bytes()))
    archive.set_identifier()
    archive.set_times()
    Path(output).write_bytes(archive.bytes)


if __name__ == "__main__":
    if len(sys.argv) < 5:
        raise SystemExit(__doc__)
    main(*sys.argv[1:])
