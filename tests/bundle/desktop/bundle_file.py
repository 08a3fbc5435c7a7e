"""tests/bundle/desktop/bundle_file.py - the desktop bundle's file, as readers see it that share no code with the link
that wrote it: LLVM's tools and macholib.
"""

import collections
import re
import struct
import subprocess

from macholib.MachO import MachO

Bind = collections.namedtuple("Bind", "segment section address kind addend library symbol")
Section = collections.namedtuple("Section", "segment name address size offset align flags reserved1 reserved2")
Instruction = collections.namedtuple("Instruction", "address text")
Frame = collections.namedtuple("Frame", "start end")


def output_of(*command):
    done = subprocess.run(command, capture_output=True, text=True, check=True)
    if done.stderr:
        raise AssertionError(f"{command[0]} complains: {done.stderr}")
    return done.stdout


class File:
    """The bundle's file, as the readers see it."""

    def __init__(self, path):
        self.path = path
        with open(path, "rb") as file:
            self.bytes = file.read()
        (self.macho,) = MachO(path).headers
        self.commands = [(type(command).__name__, load, command, data) for load, command, data in self.macho.commands]
        self.segments = [command for kind, _, command, _ in self.commands if kind == "segment_command"]
        self.sections = []
        for kind, _, _, data in self.commands:
            if kind == "segment_command":
                for each in data:
                    self.sections.append(
                        Section(
                            text(each.segname), text(each.sectname), int(each.addr), int(each.size), int(each.offset),
                            1 << int(each.align), int(each.flags), int(each.reserved1), int(each.reserved2)))
        self.binds = [
            Bind(row[0], row[1], int(row[2], 16), row[3], int(row[4]), row[5], row[6])
            for row in table(output_of("llvm-objdump-14", "--macho", "--bind", path), "segment")
        ]
        self.rebases = [
            (row[0], row[1], int(row[2], 16))
            for row in table(output_of("llvm-objdump-14", "--macho", "--rebase", path), "segment")
        ]
        self.frames = [
            # The reader adds addresses in 64 bits; the file's have 32.
            Frame(int(start, 16) & 0xFFFFFFFF, int(end, 16) & 0xFFFFFFFF)
            for start, end in re.findall(
                r"FDE .*pc=([0-9a-f]+)\.\.\.([0-9a-f]+)", output_of("llvm-dwarfdump-14", "--eh-frame", path))
        ]

    def command(self, kind):
        (found,) = [command for name, _, command, _ in self.commands if name == kind]
        return found

    def segment(self, name):
        (found,) = [segment for segment in self.segments if text(segment.segname) == name]
        return found

    def section(self, name):
        (found,) = [section for section in self.sections if section.name == name]
        return found

    def libraries(self):
        return [text(data) for kind, _, _, data in self.commands if kind == "dylib_command"]

    def word(self, address):
        return struct.unpack_from("<I", self.bytes, address)[0]

    def instructions(self, section):
        lines = output_of(
            "llvm-objdump-14", "-d", "--no-show-raw-insn", f"--section={section}", self.path).splitlines()
        found = [re.match(r"\s*([0-9a-f]+):\s+(.*)", line) for line in lines]
        return [Instruction(int(match[1], 16), " ".join(match[2].split())) for match in found if match]


def text(name):
    return bytes(name).split(b"\0")[0].decode()


def table(lines, first_word):
    """The rows of a table that begins with a line of titles."""
    rows = [line.split() for line in lines.splitlines()]
    start = next(index for index, row in enumerate(rows) if row and row[0] == first_word)
    return [row for row in rows[start + 1 :] if row]


def overlapping(parts):
    ordered = sorted(parts)
    return [(one, two) for one, two in zip(ordered, ordered[1:]) if one[0] + one[1] > two[0]]
