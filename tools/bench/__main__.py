from tools.common import cli

cli.start("bench", "tools.bench.bench")
