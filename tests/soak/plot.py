#!/usr/bin/env python3
"""Draws what soak printed: plot.py ROUNDS.csv EDIT.csv PICTURE.svg (needs matplotlib and pandas)."""
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
import pandas

MIB = 1024  # [KiB]


def draw(axes, table, x, label, title):
    axes.plot(table[x], table["residentKiB"] / MIB, color="#0b6e99", linewidth=1)
    axes.set_ylim(0, 1.4 * table["residentKiB"].max() / MIB)
    axes.set_xlabel(label)
    axes.set_ylabel("resident memory [MiB]")
    axes.set_title(title, fontsize=10, loc="left")
    axes.ticklabel_format(style="plain", axis="x")
    for side in ("top", "right"):
        axes.spines[side].set_visible(False)


def main():
    rounds, edit, picture = sys.argv[1:]
    plt.rcParams["svg.hashsalt"] = "tavell"  # the same picture from the same numbers
    plt.rcParams["svg.fonttype"] = "none"
    figure, (left, right) = plt.subplots(1, 2, figsize=(10, 3.4))
    of_rounds = pandas.read_csv(rounds)
    of_rounds["rounds"] /= 1000
    of_edit = pandas.read_csv(edit)
    of_edit["minutes"] = of_edit["seconds"] / 60
    draw(left, of_rounds, "rounds", "thousand rounds", "A circuit made, edited, solved, read and released")
    draw(right, of_edit, "minutes", "minutes", "One system edited at random and solved")
    figure.tight_layout()
    figure.savefig(picture, metadata={"Date": None})


main()
