#!/usr/bin/env python3
"""What keeps cmake/Rooms.cmake, on a small tree of two rooms and a room in a room.

usage: rooms_test.py SOURCE_DIR
"""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(sys.argv.pop()).resolve()
ROOMS = 'room(low)\nroom(low/deep low/fact.h)\nroom(high low)\nroom(tools)\n'
PROJECT = '''cmake_minimum_required(VERSION 3.22)
project(rooms CXX)
include_directories(${{CMAKE_SOURCE_DIR}})
include({source}/cmake/RoomChecks.cmake)
{rooms}
cmake_language(DEFER CALL check_rooms)
add_library(low OBJECT low/low.cpp)
add_library(high OBJECT high/high.cpp)
'''
FILES = {
    'low/fact.h': '', 'low/other.h': '', 'low/low.cpp': '#include "low/fact.h"\n',
    'low/deep/deep.h': '#include "low/fact.h"\n', 'high/high.h': '#include <vector>\n',
    'high/high.cpp': '#include "high/high.h"\n#  include "low/other.h"\n',
    'tools/measure.py': 'import re\nfrom tools import sizes\n'}


class Rooms(unittest.TestCase):
    def setUp(self) -> None:
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.tree = Path(folder.name)
        for name, text in FILES.items():
            self.write(name, text)
        self.assertIn('Generating done', self.configure(ROOMS))

    def write(self, name: str, text: str) -> None:
        (self.tree / name).parent.mkdir(parents=True, exist_ok=True)
        (self.tree / name).write_text(text)

    def run_cmake(self, *arguments: str) -> str:
        done = subprocess.run(['cmake', *arguments], cwd=self.tree, text=True, check=False,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return f'{done.stdout}\nexit code {done.returncode}'

    def configure(self, rooms: str) -> str:
        self.write('CMakeLists.txt', PROJECT.format(source=SOURCE, rooms=rooms))
        return self.run_cmake('-S', '.', '-B', 'build', '-G', 'Ninja')

    def test_a_forbidden_include_does_not_build(self) -> None:
        self.assertIn('exit code 0', self.run_cmake('--build', 'build'))
        for name, line, target, said in (
                ('low/low.cpp', '#include "high/high.h"', 'low', 'low may not include high/high.h'),
                ('low/low.cpp', '#include <high/high.h>', 'low', 'low may not include high/high.h'),
                ('low/low.cpp', '#include "low/deep/deep.h"', 'low',
                 'low may not include low/deep/deep.h'),
                ('high/high.h', '#include "high.h"', 'high', 'not named from the tree'),
                # Whoever includes a room waits for it, and files are told apart.
                ('low/other.h', '# include "high/high.h"', 'high',
                 'low may not include high/high.h'),
                ('low/deep/deep.h', '#include "low/other.h"', 'all',
                 'low/deep may not include low/other.h'),
                ('tools/measure.py', 'from tests.support.rig import RIG', 'all',
                 'tools may not include tests/support/rig')):
            with self.subTest(name=name, line=line):
                self.write(name, FILES[name] + line + '\n')
                printed = self.run_cmake('--build', 'build', '--target', target)
                self.assertIn(said, printed)
                self.assertNotIn('exit code 0', printed)
                self.write(name, FILES[name])
        self.assertIn('exit code 0', self.run_cmake('--build', 'build'))

    def test_the_statement_has_no_arrow_up(self) -> None:
        for rooms, said in (('room(low high)\nroom(high)', 'neither a room stated above it'),
                            ('room(low low/none.h)\nroom(high)', 'nor a file in one'),
                            ('room(low)', 'high/high.cpp is in no room'),
                            ('room(low)\nroom(high)\nroom(lost)', 'there is no code in lost')):
            with self.subTest(rooms=rooms):
                printed = ' '.join(self.configure(rooms).split())
                self.assertIn(said, printed)
                self.assertNotIn('exit code 0', printed)


if __name__ == '__main__':
    unittest.main()
