"""The commands that measure: python3 -m tools.demo, tools.tune, tools.conform,
tools.faults and tools.bench, each with --help.

common      what they share; nothing in it knows a command
PACKAGE     a command: __main__ starts main(arguments) of the module of its own name

A new way to scale a game is a row of tune/ways.py; a suite, of conform/suites.py; an
identity that must change nothing, of common/games.py; a fault, of faults/scenarios.py;
a part of the measurements, of bench/bench.py.
"""
