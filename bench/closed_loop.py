#!/usr/bin/python3
"""closed_loop.py <repository> [--plot BOARD FILE]

The law of a held fan in closed loop with the thermal model of every shipped board: prints a table of the figures in
Markdown, and plots one board's run with matplotlib (python3-matplotlib) as SVG or PNG, by the file's name. The native build
(scripts/build native closed_loop) has the program that runs the loops.
"""

import argparse
import pathlib
import subprocess


def run(repository):
    """(name, limit, highest, turns, changes, samples) of each board; samples are (second, load, temperature, wanted)."""
    program = repository / "build/native/tests/closed_loop"
    output = subprocess.run([program, repository / "boards"], check=True, capture_output=True, text=True).stdout
    boards = []
    for line in output.splitlines():
        fields = line.split(",")
        if fields[0] == "board":
            boards.append((*fields[1:], []))
        else:
            boards[-1][-1].append(tuple(map(float, fields)))
    return boards


def print_table(boards):
    print("| board | limit (°C) | highest temperature (°C) | most changes of direction in a minute | changes of speed |")
    print("|---|---|---|---|---|")
    for name, limit, highest, turns, changes, _ in boards:
        print(f"| `{name}` | {limit} | {highest} | {turns} | {changes} |")


def plot(boards, name, path):
    import matplotlib  # pylint: disable=import-outside-toplevel

    matplotlib.use("Agg")
    # The same file for the same figures.
    matplotlib.rcParams["svg.hashsalt"] = "gputune"
    from matplotlib import pyplot  # pylint: disable=import-outside-toplevel

    samples = next(board[-1] for board in boards if board[0] == name)
    seconds, load, temperature, wanted = zip(*samples)
    figure, axes = pyplot.subplots(figsize=(10, 4.5))
    axes.fill_between(seconds, load, step="post", color="0.9", label="load (%)")
    axes.plot(seconds, temperature, color="tab:red", linewidth=1, label="temperature (°C)")
    axes.step(seconds, wanted, where="post", color="tab:blue", linewidth=1, label="fan speed (%)")
    axes.set_xlabel("seconds")
    axes.set_xlim(0, seconds[-1])
    axes.set_ylim(0, 105)
    axes.legend(loc="upper right", ncols=3, framealpha=1)
    axes.set_title(f"{name}: rest, a step, noise, a slow rise and fall, load that comes and goes")
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None} if path.endswith(".svg") else None)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("repository", type=pathlib.Path)
    parser.add_argument("--plot", nargs=2, metavar=("BOARD", "FILE"))
    options = parser.parse_args()
    boards = run(options.repository.resolve())
    print_table(boards)
    if options.plot:
        plot(boards, *options.plot)


if __name__ == "__main__":
    main()
