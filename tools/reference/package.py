"""What the built package has: its classes by page, and operations with what their docstrings say of them."""

import inspect
import re

import pyzvr

OPERATION = type(pyzvr.checkFirmwareError)

# Chapters, their pages, and the classes that a page tells of. `X_async` belongs to the page of `X`. A class that stands
# nowhere fails the build.
CHAPTERS = {
    "Connections": {
        "connection": ("Connecting and closing", "Device NetworkDevice ETHDevice WifiDevice USBDevice UARTDevice"),
        "finder": ("Finding devices", "DeviceFinder BroadcastDevice BroadcastModule"),
        "logger": ("The logger", "DataLogger"),
    },
    "Services": {
        "system": ("System", "SystemModule SystemBased"),
        "network": ("Network", "NetworkModule"),
        "wifi": ("Wi-Fi", "WifiModule SystemAnalogModule"),
        "sntp": ("Time from a server", "SNTPModule"),
        "sdcard": ("Memory card", "SDCardModule"),
    },
    "Digital": {
        "dio": ("Digital lines", "DIOModule DIOBased"),
        "pwm": ("PWM", "PWMModule PWMBased"),
        "counter": ("Pulse counters", "CounterModule CounterBased"),
        "encoder": ("Encoder", "EncoderModule EncoderBased"),
    },
    "Buses": {
        "i2c": ("I2C", "I2CModule I2CBased"),
        "spi": ("SPI", "SPIModule SPIBased"),
        "uart": ("UART", "UARTModule UARTBased"),
        "can": ("CAN", "CANModule CANBased CANFrame"),
    },
    "Analog": {
        "analog-inputs": ("Analog inputs", "AIModule AIBased AIUnion AI24BitStreamingModule AI24BitModule"),
        "sample-blocks": ("Streams and blocks of samples", "SampleBlock SampleStream"),
        "analog-outputs": ("Analog outputs", "AOModule AOStreamingModule AOBased"),
    },
    "Sensing": {
        "temperature": ("Temperature", "ThermalModule ThermalBased ThermocoupleModule ThermalResistanceModule"),
        "attitude": ("Attitude", "AHRSModule AHRSBased"),
        "relays": ("Relay counters", "RelayModule RelayBased"),
        "resistors": ("Variable resistors", "DPOTModule DPOTBased"),
        "multimeter": ("Multimeter records", "Measurement"),
    },
    "Motion": {
        "four-axis": ("Four-axis controller", "MCX514Module MCX514Based MotionAxis MotionLinearInterpolation "
                                              "MotionCircularInterpolation MotionHelicalInterpolation MotionInifile"),
        "four-axis-commands": ("Commands of the four-axis controller", "MCX514Driver"),
        "drive": ("Stepper drive", "TMC5240Module TMC5240Based"),
    },
    "Drone": {
        "drone": ("Flight controller", "DroneModule DroneBased"),
    },
    "Inner parts": {
        "requests": ("Requests", "Packet Packet_based"),
        "clients": ("Clients", "Client NetworkClient TCPClient UDPClient UARTClient USBClient "
                               "USBDeviceIdentity USBLibrary Socket"),
        "queues": ("Queues, pools and threads", "Fifo ItemFifo RowFifo EchoPool StreamPool BroadcastPool RecordSet "
                                                "Gate DeviceThread"),
    },
}  # fmt: skip
PAGES = {slug: (title, names.split()) for pages in CHAPTERS.values() for slug, (title, names) in pages.items()}


def public_classes():
    return {
        name: value
        for name, value in vars(pyzvr).items()
        if inspect.isclass(value) and value.__module__ == "pyzvr" and not name.startswith("_")
    }


def failures():
    return {name: value for name, value in public_classes().items() if issubclass(value, BaseException)}


def models():
    return list(pyzvr.HANDLE_LIST)


def functions():
    return {name: value for name, value in vars(pyzvr).items() if isinstance(value, OPERATION)}


def constants():
    return {
        name: value
        for name, value in vars(pyzvr).items()
        if not name.startswith("_") and not callable(value) and not inspect.ismodule(value)
    }


def page_of(name):
    """The page of a class that is neither failure nor model."""
    for slug, (_, names) in PAGES.items():
        if name in names or name.removesuffix("_async") in names:
            return slug
    raise LookupError(f"no page tells of pyzvr.{name}: name it in CHAPTERS of tools/reference/package.py")


def documented():
    """Classes with entries of their own on the pages of modules; awaitable classes stand with the blocking ones."""
    return [name for _, names in PAGES.values() for name in names]


def is_public(name):
    return not name.startswith("_")


class Doc:
    """A docstring of the library by its sections."""

    def __init__(self, text):
        parts = re.split(r"\n\n(Args|Returns|Raises|Attributes):\n", "\n\n" + (text or ""))
        self.text = parts[0].strip()
        sections = dict(zip(parts[1::2], parts[2::2]))
        self.arguments = self._entries(sections.get("Args", ""), r"(\*{0,2}\w+) \((.*?)\): (.*)")
        self.attributes = self._entries(sections.get("Attributes", ""), r"(\w+) \((.*?)\): (.*)")
        self.raises = self._entries(sections.get("Raises", ""), r"([\w., ]+?): ()(.*)")
        returned = re.sub(r"^ {4}", "", sections.get("Returns", ""), flags=re.MULTILINE).strip()
        self.returned, _, self.source = returned.partition("\nSource: ")

    @staticmethod
    def _entries(section, form):
        """Lists of (name, type, text)."""
        entries = []
        for each in re.split(r"\n    (?! )", "\n" + section)[1:]:
            match = re.fullmatch(form, " ".join(each.split()))
            if match is None:
                raise ValueError(f"a docstring has an entry of another form: {each!r}")
            entries.append(match.groups())
        return entries


class Operation:
    """A blocking operation with its awaitable form, or what has one form only."""

    def __init__(self, cls, name, value, other=None):
        self.cls, self.name, self.value = cls, name, value
        self.other = other  # the class, name and callable of the awaitable form
        self.doc = Doc(value.__doc__)

    @property
    def names(self):
        return [self.name] + ([self.other[1]] if self.other else [])

    def signature(self, cls, name, value):
        parameters = re.sub(r"^(async )?def \w+\((self(, /)?(, )?)?", "(", value.__stub__).removesuffix(": ...")
        return f"{cls}.{name}{parameters}"

    @property
    def signatures(self):
        found = [self.signature(self.cls, self.name, self.value)]
        return found + ([self.signature(*self.other)] if self.other else [])

    @property
    def is_static(self):
        return isinstance(vars(getattr(pyzvr, self.cls))[self.name], staticmethod)

    @property
    def is_async(self):
        return self.value.__stub__.startswith("async ")


def own_members(cls):
    """The methods and properties that a class defines, as they are."""
    members = {}
    for name, value in vars(cls).items():
        inner = value.__func__ if isinstance(value, (staticmethod, classmethod)) else value
        if isinstance(inner, (OPERATION, property)) and not name.startswith("__"):
            members[name] = inner
    return members


def operations_of(name):
    """The operations of a class in both forms; what only the awaitable class has comes last."""
    cls, partner = getattr(pyzvr, name), getattr(pyzvr, name + "_async", None)
    own = {key: value for key, value in own_members(cls).items() if isinstance(value, OPERATION)}
    waiting = (
        {}
        if partner is None
        else {key: value for key, value in own_members(partner).items() if isinstance(value, OPERATION)}
    )
    found = []
    for key, value in own.items():
        other = waiting.pop(key + "_async", None)
        holder = name + "_async"
        if other is None and key + "_async" in own:
            other, holder = own[key + "_async"], name
        if key.endswith("_async") and key.removesuffix("_async") in own:
            continue
        waiting.pop(key, None)  # one name for both forms
        found.append(Operation(name, key, value, other and (holder, key + "_async", other)))
    return found + [Operation(name + "_async", key, value) for key, value in waiting.items()]


def properties_of(name):
    return {key: value for key, value in own_members(getattr(pyzvr, name)).items() if isinstance(value, property)}
