from tools.common import cli

cli.start("faults", "tools.faults.faults")
