"""What a program can tell apart, with types that are checked strictly."""

from typing import List, Optional

import gputune


def temperature(board: gputune.Gputune) -> Optional[float]:
    board.fetch()
    reading = board.reading(gputune.HwmKey.GPU_TEMPERATURE)
    return reading.value if reading else None


def advice(error: Exception) -> str:
    if isinstance(error, gputune.NoBoardError):
        return "another computer"
    if isinstance(error, gputune.DriverError):
        return "another driver"
    if isinstance(error, (gputune.ProcessError, gputune.LibraryError)):
        return "another Python"
    return "another value" if isinstance(error, gputune.RefusedError) else str(error)


def clocks(board: gputune.Gputune) -> List[int]:
    ranges = (board.gpu_clock(), board.memory_clock())
    return [clock.max_clock for clock in ranges if clock and clock.max_clock is not None]
