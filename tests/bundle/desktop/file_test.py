#!/usr/bin/env python3
"""tests/bundle/desktop/file_test.py BUNDLE OBJECT VERSION - holds the desktop bundle to what its loader checks.

Each test is a claim about the file. OBJECT is what the file was linked from.
"""

import os
import plistlib
import re
import sys
import unittest

from bundle_file import File, output_of, overlapping, text

PAGE = 4096
LARGEST_FILE = 112 * 1024

# Written by hand, not taken from the lists that the link reads.
LIBRARIES = [
    "/usr/lib/libobjc.A.dylib",
    "/System/Library/Frameworks/CoreFoundation.framework/Versions/A/CoreFoundation",
    "/System/Library/Frameworks/Cocoa.framework/Versions/A/Cocoa",
    "/usr/lib/libstdc++.6.dylib",
    "/usr/lib/libSystem.B.dylib",
]
LIBRARY_OF_PREFIX = [
    ("_objc_", "libobjc"),
    ("_sel_", "libobjc"),
    ("_CF", "CoreFoundation"),
    ("_NS", "Cocoa"),
    ("___cxa_", "libstdc++"),
    ("___gxx_", "libstdc++"),
    ("__Z", "libstdc++"),
    ("_", "libSystem"),
]


class Header(unittest.TestCase):
    def test_is_a_bundle_for_i386(self):
        self.assertRegex(output_of("file", "--brief", file.path), "^Mach-O i386 bundle")
        headers = output_of("llvm-readobj-14", "--file-headers", file.path)
        for line in ["Magic (0xFEEDFACE)", "CpuType: X86 (0x7)", "FileType: Bundle (0x8)"]:
            self.assertIn(line, headers)

    def test_promises_libraries_for_all_symbols_in_two_levels(self):
        flags = re.findall(r"MH_\w+", output_of("llvm-readobj-14", "--file-headers", file.path))
        self.assertCountEqual(flags, ["MH_NOUNDEFS", "MH_DYLDLINK", "MH_TWOLEVEL"])

    def test_may_be_executed(self):
        self.assertTrue(os.access(file.path, os.X_OK))

    def test_is_small(self):
        self.assertLessEqual(len(file.bytes), LARGEST_FILE)

    def test_load_commands_fill_what_the_header_says(self):
        sizes = [load.cmdsize for _, load, _, _ in file.commands]
        self.assertTrue(all(size % 4 == 0 for size in sizes), sizes)
        self.assertEqual(sum(sizes), file.macho.header.sizeofcmds)
        self.assertEqual(len(sizes), file.macho.header.ncmds)

    def test_has_the_commands_that_loaders_want_and_no_other(self):
        kinds = [load.get_cmd_name() for _, load, _, _ in file.commands]
        self.assertEqual(
            kinds,
            ["LC_SEGMENT"] * 3
            + ["LC_DYLD_INFO_ONLY", "LC_SYMTAB", "LC_DYSYMTAB", "LC_UUID", "LC_VERSION_MIN_MACOSX"]
            + ["LC_LOAD_DYLIB"] * len(LIBRARIES))

    def test_runs_on_10_6_and_later(self):
        self.assertEqual(file.command("version_min_command").version, 10 << 16 | 6 << 8)

    def test_uuid_is_one_of_its_own_maker(self):
        uuid = bytes(file.command("uuid_command").uuid)
        self.assertEqual((uuid[6] >> 4, uuid[8] >> 6), (8, 2))

    def test_leaves_room_to_be_signed(self):
        end = 28 + file.macho.header.sizeofcmds
        first = min(section.offset for section in file.sections if section.offset != 0)
        self.assertGreaterEqual(first - end, 32)
        self.assertEqual(set(file.bytes[end:first]), {0})


class Segments(unittest.TestCase):
    def test_are_text_data_and_link_information(self):
        names = [text(segment.segname) for segment in file.segments]
        self.assertEqual(names, ["__TEXT", "__DATA", "__LINKEDIT"])

    def test_no_segment_is_both_writable_and_executable(self):
        read, write, execute = 1, 2, 4
        protections = [segment.initprot for segment in file.segments]
        self.assertEqual(protections, [read | execute, read | write, read])
        self.assertEqual([segment.maxprot for segment in file.segments], [read | write | execute] * 3)

    def test_begin_on_pages_in_file_and_memory(self):
        for segment in file.segments:
            self.assertEqual((segment.vmaddr % PAGE, segment.fileoff % PAGE, segment.vmsize % PAGE), (0, 0, 0))

    def test_follow_each_other_without_overlapping(self):
        for before, after in zip(file.segments, file.segments[1:]):
            self.assertEqual(before.vmaddr + before.vmsize, after.vmaddr)
            self.assertEqual(before.fileoff + before.filesize, after.fileoff)

    def test_the_first_holds_the_header(self):
        self.assertEqual((file.segments[0].vmaddr, file.segments[0].fileoff), (0, 0))

    def test_have_no_more_in_the_file_than_in_memory(self):
        for segment in file.segments:
            self.assertLessEqual(segment.filesize, segment.vmsize)

    def test_the_last_ends_with_the_file(self):
        link = file.segments[-1]
        self.assertEqual(link.fileoff + link.filesize, len(file.bytes))


class Sections(unittest.TestCase):
    def test_lie_in_their_segments_apart_from_each_other(self):
        for section in file.sections:
            segment = file.segment(section.segment)
            self.assertGreaterEqual(section.address, segment.vmaddr)
            self.assertLessEqual(section.address + section.size, segment.vmaddr + segment.vmsize)
        self.assertEqual(overlapping([(each.address, each.size) for each in file.sections]), [])

    def test_are_aligned_as_they_say(self):
        for section in file.sections:
            self.assertEqual(section.address % section.align, 0, section)

    def test_lie_in_the_file_where_they_lie_in_memory(self):
        zero_fill = 1
        for section in file.sections:
            segment = file.segment(section.segment)
            wanted = 0 if section.flags & 0xFF == zero_fill else section.address - segment.vmaddr + segment.fileoff
            self.assertEqual(section.offset, wanted, section)

    def test_zero_filled_ones_come_last_and_take_no_room_in_the_file(self):
        data = [section for section in file.sections if section.segment == "__DATA"]
        kinds = [section.flags & 0xFF == 1 for section in data]
        self.assertEqual(kinds, sorted(kinds))
        self.assertTrue(kinds[-1])

    def test_none_holds_what_runs_on_loading_or_unloading(self):
        code_constants_and_data = {0, 1, 2, 3, 4, 6, 8, 11, 14}
        self.assertLessEqual({section.flags & 0xFF for section in file.sections}, code_constants_and_data)

    def test_none_has_relocations(self):
        self.assertNotRegex(output_of("llvm-readobj-14", "--relocations", file.path), r"0x[0-9A-F]+ ")
        for name in ["locreloff", "nlocrel", "extreloff", "nextrel"]:
            self.assertEqual(getattr(file.command("dysymtab_command"), name), 0)


class LinkInformation(unittest.TestCase):
    def parts(self):
        info = file.command("dyld_info_command")
        symbols = file.command("symtab_command")
        indirect = file.command("dysymtab_command")
        return [
            (info.rebase_off, info.rebase_size),
            (info.bind_off, info.bind_size),
            (info.export_off, info.export_size),
            (symbols.symoff, symbols.nsyms * 12),
            (indirect.indirectsymoff, indirect.nindirectsyms * 4),
            (symbols.stroff, symbols.strsize),
        ]

    def test_stands_in_the_usual_order_inside_of_its_segment(self):
        link = file.segment("__LINKEDIT")
        parts = self.parts()
        self.assertEqual(parts, sorted(parts))
        self.assertEqual(overlapping(parts), [])
        self.assertEqual(parts[0][0], link.fileoff)
        self.assertEqual(sum(parts[-1]), link.fileoff + link.filesize)

    def test_symbols_and_indirect_symbols_are_aligned(self):
        self.assertEqual([part[0] % 4 for part in self.parts()[3:5]], [0, 0])

    def test_the_loaders_programs_fill_their_parts(self):
        parts = self.parts()
        done = 0
        for (offset, size), (following, _) in zip(parts[:2], parts[1:]):
            self.assertEqual(file.bytes[offset + size - 1], done)
            self.assertLess(following - (offset + size), 4)

    def test_binds_nothing_weakly_and_nothing_lazily(self):
        info = file.command("dyld_info_command")
        self.assertEqual((info.weak_bind_off, info.weak_bind_size), (0, 0))
        self.assertEqual((info.lazy_bind_off, info.lazy_bind_size), (0, 0))


class Symbols(unittest.TestCase):
    def listed(self, *options):
        return [line.split() for line in output_of("llvm-nm-14", "-p", *options, file.path).splitlines()]

    def test_exports_the_entry_alone(self):
        rows = [row.split() for row in output_of("llvm-objdump-14", "--macho", "--exports-trie", file.path).splitlines()]
        exports = [row for row in rows if row and row[0].startswith("0x")]
        self.assertEqual([row[1:] for row in exports], [["_REALPluginMain"]])
        defined = self.listed("--defined-only")
        self.assertEqual([row[1:] for row in defined], [["T", "_REALPluginMain"]])
        self.assertEqual(int(exports[0][0], 16), int(defined[0][0], 16))

    def test_the_entry_is_the_start_of_a_function(self):
        (entry,) = self.listed("--defined-only")
        self.assertIn(int(entry[0], 16), [frame.start for frame in file.frames])

    def test_stand_in_three_runs_each_sorted(self):
        runs = file.command("dysymtab_command")
        names = [row[-1] for row in self.listed()]
        self.assertEqual((runs.ilocalsym, runs.nlocalsym), (0, 0))
        self.assertEqual((runs.iextdefsym, runs.nextdefsym), (0, 1))
        self.assertEqual((runs.iundefsym, runs.nundefsym), (1, len(names) - 1))
        self.assertEqual(names[1:], sorted(names[1:]))

    def test_undefined_ones_are_what_is_bound(self):
        undefined = [row[-1] for row in self.listed("--undefined-only")]
        self.assertEqual(sorted(undefined), sorted({bind.symbol for bind in file.binds}))

    def test_undefined_ones_name_the_library_that_they_are_bound_to(self):
        libraries = {
            match[1]: match[2]
            for match in re.finditer(r"external (\S+) \(from (\S+)\)", output_of("llvm-nm-14", "-m", file.path))
        }
        self.assertEqual(libraries, {bind.symbol: bind.library for bind in file.binds})


class Binds(unittest.TestCase):
    def test_libraries_are_the_platforms_own(self):
        self.assertEqual(file.libraries(), LIBRARIES)

    def test_each_symbol_comes_from_its_library(self):
        for bind in file.binds:
            library = next(library for prefix, library in LIBRARY_OF_PREFIX if bind.symbol.startswith(prefix))
            self.assertEqual(bind.library, library, bind.symbol)

    def test_each_fills_an_empty_pointer_of_its_own_in_data(self):
        self.assertEqual(len({bind.address for bind in file.binds}), len(file.binds))
        for bind in file.binds:
            self.assertEqual((bind.segment, bind.kind, bind.addend), ("__DATA", "pointer", 0))
            self.assertEqual(file.word(bind.address), 0, bind)

    def test_the_table_of_indirect_symbols_names_the_same_pointers(self):
        lines = output_of("llvm-objdump-14", "--macho", "--indirect-symbols", file.path)
        pointers = lines.split("__nl_symbol_ptr")[1]
        named = {
            int(match[1], 16): match[2] for match in re.finditer(r"(0x[0-9a-f]+)\s+\d+ (\S+)", pointers)
        }
        section = file.section("__nl_symbol_ptr")
        bound = {bind.address: bind.symbol for bind in file.binds if bind.section == section.name}
        self.assertEqual(named, bound)
        self.assertEqual(len(named), section.size // 4)


class Rebases(unittest.TestCase):
    def test_are_many_and_all_in_data(self):
        self.assertGreater(len(file.rebases), 400)
        self.assertEqual({segment for segment, _, _ in file.rebases}, {"__DATA"})

    def test_are_the_absolute_pointers_of_the_object_and_no_other(self):
        relocations = output_of("llvm-readobj-14", "--relocations", linked_from).split("Section __data {")[1]
        # Offset, from the field's end or not, length, by symbol or not, kind, scattered or not.
        absolute = re.findall(r"^ +(0x[0-9A-F]+) 0 2 (?:0|n/a) GENERIC_RELOC_VANILLA ", relocations.split("}")[0], re.M)
        data = file.section("__data").address
        self.assertEqual(sorted(address for _, _, address in file.rebases), sorted(data + int(each, 16) for each in absolute))

    def test_none_is_done_twice_or_bound_too(self):
        places = [address for _, _, address in file.rebases] + [bind.address for bind in file.binds]
        self.assertEqual(overlapping([(place, 4) for place in places]), [])

    def test_each_points_into_a_section(self):
        for _, _, address in file.rebases:
            target = file.word(address)
            holders = [each for each in file.sections if each.address <= target < each.address + each.size]
            self.assertEqual(len(holders), 1, hex(address))

    def test_each_that_points_to_code_points_to_a_function(self):
        code = file.section("__text")
        starts = {frame.start for frame in file.frames}
        targets = [file.word(address) for _, _, address in file.rebases]
        into_code = [target for target in targets if code.address <= target < code.address + code.size]
        self.assertGreater(len(into_code), 100)
        self.assertLessEqual(set(into_code), starts)

    def test_each_that_points_to_a_string_points_to_its_start(self):
        strings = file.section("__cstring")
        targets = [file.word(address) for _, _, address in file.rebases]
        inside = [each for each in targets if strings.address < each < strings.address + strings.size]
        self.assertGreater(len(inside), 100)
        self.assertEqual([hex(each) for each in inside if file.bytes[each - 1] != 0], [])


class Information(unittest.TestCase):
    def test_names_the_file_and_its_version(self):
        contents = os.path.dirname(os.path.dirname(file.path))
        with open(os.path.join(contents, "Info.plist"), "rb") as opened:
            information = plistlib.load(opened)
        self.assertEqual(information["CFBundleExecutable"], os.path.basename(file.path))
        self.assertEqual(information["CFBundlePackageType"], "BNDL")
        self.assertEqual(information["CFBundleVersion"], version)
        self.assertEqual(information["CFBundleShortVersionString"], version)
        self.assertEqual(information["LSMinimumSystemVersion"], "10.6")
        self.assertRegex(information["CFBundleIdentifier"], r"^[A-Za-z0-9-]+(\.[A-Za-z0-9-]+)+$")


if __name__ == "__main__":
    bundle, linked_from, version = sys.argv[1:4]
    file = File(os.path.join(bundle, "Contents", "MacOS", "QVXColor"))
    unittest.main(argv=sys.argv[:1], verbosity=1)
