#!/usr/bin/env python3
"""tests/bundle/desktop/code_test.py BUNDLE - holds the desktop bundle's code to its tables, by disassembly.

Each test is a claim about the file.
"""

import os
import re
import sys
import unittest

from bundle_file import File, output_of, overlapping


class Code(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.stubs = file.instructions("__symbol_stub")
        cls.code = file.instructions("__text")
        cls.position = {each.address: index for index, each in enumerate(cls.code)}

    def body(self, frame):
        first = self.position[frame.start]
        last = next((i for i in range(first, len(self.code)) if self.code[i].address >= frame.end), len(self.code))
        return self.code[first:last]

    @staticmethod
    def target(instruction):
        match = re.match(r"(?:calll|jmp) 0x([0-9a-f]+)", instruction.text)
        return int(match[1], 16) if match else None

    def stub_names(self):
        lines = output_of("llvm-objdump-14", "--macho", "--indirect-symbols", file.path)
        stubs = lines.split("__symbol_stub")[1].split("__nl_symbol_ptr")[0]
        return {int(match[1], 16): match[2] for match in re.finditer(r"(0x[0-9a-f]+)\s+\d+ (\S+)", stubs)}

    def test_each_stub_jumps_through_the_pointer_of_its_symbol(self):
        names = self.stub_names()
        self.assertEqual(len(self.stubs), 3 * len(names))
        symbols = {bind.address: bind.symbol for bind in file.binds}
        for call, pop, jump in zip(*[iter(self.stubs)] * 3):
            self.assertEqual((self.target(call), pop.text), (pop.address, "popl %eax"))
            distance = int(re.fullmatch(r"jmpl \*(\d+)\(%eax\)", jump.text)[1])
            self.assertEqual(symbols[pop.address + distance], names[call.address])

    def test_each_call_goes_to_a_function_a_stub_or_the_next_instruction(self):
        places = {frame.start for frame in file.frames} | set(self.stub_names())
        size_of_a_call = 5
        calls = [each for each in self.code if each.text.startswith("calll 0x")]
        self.assertGreater(len(calls), 500)
        for call in calls:
            reads_its_own_place = self.target(call) == call.address + size_of_a_call
            self.assertTrue(reads_its_own_place or self.target(call) in places, call)

    def test_each_stub_is_used(self):
        used = {self.target(each) for each in self.code}
        self.assertLessEqual(set(self.stub_names()), used)

    def test_each_read_of_an_imported_datum_finds_its_pointer(self):
        data = {"_NSCalibratedRGBColorSpace", "___stack_chk_guard", "__ZTVSt9bad_alloc"}
        pointers = {bind.address: bind.symbol for bind in file.binds}
        read = set()
        for index, each in enumerate(self.code[:-1]):
            popped = re.match(r"popl (%e\w\w)", self.code[index + 1].text)
            if not popped or not each.text.startswith("calll") or self.target(each) != self.code[index + 1].address:
                continue
            register = popped[1]
            here = self.code[index + 1].address
            for later in self.code[index + 2 : index + 200]:
                for distance in re.findall(rf"(\d+)\({register}\)", later.text):
                    read.add(pointers.get(here + int(distance)))
        self.assertLessEqual(data, read)

    def test_tables_of_exceptions_find_the_pointers_of_what_they_name(self):
        pointer_to = {bind.symbol: bind.address for bind in file.binds}
        frames = output_of("llvm-dwarfdump-14", "--eh-frame", file.path)
        personalities = {int(each, 16) for each in re.findall(r"Personality Address: ([0-9a-f]+)", frames)}
        self.assertEqual(personalities, {pointer_to["___gxx_personality_v0"]})
        tables = file.section("__gcc_except_tab")
        types = [
            place for place in range(tables.address, tables.address + tables.size, 4)
            if (place + file.word(place)) & 0xFFFFFFFF == pointer_to["__ZTISt9bad_alloc"]
        ]
        self.assertGreater(len(types), 1)

    def test_call_frame_information_covers_every_instruction_but_padding(self):
        code = file.section("__text")
        self.assertEqual(overlapping([(frame.start, frame.end - frame.start) for frame in file.frames]), [])
        covered = set()
        for frame in file.frames:
            covered.update(each.address for each in self.body(frame))
            self.assertTrue(code.address <= frame.start < frame.end <= code.address + code.size)
        bare = [each for each in self.code if each.address not in covered and not each.text.startswith("nop")]
        self.assertEqual([each for each in bare if "nop" not in each.text], [])

    def test_call_frame_information_ends_with_a_zero_word_and_its_section(self):
        section = file.section("__eh_frame")
        self.assertEqual(section.segment, "__TEXT")
        place, end = section.address, section.address + section.size
        while file.word(place) != 0:
            place += 4 + file.word(place)
        self.assertEqual(place, end - 4)

    def test_each_function_that_calls_has_aligned_its_stack_before(self):
        callers = 0
        (terminate,) = [address for address, name in self.stub_names().items() if name == "__ZSt9terminatev"]
        for frame in file.frames:
            body = self.body(frame)
            # What ends the process in the middle of an unwinding is called by aligned functions only.
            if terminate in map(self.target, body):
                self.assertNotIn(frame.start, [file.word(address) for _, _, address in file.rebases])
                continue
            calls = [
                index for index, each in enumerate(body)
                if each.text.startswith("calll") and not (index + 1 < len(body) and self.target(each) == body[index + 1].address)
            ]
            if not calls:
                continue
            callers += 1
            aligned = [index for index, each in enumerate(body) if re.fullmatch(r"andl \$-(16|32|64), %esp", each.text)]
            self.assertTrue(aligned and aligned[0] < calls[0], f"the function at {frame.start:#x}")
        self.assertGreater(callers, 100)

    def test_each_frame_of_the_platform_has_its_owner_on_an_aligned_stack(self):
        stub = next(address for address, name in self.stub_names().items() if name == "__setjmp")
        owners = [frame for frame in file.frames if stub in map(self.target, self.body(frame))]
        self.assertGreater(len(owners), 5)
        for frame in owners:
            body = [each.text for each in self.body(frame)]
            enter = next(index for index, each in enumerate(body) if each.startswith("calll 0x"))
            self.assertTrue(any(re.fullmatch(r"andl \$-(16|32|64), %esp", each) for each in body[:enter]))


if __name__ == "__main__":
    file = File(os.path.join(sys.argv[1], "Contents", "MacOS", "QVXColor"))
    unittest.main(argv=sys.argv[:1], verbosity=1)
