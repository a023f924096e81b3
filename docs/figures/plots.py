"""Matplotlib in the look of the figures."""

import re

import matplotlib
from style import BLUE, GREEN, GRID, INK, MUTED, ORANGE, PURPLE, RED, TEAL, WIDTH, coloured

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

POINTS = 72

matplotlib.rcParams.update({
    "svg.fonttype": "none", "font.size": 12, "axes.labelsize": 12, "xtick.labelsize": 11, "ytick.labelsize": 11,
    "legend.fontsize": 11, "axes.edgecolor": MUTED, "axes.labelcolor": INK, "text.color": INK, "xtick.color": MUTED,
    "ytick.color": MUTED, "xtick.labelcolor": INK, "ytick.labelcolor": INK, "axes.facecolor": "none",
    "figure.facecolor": "none", "axes.grid": True, "grid.color": GRID, "axes.spines.top": False,
    "axes.spines.right": False, "lines.linewidth": 1.8, "legend.frameon": False,
    "axes.prop_cycle": matplotlib.cycler(color=[BLUE, ORANGE, GREEN, PURPLE, RED, TEAL]),
})  # fmt: skip


def axes(height, rows=1, **options):
    """A figure of this many units, and its axes."""
    return plt.subplots(rows, figsize=(WIDTH / POINTS, height / POINTS), dpi=POINTS, layout="constrained", **options)


def save(figure, path):
    """Writes the same text for the same drawing, and names of its own for what a page may have twice."""
    matplotlib.rcParams["svg.hashsalt"] = path.stem
    figure.savefig(path, metadata={"Date": None, "Creator": None, "Format": None, "Type": None})
    plt.close(figure)
    text = re.sub(r"<(metadata|style)\b.*?</\1>", "", path.read_text(), flags=re.DOTALL)
    text = re.sub(r"font: (\d+)px [^;\"]*", r"font-size: \1px", text)  # the page's letters
    text = re.sub(r'(\bid="|href="#|url\(#)', rf"\g<1>{path.stem}-", text)
    path.write_text(coloured(text))
