"""How a command ends: the exit codes of all commands, and the errors behind them."""

EXIT_FAILED = 1  # What the command checks does not hold.
EXIT_REFUSED = 2
EXIT_CANNOT_RUN = 3
EXIT_INTERRUPTED = 130


class ToolError(Exception):
    """Ends the command with `code`; says what happened and what to do."""

    code = EXIT_CANNOT_RUN


class Refused(ToolError):
    """An option, a profile or another input is not usable."""

    code = EXIT_REFUSED


class CannotRun(ToolError):
    """A tool is missing, or a run went wrong."""
