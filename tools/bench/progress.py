"""What a person sees meanwhile."""

import sys


def say(text: str) -> None:
    print(f"[bench] {text}", file=sys.stderr, flush=True)
