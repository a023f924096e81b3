"""How the figures look: one width, the page's letters, and colours by name that the site fills in.

A colour is drawn as a number that nothing else has. `save` puts the site's variable in its place, with the colour of the
light scheme for whoever shows the file by itself.
"""

import re

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt  # noqa: E402

INK, MUTED, GRID, FILL = "#010203", "#020304", "#030405", "#040506"
BLUE, ORANGE, GREEN, PURPLE, RED, TEAL = "#050607", "#060708", "#070809", "#08090a", "#090a0b", "#0a0b0c"
VARIABLES = {
    INK: ("--color-foreground-primary", "#222222"), MUTED: ("--color-foreground-secondary", "#5a5c63"),
    GRID: ("--zvr-grid", "#d9dce1"), FILL: ("--zvr-fill", "#f2f4f7"), BLUE: ("--zvr-1", "#2563c9"),
    ORANGE: ("--zvr-2", "#b85408"), GREEN: ("--zvr-3", "#17784a"), PURPLE: ("--zvr-4", "#7745bd"),
    RED: ("--zvr-5", "#bb2f3b"), TEAL: ("--zvr-6", "#0d7480"),
}  # fmt: skip
WIDTH = 440  # units; a telephone's page is a little narrower
POINTS = 72

matplotlib.rcParams.update({
    "svg.fonttype": "none", "font.size": 12, "axes.labelsize": 12, "xtick.labelsize": 11, "ytick.labelsize": 11,
    "legend.fontsize": 11, "axes.edgecolor": MUTED, "axes.labelcolor": INK, "text.color": INK, "xtick.color": MUTED,
    "ytick.color": MUTED, "xtick.labelcolor": INK, "ytick.labelcolor": INK, "axes.facecolor": "none",
    "figure.facecolor": "none", "axes.grid": True, "grid.color": GRID, "axes.spines.top": False,
    "axes.spines.right": False, "lines.linewidth": 1.8, "legend.frameon": False,
    "axes.prop_cycle": matplotlib.cycler(color=[BLUE, ORANGE, GREEN, PURPLE, RED, TEAL]),
})  # fmt: skip


def coloured(text):
    """With the site's colours in the place of those drawn with."""
    for drawn, (variable, light) in VARIABLES.items():
        text = text.replace(drawn, f"var({variable}, {light})")
    return text


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


class Drawing:
    """Rectangles and text, put together by hand."""

    def __init__(self, height, title):
        self.height, self.title, self.parts = height, title, []

    def box(self, x, y, width, height, fill=FILL, line=MUTED, dashed=False, tip=None):
        mark = ' stroke-dasharray="4 3"' if dashed else ""
        inside = f"<title>{escaped(tip)}</title>" if tip else ""
        self.parts.append(f'<rect x="{x:g}" y="{y:g}" width="{width:g}" height="{height:g}" rx="3" fill="{fill}" '
                          f'stroke="{line}"{mark}>{inside}</rect>')

    def text(self, x, y, text, size=12, colour=INK, anchor="start", bold=False, fixed=False):
        weight = ' font-weight="600"' if bold else ""
        letters = ' font-family="monospace"' if fixed else ""
        self.parts.append(f'<text x="{x:g}" y="{y:g}" font-size="{size}" fill="{colour}" text-anchor="{anchor}"'
                          f"{weight}{letters}>{escaped(text)}</text>")

    def line(self, x1, y1, x2, y2, colour=MUTED):
        self.parts.append(f'<line x1="{x1:g}" y1="{y1:g}" x2="{x2:g}" y2="{y2:g}" stroke="{colour}"/>')

    def save(self, path):
        body = "\n".join(self.parts)
        path.write_text(coloured(f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {self.height:g}" '
                                 f'font-family="sans-serif">\n<title>{escaped(self.title)}</title>\n{body}\n</svg>\n'))


def escaped(text):
    return str(text).replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")
