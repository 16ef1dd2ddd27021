"""What the library takes of every process that loads it."""

import collections
import statistics
from pathlib import Path
from typing import Any

from elftools.elf.elffile import ELFFile
from elftools.elf.enums import ENUM_RELOC_TYPE_ARM, ENUM_RELOC_TYPE_x64
from elftools.elf.relocation import RelocationSection, RelrRelocationSection

from tools.common.processes import output

NOT_LOADED = ".debug .symtab .strtab .shstrtab .comment .ARM.attributes".split()


def relocation_kinds(elf: ELFFile) -> dict[str, int]:
    names = {value: name for name, value in (
        ENUM_RELOC_TYPE_ARM if elf["e_machine"] == "EM_ARM" else ENUM_RELOC_TYPE_x64).items()}
    kinds: collections.Counter[str] = collections.Counter()
    for section in elf.iter_sections():
        if isinstance(section, RelrRelocationSection):
            kinds["relative, packed"] += section.num_relocations()
        elif isinstance(section, RelocationSection):
            kinds.update(names.get(r["r_info_type"], "?") for r in section.iter_relocations())
    return dict(kinds)


def writable_relocated(elf: ELFFile) -> int:
    """How many words the loader relocates outside of what becomes read-only after it."""
    relro = [(s["p_vaddr"], s["p_vaddr"] + s["p_memsz"]) for s in elf.iter_segments()
             if s["p_type"] == "PT_GNU_RELRO"]
    addresses = [r["r_offset"] for section in elf.iter_sections()
                 if isinstance(section, (RelocationSection, RelrRelocationSection))
                 for r in section.iter_relocations()]
    return sum(not any(a <= address < b for a, b in relro) for address in addresses)


def describe(path: Path) -> dict[str, Any]:
    with open(path, "rb") as file:
        elf = ELFFile(file)
        sections = {s.name: s["sh_size"] for s in elf.iter_sections()
                    if s.name and not s.name.startswith(tuple(NOT_LOADED))}
        loaded = sum(s["p_filesz"] for s in elf.iter_segments() if s["p_type"] == "PT_LOAD")
        return {"file bytes": path.stat().st_size, "loaded bytes": loaded,
                "sections": sections, "relocations": relocation_kinds(elf),
                "relocated words that stay writable": writable_relocated(elf)}


def load(build: Path, times: int) -> dict[str, float]:
    """Medians over so many loads each, in turn, each in a process of its own: microseconds and
    page faults over an empty library, private memory."""
    libraries = {"library": build / "libtolvernvesko.so", "empty": build / "bench/libempty.so"}
    samples: dict[str, list[list[float]]] = collections.defaultdict(list)
    for _ in range(times):
        for name, path in libraries.items():
            said = output([build / "bench/load_time", path])
            samples[name].append([float(value) for value in said.split()])
    middle = {name: [statistics.median(column) for column in zip(*rows)]
              for name, rows in samples.items()}
    least = {name: min(row[0] for row in rows) for name, rows in samples.items()}
    library, empty = middle["library"], middle["empty"]
    return {"empty us": empty[0], "over empty us": library[0] - empty[0],
            "least over empty us": least["library"] - least["empty"],
            "page faults over empty": library[1] - empty[1],
            "microseconds of a page fault": library[4],
            "private KiB over empty": library[2] - empty[2], "heap bytes": library[3] - empty[3]}
