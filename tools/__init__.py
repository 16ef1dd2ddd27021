"""The commands that measure: python3 -m tools.demo, tools.tune, tools.conform,
tools.faults and tools.bench, each with --help."""
