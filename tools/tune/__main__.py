from tools.common import cli

cli.start("tune", "tools.tune.tune")
