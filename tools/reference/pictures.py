"""Pictures of models: ports, pins and what they can be, from what the library says of the model."""

import re
import sys
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[2] / "docs/figures"))

from style import BLUE, FILL, GREEN, GRID, INK, MUTED, ORANGE, PURPLE, RED, TEAL, WIDTH, Drawing  # noqa: E402

LEFT, RIGHT, ROW = 74, WIDTH - 10, 26
KINDS = {"input": (BLUE, "input"), "output": (ORANGE, "output"), "both": (GREEN, "input or output")}
BUS_COLOURS = {"UART": PURPLE, "I2C": TEAL, "SPI": RED, "CAN": ORANGE, "Temperature": BLUE, "Analog output": RED}


class Picture:
    """Draws a model from top to bottom, and tells in words what it draws."""

    def __init__(self, model):
        self.model, self.words, self.kinds = model, [], []
        self.drawing = Drawing(0, f"Ports and pins of {model.display_name}")
        self.y = 34

    def draw(self, path):
        self.drawing.box(1, 1, WIDTH - 2, 10, fill="none")  # its height is known at the end
        self.drawing.text(14, 22, self.model.display_name, 14, bold=True)
        self.drawing.text(WIDTH - 12, 22, self.model.link, 12, MUTED, "end")
        for port in self.model.digital_ports:
            self.digital_port(port)
        self.legend()
        for name, cells, note in self.model.channel_rows:
            self.channels(name, cells, note)
        if self.model.badges:
            self.badges(self.model.badges)
        height = self.y + 8
        self.drawing.parts[0] = self.drawing.parts[0].replace('height="10"', f'height="{height - 2:g}"')
        self.drawing.height = height
        self.drawing.save(path)
        return "; ".join(self.words)

    def digital_port(self, port):
        model, width = self.model, (RIGHT - LEFT) / self.model.pins_per_port
        inputs, outputs = model.inputs.get(port, []), model.outputs.get(port, [])
        self.drawing.text(14, self.y + 18, f"Port {port}", bold=True)
        for pin in range(model.pins_per_port):
            kind = (
                "both"
                if pin in inputs and pin in outputs
                else "input" if pin in inputs else "output" if pin in outputs else None
            )
            x = LEFT + pin * width
            if kind is None:
                self.drawing.box(x + 2, self.y, width - 4, ROW, "none", GRID, dashed=True)
                continue
            if kind not in self.kinds:
                self.kinds.append(kind)
            colour, meaning = KINDS[kind]
            self.drawing.box(x + 2, self.y, width - 4, ROW, FILL, colour, tip=f"port {port} pin {pin}: {meaning}")
            self.drawing.text(x + width / 2, self.y + 18, pin, 13, INK, "middle")
        self.y += ROW + 2
        pins = sorted({*inputs, *outputs})
        kind = "inputs" if not outputs else "outputs" if not inputs else "inputs or outputs"
        self.words.append(f"port {port} has {kind} {spans(pins)}")
        self.functions(port, width)
        self.y += 8

    def functions(self, port, width):
        """What else the pins can be, in as few lines as there is room for."""
        lines = []
        for name, places in self.model.functions:
            pins = sorted(pin for on, pin in places if on == port)
            if not pins:
                continue
            self.words.append(f"{name} on its pins {spans(pins)}")
            line = next((each for each in lines if each[-1] < pins[0]), None)
            if line is None:
                line = [-1]
                lines.append(line)
            line.append(pins[-1])
            y, x = self.y + 15 * (lines.index(line)), LEFT + pins[0] * width + 3
            colour = BUS_COLOURS[re.sub(r"( slot)? \d+$", "", name)]
            self.drawing.line(x, y + 2, LEFT + (pins[-1] + 1) * width - 3, y + 2, colour)
            self.drawing.text((x + LEFT + (pins[-1] + 1) * width - 3) / 2, y + 13, name, 11, colour, "middle")
        self.y += 15 * len(lines)

    def legend(self):
        x = LEFT
        for kind in self.kinds:
            colour, meaning = KINDS[kind]
            self.drawing.box(x + 2, self.y + 2, 10, 10, FILL, colour)
            self.drawing.text(x + 18, self.y + 11, meaning, 11, MUTED)
            x += 34 + 6 * len(meaning)
        self.y += 24 if self.kinds else 0

    def channels(self, name, cells, note):
        self.drawing.text(14, self.y + 12, name, bold=True)
        self.drawing.text(RIGHT, self.y + 12, note, 11, MUTED, "end")
        width = (RIGHT - LEFT) / max(8, len(cells))
        for place, cell in enumerate(cells):
            wide = width if len(str(cell)) < 3 else 2 * width
            self.drawing.box(LEFT + place * wide + 2, self.y + 18, wide - 4, ROW, FILL, PURPLE, tip=f"{name}: {cell}")
            self.drawing.text(LEFT + (place + 0.5) * wide, self.y + 36, cell, 13, INK, "middle")
        self.y += 18 + ROW + 10
        shown = spans(cells) if all(isinstance(each, int) for each in cells) else ", ".join(cells)
        self.words.append(f"{name}: {shown}" + (f" ({note})" if note else ""))

    def badges(self, names):
        x = 14
        for name in names:
            width = 16 + 6.6 * len(name)
            if x + width > RIGHT:
                x, self.y = 14, self.y + 26
            self.drawing.box(x, self.y, width, 20, "none", MUTED)
            self.drawing.text(x + width / 2, self.y + 14, name, 11, INK, "middle")
            x += width + 6
        self.y += 24
        self.words.append("also " + ", ".join(names))


def spans(numbers):
    """Numbers in order, "0 to 3, 6, 7"."""
    runs = []
    for number in numbers:
        if runs and number == runs[-1][1] + 1:
            runs[-1][1] = number
        else:
            runs.append([number, number])
    parts = [
        str(first) if first == last else f"{first}, {last}" if last == first + 1 else f"{first} to {last}"
        for first, last in runs
    ]
    return ", ".join(parts)
