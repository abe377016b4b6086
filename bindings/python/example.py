"""Shows the board and its sensors and, when a speed is given, sets the fan.

    python example.py [--fan PERCENT] [--library gputune.dll] [--simulate gputune_sim.dll BOARD.json]
"""

import argparse
import ctypes
import os
import sys

import gputune


def simulate(library: str, board_file: str) -> None:
    """Give this process a simulated board, to be called before start()."""
    error = ctypes.create_string_buffer(512)
    start = ctypes.CDLL(os.path.abspath(library)).GputuneSim_Start
    if not start(board_file.encode("utf-8"), error, len(error)):
        sys.exit(error.value.decode("utf-8"))


def main() -> None:
    parser = argparse.ArgumentParser(description="Show the graphics board and its sensors.")
    parser.add_argument("--fan", type=int, metavar="PERCENT", help="set the fan to a fixed speed")
    parser.add_argument("--library", metavar="FILE", help="gputune.dll, when it is not beside gputune.py")
    parser.add_argument("--simulate", nargs=2, metavar=("LIBRARY", "BOARD"), help="use a simulated board")
    options = parser.parse_args()

    try:
        board = gputune.Gputune(options.library)
        if options.simulate:
            simulate(*options.simulate)
        board.start()
        identity = board.identity()
        print(identity.name if identity else f"{board.vendor.name} graphics board")
        for reading in board.read_sensors():
            print(f"  {reading.name:25} {reading.value:9.2f} {reading.unit}")
        if options.fan is not None:
            board.set_fan_speed(options.fan)
            print(f"Fan speed set to {options.fan} %.")
    except gputune.GputuneError as error:
        sys.exit(f"error: {error}")


if __name__ == "__main__":
    main()
