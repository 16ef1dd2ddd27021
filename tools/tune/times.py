"""What the times of a setting's frames amount to."""

import math
from dataclasses import dataclass

import numpy as np
from numpy.typing import NDArray

# A frame of more than so many medians is a stutter.
STUTTER = 2.0
# The part of the frames whose mean is the "1 % low".
LOW = 0.01
# With fewer, a 99th percentile is little more than the slowest frame.
ENOUGH = 300


@dataclass(frozen=True)
class Times:
    """In milliseconds: a row for each round, a column for each frame."""

    rounds: NDArray[np.float64]

    def percentile(self, percent: float) -> float:
        return float(np.percentile(self.rounds, percent))

    @property
    def count(self) -> int:
        return self.rounds.size

    @property
    def median(self) -> float:
        return self.percentile(50)

    @property
    def p95(self) -> float:
        return self.percentile(95)

    @property
    def p99(self) -> float:
        return self.percentile(99)

    @property
    def low(self) -> float:
        """Frames per second over the slowest hundredth of the frames, at least one."""
        slowest = np.sort(self.rounds, axis=None)[-max(1, round(self.count * LOW)):]
        return 1000.0 / float(slowest.mean())

    @property
    def stutters(self) -> int:
        return int((self.rounds > STUTTER * self.median).sum())

    @property
    def own_stutters(self) -> int:
        """Frames that stutter in every round: not the machine's doing, but the program's."""
        return int((self.rounds > STUTTER * self.median).all(axis=0).sum())

    def above(self, target: float) -> float:
        """The part of the whole time by which frames overrun the target."""
        return float(np.maximum(self.rounds - target, 0).sum() / self.rounds.sum())

    @property
    def best(self) -> float:
        """Each frame at its fastest over the rounds, which are equal except for what else
        the machine did; the median over frames."""
        return _best(self.rounds)

    @property
    def noise(self) -> float:
        """How much `best` depends on a single round, as a part of it; not a number after
        one round."""
        if len(self.rounds) < 2:
            return math.nan
        without = [_best(np.delete(self.rounds, index, axis=0))
                   for index in range(len(self.rounds))]
        return (max(without) - min(without)) / min(without)


def _best(rounds: NDArray[np.float64]) -> float:
    return float(np.median(rounds.min(axis=0)))
