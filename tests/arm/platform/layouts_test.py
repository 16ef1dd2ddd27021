"""Compares the layouts that the stand-ins convert with those that the library was
compiled with, from the debug information of both.

usage: layouts_test UNSTRIPPED_LIBRARY STRIPPED_LIBRARY STAND_INS...
"""
import sys
from pathlib import Path
from typing import Any

from elftools.elf.elffile import ELFFile

# The library's type, and the stand-ins' own.
PAIRS = {"pthread_mutex_t": "Mutex", "sem_t": "Semaphore", "sigset_t": "SignalSet",
         "timespec": "Time", "stat": "FileStatus"}
# What the library reads of them, and the stand-ins' names.
MEMBERS = {"st_dev": "device", "st_mode": "mode", "st_size": "size", "st_ino": "node",
           "tv_sec": "seconds", "tv_nsec": "nanoseconds"}
# What the stand-ins hand through, in bytes: with 32 bits, and with 64.
SIZES = {"pthread_once_t": (4, 4), "pthread_key_t": (4, 4), "pthread_t": (4, 8), "size_t": (4, 8),
         "off_t": (4, 8), "time_t": (4, 8), "pollfd": (8, 8), "String16": (4, 8), "mutex": (4, 40),
         "basic_string<char, std::__1::char_traits<char>, std::__1::allocator<char> >": (12, 24)}
ENDS = ("DW_TAG_structure_type", "DW_TAG_class_type", "DW_TAG_union_type", "DW_TAG_base_type",
        "DW_TAG_pointer_type", "DW_TAG_enumeration_type", "DW_TAG_array_type")


def size_of(die: Any) -> int:
    """The size of a type, through its other names."""
    if "DW_AT_byte_size" in die.attributes:
        return int(die.attributes["DW_AT_byte_size"].value)
    if die.tag == "DW_TAG_pointer_type":
        return int(die.cu["address_size"])
    if die.tag == "DW_TAG_array_type":
        count = 1
        for child in die.iter_children():
            if "DW_AT_count" in child.attributes:
                count *= child.attributes["DW_AT_count"].value
        return count * size_of(die.get_DIE_from_attribute("DW_AT_type"))
    return size_of(die.get_DIE_from_attribute("DW_AT_type"))


Layout = tuple[int, tuple[tuple[int, str], ...]]


def layout_of(die: Any) -> Layout:
    """Size, and the members' places and names; a type of one member is that member."""
    while die.tag not in ENDS and "DW_AT_type" in die.attributes:
        die = die.get_DIE_from_attribute("DW_AT_type")
    members = tuple((child.attributes["DW_AT_data_member_location"].value, name_of(child))
                    for child in die.iter_children() if child.tag == "DW_TAG_member"
                    and "DW_AT_data_member_location" in child.attributes)
    return size_of(die), members if len(members) > 1 else ()


def name_of(member: Any) -> str:
    """The stand-ins' name of a member that the library reads; empty for others."""
    attribute = member.attributes.get("DW_AT_name")
    name = attribute.value.decode() if attribute is not None else ""
    return MEMBERS.get(name, name if name in MEMBERS.values() else "")


def layouts(path: Path, names: set[str]) -> dict[str, set[Layout]]:
    """Each of these types that the file describes, with all layouts that it has there."""
    found: dict[str, set[Layout]] = {}
    with path.open("rb") as stream:
        for unit in ELFFile(stream).get_dwarf_info().iter_CUs():
            for die in unit.iter_DIEs():
                name = die.attributes.get("DW_AT_name")
                if name is None or name.value.decode() not in names:
                    continue
                if "DW_AT_declaration" in die.attributes or die.tag not in (
                        *ENDS, "DW_TAG_typedef"):
                    continue
                found.setdefault(name.value.decode(), set()).add(layout_of(die))
    return found


def build_id(path: Path) -> str:
    with path.open("rb") as stream:
        notes = ELFFile(stream).get_section_by_name(".note.gnu.build-id")
        return str(next(notes.iter_notes())["n_desc"])


def main() -> int:
    unstripped, stripped, *stand_ins = (Path(argument) for argument in sys.argv[1:])
    assert build_id(unstripped) == build_id(stripped), "another build's debug information"
    library = layouts(unstripped, {*PAIRS, *SIZES})
    own: dict[str, set[Layout]] = {}
    for stand_in in stand_ins:
        own |= layouts(stand_in, set(PAIRS.values()))
    wrong = 0

    def tell(name: str, same: bool, other: object) -> int:
        print(f"{'ok' if same else 'FAILED':7}{name}: {library.get(name)}, "
              f"the stand-ins have {other}")
        return not same

    for name, other in PAIRS.items():
        wrong += tell(name, name in library and library[name] == own.get(other), own.get(other))
    with unstripped.open("rb") as stream:
        kind = (32, 64).index(ELFFile(stream).elfclass)
    for name, sizes in SIZES.items():
        size = sizes[kind]
        wrong += tell(name, {layout[0] for layout in library.get(name, ())} == {size}, size)
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
