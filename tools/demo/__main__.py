from tools.common import cli

cli.start("demo", "tools.demo.demo")
