"""Running the measuring programs."""
import os
import subprocess
import sys


class BenchError(Exception):
    pass


def say(text):
    print(f"[bench] {text}", file=sys.stderr, flush=True)


def run(command, env=None, **options):
    """The standard output of a program that must succeed. Starting the library closes
    descriptor 0, so there is always something there to be closed."""
    try:
        done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True,
                              env=os.environ if env is None else env, **options)
    except FileNotFoundError as error:
        raise BenchError(f"{error.filename} is missing") from error
    if done.returncode != 0:
        raise BenchError(f"{' '.join(map(str, command))} ended with {done.returncode}:\n"
                         f"{done.stderr[-2000:]}")
    return done.stdout
