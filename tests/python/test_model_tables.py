"""What the library takes for true of the models against what the simulator does, and whose traits a class has."""

import contextlib
import json
import subprocess
import warnings

import pytest
from fake_client import FakeClient, fake_device
from simulators import connected, simulator_program

import pyzvr

LINKS = {"usb": pyzvr.USBDevice, "wifi": pyzvr.WifiDevice, "ethernet": pyzvr.ETHDevice, "serial": pyzvr.UARTDevice}
BUSES = {"uart": "uart_dict", "i2c": "I2C_dict", "spi": "SPI_dict", "can": "can_dict"}
# The simulator has modules for what is behind the library's ones: the slots of the chassis, lines of a board.
SIMULATED_ONLY, LIBRARY_ONLY = {"Slots"}, {"SystemAnalog"}


def simulated_table():
    run = subprocess.run([simulator_program(), "--table"], capture_output=True, text=True, timeout=10, check=True)
    return {row["model"]: row for row in json.loads(run.stdout)}


@contextlib.contextmanager
def product(name):
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # libusb is not where a user would have it
        made = getattr(pyzvr, name)()
    with made:
        yield made


def inputs_of(box, traits, modules):
    """What is only read on demand has no highest rate in the library, and a unit that goes by the reply."""
    if not hasattr(box, "ai_dict"):
        return {}
    each = {"channels": getattr(box, "ai_num_channels", 8), "bits": traits["bits"], "streams": "AI24Bit" not in modules}
    by_command = "channels" if getattr(box, "ai_strm_cmd", None) == pyzvr.START_AI_STREAMING_VARIABLE else "nothing"
    each["chosen"] = by_command if traits["enables"] == "nothing" else traits["enables"]
    if each["streams"]:
        assert box.ai_max_rate == traits["max_rates"][0]
        each |= {"unit": box.ai_ratio, "max_rates": traits["max_rates"]}
    return {port: each for port in box.ai_dict}


def outputs_of(box, modules):
    if not hasattr(box, "ao_dict"):
        return {}
    each = {"channels": box.ao_channel, "least": box.ao_volt_min, "most": box.ao_volt_max, "max_rate": box.ao_rate}
    return {port: each | {"streams": "AOStreaming" in modules} for port in box.ao_dict}


def library_row(name):
    """What the library takes for true, in the words of the simulator's table."""
    cls, traits = getattr(pyzvr, name), pyzvr._traitsOf(getattr(pyzvr, name))
    bases = {base for base in vars(pyzvr).values() if isinstance(base, type) and issubclass(cls, base)}
    modules = {base.__name__.removesuffix("Module") for base in cls.__mro__ if base.__name__.endswith("Module")}
    row = {
        "model": traits["model"],
        "name": pyzvr.LABEL_DICT[name],
        "links": [link for link, device in LINKS.items() if device in bases],
        "first_year": traits["first_year"],
    }
    if "AOStreaming" in modules:
        modules -= {"AO"}
    if modules & {"Thermocouple", "ThermalResistance"}:
        modules -= {"Thermal"}
    with product(name) as box:
        row |= {
            "modules": sorted(modules - LIBRARY_ONLY),
            "buses": {bus: getattr(box, field) for bus, field in BUSES.items() if hasattr(box, field)},
            "analog_inputs": inputs_of(box, traits, modules),
            "analog_outputs": outputs_of(box, modules),
            "thermometers": {port: traits["sensors"] for port in getattr(box, "thermal_dict", {})},
            "motion_ports": list(getattr(box, "motion_dict", getattr(box, "pawl_dict", {}))),
        }
        if "DIO" in modules:
            row |= {"fixed_function": traits["fixed_function"], "pins_per_port": box.dio_num_pins_per_port}
            row |= {"digital_inputs": box.di_dict, "digital_outputs": box.do_dict}
    return json.loads(json.dumps(row))


def differences(place, library, simulator):
    if isinstance(library, dict) and isinstance(simulator, dict):
        for key in library.keys() | simulator.keys():
            yield from differences(f"{place}.{key}", library.get(key), simulator.get(key))
    elif library != simulator:
        yield f"{place}: {library} in the library, {simulator} in the simulator"


def compared(name, simulator):
    """All that differs, of what the library states."""
    library = library_row(name)
    own = SIMULATED_ONLY if "DIO" in library["modules"] else SIMULATED_ONLY | {"DIO"}
    theirs = {key: simulator[key] for key in library} | {"modules": sorted(set(simulator["modules"]) - own)}
    if "AI24Bit" in library["modules"]:
        unstated = ("unit", "max_rates")
        theirs["analog_inputs"] = {port: {key: value for key, value in each.items() if key not in unstated}
                                   for port, each in simulator["analog_inputs"].items()}  # fmt: skip
    return list(differences(name, library, theirs))


def test_library_and_simulator_take_the_same_for_true():
    simulated = simulated_table()
    assert set(simulated) == set(pyzvr.HANDLE_LIST)
    found = [line for name, row in simulated.items() for line in compared(name, row)]
    assert not found, "\n".join(found)


@pytest.mark.parametrize(
    "member, wrong",
    [("name", "x"), ("links", ["usb"]), ("first_year", 1), ("fixed_function", False), ("pins_per_port", 1), ("buses", {"can": {}}),
     ("digital_inputs", {}), ("motion_ports", [7]), ("thermometers", {"1": 1}), ("modules", ["DIO"]), ("analog_outputs", {"0": {}})])  # fmt: skip
def test_a_member_that_differs_is_named(member, wrong):
    line, *_ = compared("Lattice", simulated_table()["Lattice"] | {member: wrong})
    assert line.startswith(f"Lattice.{member}")


@pytest.mark.parametrize("name", pyzvr.HANDLE_LIST)
def test_no_two_functions_have_a_line_in_common(name):
    with product(name) as box:
        fields = [*BUSES.values(), "ao_dict", "thermal_dict"]
        lines = [
            line for field in fields for places in getattr(box, field, {}).values() for line in places if isinstance(line, tuple)
        ]
        digital = {(port, pin) for field in ("di_dict", "do_dict") for port, pins in getattr(box, field, {}).items() for pin in pins}
    assert len(set(lines)) == len(lines) and set(lines) <= digital


def test_a_rate_that_differs_is_named_with_its_port():
    simulated = simulated_table()["Lattice"]
    simulated["analog_inputs"]["3"]["max_rates"] = [12000]
    (line,) = compared("Lattice", simulated)
    assert line.startswith("Lattice.analog_inputs.3.max_rates: [12000, 6000, 4000] in the library, [12000]")


def test_the_smaller_chassis_is_the_chassis_but_for_its_name():
    small, large = library_row("LatticeLite"), library_row("Lattice")
    assert small.pop("model") == "LatticeLite" and small.pop("name") == "Lattice-Lite"
    assert small == {key: value for key, value in large.items() if key not in ("model", "name")}


@pytest.mark.parametrize("member, wrong", [("enables", "channels"), ("bits", 24), ("max_rates", [20000, 1])])
def test_a_row_of_the_library_that_differs_is_named(monkeypatch, member, wrong):
    states = pyzvr._traitsOf
    monkeypatch.setattr(pyzvr, "_traitsOf", lambda cls: states(cls) | {member: wrong})
    (line,) = compared("TarnAnalog", simulated_table()["TarnAnalog"])
    assert line.startswith("TarnAnalog.analog_inputs.0.") and f"{wrong} in the library" in line


class Mixin:
    """Comes before the model, as what a user adds may."""


class Instrument(Mixin, pyzvr.HeronFast):
    """A model by another name."""


class OwnWifi(pyzvr.WifiDevice, pyzvr.SystemModule, pyzvr.SystemModule_async):
    """Of no model, but of a kind of device."""


class OwnInput(pyzvr.Device, pyzvr.SystemModule, pyzvr.SystemModule_async, pyzvr.AIModule, pyzvr.AIModule_async):
    """Of no model: has what stands for every class that no row knows."""

    def __init__(self):
        pyzvr.Device.__init__(self)
        for module in (pyzvr.AIModule_async, pyzvr.AIModule):
            module.__init__(self, {0: [0], 1: [0]}, 16000, 0.001, 2, False)
        self.client_cmd = FakeClient(self)

    def _getDeviceName(self):
        return "Own-Input"


def test_a_class_has_the_traits_of_the_model_that_it_derives_from():
    assert pyzvr._traitsOf(Instrument) == pyzvr._traitsOf(pyzvr.HeronFast)
    assert pyzvr._traitsOf(type("Again", (Instrument, pyzvr.SDCardModule_async), {}))["model"] == "HeronFast"
    assert pyzvr._traitsOf(type("Lattice", (pyzvr.AIModule,), {}))["enables"] == "chip_selects"  # the name counts
    assert pyzvr._traitsOf(OwnWifi)["first_year"] == 2000
    assert pyzvr._traitsOf(OwnInput) == pyzvr._traitsOf(object) and pyzvr._traitsOf(object)["first_year"] == 1900


def test_an_input_of_no_model_has_the_defaults(call):
    box = OwnInput()
    names = ["SET_AI_ENABLED_CS", "SET_AI_SAMPLING_RATE", "SET_AI_MODE", "OPEN_AI", "AI_SET_TRIG_MODE"]
    box.client_cmd.replies = {getattr(pyzvr, name): b"\1\0" for name in names}
    try:
        assert call(box, "AI_enableChannel", 1, 8) == 0 and box.ai_num_channels == 8
        assert call(box, "AI_setSamplingRate", 1, 1e6) == 0  # nothing limits it, `ai_max_rate` neither
        assert call(box, "AI_setMode", 1, 0) == 0 and call(box, "AI_open", 1) == 0 and call(box, "AI_setTriggerMode", 1, 1) == 0
        assert [data[0] for _, data in box.client_cmd.sent] == [1] * 5  # ports are the device's own
        for operation, arguments in (("AI_enableCS", (1, [0])), ("AI_setTriggerMode", (1, 2))):
            with pytest.raises(pyzvr.APINotSupportError):
                call(box, operation, *arguments)
        with pytest.raises(pyzvr.AIChannelNotAvaliableError):
            call(box, "AI_enableChannel", 1, 9)
        assert len(box.ai_data_queue_list) == 1
    finally:
        box._AI_free()
        box.close(verbose=False)


def test_the_state_of_a_sensor_is_asked_for_as_the_name_says_now(call, monkeypatch):
    with fake_device("TarnThermo", GET_THERMAL_STATUS=b"\1\0\3\4") as box:
        assert call(box, "Thermal_getStatus", 1, 0) == b"\3\4"
        monkeypatch.setitem(pyzvr.LABEL_DICT, "TarnThermo", "Sable-Thermo")
        assert call(box, "Thermal_getStatus", 1, 0) == b"\3\4"
        assert [data for _, data in box.client_cmd.sent] == [b"\1\0", b"\1\0\1"]


@pytest.mark.parametrize("name", ["HeronFast", "HeronMixed", "TarnAnalog", "TarnAnalog24"])
def test_the_highest_rate_is_that_of_the_row(name, call):
    (limit,) = pyzvr._traitsOf(getattr(pyzvr, name))["max_rates"]
    with connected(name) as box:
        assert call(box, "AI_setSamplingRate", 0, limit) == 0
        with pytest.raises(pyzvr.AIRateNotVaildError):
            call(box, "AI_setSamplingRate", 0, limit + 0.5)
