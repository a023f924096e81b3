"""How the figures look: one width, the page's letters, and colours by name that the site fills in.

A colour is drawn as a number that nothing else has. `coloured` puts the site's variable in its place, with the colour
of the light scheme for whoever shows the file by itself.
"""

INK, MUTED, GRID, FILL = "#010203", "#020304", "#030405", "#040506"
BLUE, ORANGE, GREEN, PURPLE, RED, TEAL = "#050607", "#060708", "#070809", "#08090a", "#090a0b", "#0a0b0c"
VARIABLES = {
    INK: ("--color-foreground-primary", "#222222"), MUTED: ("--color-foreground-secondary", "#5a5c63"),
    GRID: ("--zvr-grid", "#d9dce1"), FILL: ("--zvr-fill", "#f2f4f7"), BLUE: ("--zvr-1", "#2563c9"),
    ORANGE: ("--zvr-2", "#b85408"), GREEN: ("--zvr-3", "#17784a"), PURPLE: ("--zvr-4", "#7745bd"),
    RED: ("--zvr-5", "#bb2f3b"), TEAL: ("--zvr-6", "#0d7480"),
}  # fmt: skip
WIDTH = 440  # units; a telephone's page is a little narrower


def coloured(text):
    """With the site's colours in the place of those drawn with."""
    for drawn, (variable, light) in VARIABLES.items():
        text = text.replace(drawn, f"var({variable}, {light})")
    return text


class Drawing:
    """Rectangles and text, put together by hand."""

    def __init__(self, height, title):
        self.height, self.title, self.parts = height, title, []

    def box(self, x, y, width, height, fill=FILL, line=MUTED, dashed=False, tip=None):
        mark = ' stroke-dasharray="4 3"' if dashed else ""
        inside = f"<title>{escaped(tip)}</title>" if tip else ""
        self.parts.append(
            f'<rect x="{x:g}" y="{y:g}" width="{width:g}" height="{height:g}" rx="3" fill="{fill}" '
            f'stroke="{line}"{mark}>{inside}</rect>'
        )

    def text(self, x, y, text, size=12, colour=INK, anchor="start", bold=False, fixed=False):
        weight = ' font-weight="600"' if bold else ""
        letters = ' font-family="monospace"' if fixed else ""
        self.parts.append(
            f'<text x="{x:g}" y="{y:g}" font-size="{size}" fill="{colour}" text-anchor="{anchor}"'
            f"{weight}{letters}>{escaped(text)}</text>"
        )

    def line(self, x1, y1, x2, y2, colour=MUTED):
        self.parts.append(f'<line x1="{x1:g}" y1="{y1:g}" x2="{x2:g}" y2="{y2:g}" stroke="{colour}"/>')

    def save(self, path):
        body = "\n".join(self.parts)
        path.write_text(
            coloured(
                f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {self.height:g}" '
                f'font-family="sans-serif">\n<title>{escaped(self.title)}</title>\n{body}\n</svg>\n'
            )
        )


def escaped(text):
    return str(text).replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")
