from tools.common import cli

cli.start("conform", "tools.conform.conform")
