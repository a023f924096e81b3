"""A page for each model, from what the library's classes and their rows say."""

import contextlib
import functools
import io
import re

import pyzvr
from reference import markup, package, pictures

LINKS = {"USBDevice": "USB", "WifiDevice": "Wi-Fi", "ETHDevice": "Ethernet", "UARTDevice": "serial line"}
FUNCTIONS = {"UART": "uart_dict", "I2C": "I2C_dict", "SPI": "SPI_dict", "CAN": "can_dict",
             "Temperature": "thermal_dict", "Analog output": "ao_dict"}  # fmt: skip
BADGES = {"PWMModule": "PWM", "CounterModule": "pulse counters", "EncoderModule": "encoder",
          "RelayModule": "relay counters", "SDCardModule": "memory card", "SNTPModule": "time from a server",
          "SystemAnalogModule": "battery", "DroneModule": "flight controller"}  # fmt: skip


class Model:
    """What is true of a model, as its object and its row have it."""

    def __init__(self, name):
        self.name, self.cls = name, getattr(pyzvr, name)
        self.traits = pyzvr._traitsOf(self.cls)
        self.display_name = pyzvr.LABEL_DICT[name]
        bases = [base.__name__ for base in self.cls.__mro__]
        self.device = next(each for each in LINKS if each in bases)
        self.link = LINKS[self.device]
        address = pyzvr.HANDLE_DICT[name]
        self.address = {"USB": "", "serial line": '"/dev/ttyUSB0", 115200'}.get(self.link, f'"{address}"')
        self.modules = [each for each in bases if each.endswith("Module")]
        self.what = package.Doc(self.cls.__doc__).text.partition(": ")[2]
        with contextlib.redirect_stdout(io.StringIO()), self.cls() as box:
            self.fields = dict(vars(box))
            maker = {
                each: getattr(box, each, None)
                for each in (
                    "di_dict",
                    "do_dict",
                    "dio_num_pins_per_port",
                    "ai_max_rate",
                    "ao_rate",
                    "ao_volt_min",
                    "ao_volt_max",
                    "ao_channel",
                    "ai_num_channels",
                )
            }
            self.fields |= {key: value for key, value in maker.items() if value is not None}
        self.inputs, self.outputs = self.fields.get("di_dict", {}), self.fields.get("do_dict", {})
        self.digital_ports = sorted({*self.inputs, *self.outputs})
        self.pins_per_port = self.fields.get("dio_num_pins_per_port", 8)

    @property
    def functions(self):
        """Functions on lines of the digital ports: name and lines."""
        return [
            (self.port_name(kind, port), places)
            for kind, field in FUNCTIONS.items()
            for port, places in self.fields.get(field, {}).items()
            if on_lines(places)
        ]

    def port_name(self, kind, port):
        """As callers count it: on the chassis they name the slot of a function."""
        return f"{kind} slot {port + 1}" if self.traits["counts_slots"] else f"{kind} {port}"

    @property
    def input_note(self):
        if "AI24BitModule" in self.modules:
            return "24 bits, on demand"
        return f"{self.traits['bits']} bits, up to {hertz(self.traits['max_rates'][0])}"

    @property
    def channel_rows(self):
        """Ports with channels of their own: name, channels, and a note."""
        rows = []
        for port in self.fields.get("ai_dict", {}):
            rows.append(
                (
                    self.port_name("Analog input", port),
                    list(range(self.fields.get("ai_num_channels", 8))),
                    self.input_note,
                )
            )
        for port in self.fields.get("ao_dict", {}):
            note = f"{self.fields['ao_volt_min']} to {self.fields['ao_volt_max']} V"
            if "AOStreamingModule" in self.modules:
                note += f", up to {hertz(self.fields['ao_rate'])}"
            rows.append((self.port_name("Analog output", port), list(range(self.fields["ao_channel"])), note))
        for port in self.fields.get("thermal_dict", {}):
            kind = "thermocouples" if "ThermocoupleModule" in self.modules else "resistance thermometers"
            rows.append((self.port_name("Temperature", port), list(range(self.traits["sensors"])), kind))
        for port in self.fields.get("ahrs_dict", {}):
            rows.append((self.port_name("Attitude", port), ["roll", "pitch", "yaw"], "9-axis inertial unit"))
        for port in self.fields.get("motion_dict", {}):
            rows.append((self.port_name("Motion", port), ["axis 0", "axis 1", "axis 2", "axis 3"], "four axes"))
        for port in self.fields.get("pawl_dict", {}):
            rows.append((self.port_name("Motion", port), ["motor"], "stepper drive"))
        resistors = re.match(r"(\d+) variable resistors", self.what)
        if resistors:
            rows.append(("Resistors 0", list(range(int(resistors[1]))), "variable resistors"))
        return rows

    @property
    def badges(self):
        return [text for module, text in BADGES.items() if module in self.modules]

    @property
    def rates(self):
        """How the highest rate of the analog inputs falls."""
        rates = self.traits["max_rates"]
        if len(rates) < 2:
            return []
        what = "chip selects" if self.traits["enables"] == "chip_selects" else "channels"
        rows = [[str(count), hertz(rate)] for count, rate in enumerate(rates, 1)]
        return [
            "How many are enabled decides how fast they can be sampled.",
            "",
            *markup.table([f"Enabled {what}", "Highest rate"], rows),
        ]


def on_lines(places):
    return bool(places) and isinstance(places[0], tuple)


def hertz(rate):
    return f"{rate / 1000:g} kHz" if rate >= 1000 else f"{rate} Hz"


@functools.cache
def model(name):
    return Model(name)


def draw(folder):
    """The pictures, and what each shows in words."""
    return {name: pictures.Picture(model(name)).draw(folder / f"{name}.svg") for name in package.models()}


def port_rows(each):
    rows = []
    for port in each.digital_ports:
        inputs, outputs = each.inputs.get(port, []), each.outputs.get(port, [])
        kinds = [
            ("inputs or outputs", [pin for pin in inputs if pin in outputs]),
            ("inputs", [pin for pin in inputs if pin not in outputs]),
            ("outputs", [pin for pin in outputs if pin not in inputs]),
        ]
        text = "; ".join(f"{kind} {pictures.spans(pins)}" for kind, pins in kinds if pins)
        rows.append([f"Digital port {port}", text])
    has = {}
    for name, cells, note in each.channel_rows:
        shown = pictures.spans(cells) if isinstance(cells[0], int) else ", ".join(cells)
        has.setdefault(name, []).append(f"{shown}; {note}")
    for name, places in each.functions:
        lines = [
            f"port {port} pins {pictures.spans(sorted(pin for on, pin in places if on == port))}"
            for port in sorted({port for port, _ in places})
        ]
        has.setdefault(name, []).append("on " + ", ".join(lines))
    return rows + [[name, "; ".join(texts)] for name, texts in has.items()]


def page(name, words, targets):
    each = model(name)
    lines = [
        f".. _model-{name}:",
        "",
        *markup.heading(name),
        ".. py:currentmodule:: pyzvr",
        "",
        f".. py:class:: {name}()",
        "",
    ]
    body = [markup.escaped(each.what), ""]
    lines += markup.indented(body)
    lines += [f".. image:: /figures/models/{name}.svg", f"   :alt: {each.display_name}, {each.link}: {words}.", ""]
    lines += markup.heading("Using it", "-")
    lines += [
        ":Display name: " + each.display_name,
        f":Link: {each.link}",
        f":Connecting: :py:meth:`connect <pyzvr.{connecting(each)}.connect>` of :py:class:`{connecting(each)}`",
    ]
    if "SystemModule" in each.modules:
        lines += [f":Clock: counts its years from {each.traits['first_year']}"]
    if each.digital_ports:
        fixed = (
            "in use for good, nothing has to be opened"
            if each.traits["fixed_function"]
            else "idle until the program opens them"
        )
        lines += [f":Digital lines: {fixed}"]
    simulator = f"zvr-sim-usb {name} -- python3 program.py" if each.link == "USB" else f"zvr-sim {name}"
    lines += [
        f":Simulated by: ``{simulator}``",
        "",
        ".. code-block:: python",
        "",
        "   import pyzvr",
        "",
        f"   with pyzvr.{name}() as box:",
        f"       box.connect({each.address})",
        "",
    ]
    rows = port_rows(each)
    if rows:
        lines += markup.heading("Ports and channels", "-") + markup.table(["Port", "What it has"], rows, (1, 2))
    if each.rates:
        lines += markup.heading("Rates", "-") + each.rates
    lines += markup.heading("Modules and operations", "-")
    lines += [
        "Every operation has an awaitable form of the same name with ``_async``, unless its entry shows one form only.",
        "",
    ]
    for slug, (title, names) in package.PAGES.items():
        found = {}
        for cls in names:
            if issubclass(each.cls, getattr(pyzvr, cls)):
                for operation in package.operations_of(cls):
                    if package.is_public(operation.name):
                        found.setdefault(operation.name, targets.role(operation.name, f"pyzvr.{operation.cls}"))
        if found:
            lines += [f":ref:`{title} <module-{slug}>`", "   " + ", ".join(found.values()), ""]
    return "\n".join(lines)


def connecting(each):
    """The class whose `connect` the model has."""
    return next(
        base.__name__ for base in each.cls.__mro__ if base.__name__ in package.documented() and "connect" in vars(base)
    )


def pages(words, targets):
    """The pages by name; `words` tell what the pictures show."""
    found = {f"models/{name}.rst": page(name, words[name], targets) for name in package.models()}
    rows = []
    for name in package.models():
        each = model(name)
        modules = ", ".join(markup.escaped(cls.removesuffix("Module")) for cls in each.modules)
        rows.append([f":py:class:`{name}`", each.link, f"{markup.escaped(each.what)} Modules: {modules}."])
    lines = [
        ".. _models:",
        "",
        *markup.heading("Models"),
        ".. py:currentmodule:: pyzvr",
        "",
        "Find your device here: what it has, how it is connected, and which modules of the library it offers.",
        "",
    ]
    lines += markup.table(["Class", "Link", "What it is, and its modules"], rows, (4, 2, 10)) + markup.toctree(
        package.models()
    )
    return {**found, "models/index.rst": "\n".join(lines)}
