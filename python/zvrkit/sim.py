"""Simulated devices: starts them, tells where they are reached, changes them while they run, and ends them.

    >>> import pyzvr, zvrkit.sim
    >>> with zvrkit.sim.device("TarnDio", "--serial", "SN7") as place, pyzvr.TarnDio() as box:
    ...     box.connect(*place.address, verbose=False)
    ...     print(box.Sys_getSerialNumber())
    ...     place.stall()  # from now on nothing is answered
    Opened handle (Tarn-Dio)
    SN7
    Disconnected from Tarn-Dio (127.0.0.1)
    Closed handle (Tarn-Dio)

Models on USB are seen by programs that are started beside them, `bus.run(command)` of `with zvrkit.sim.usb("SableDio")
as bus`.
"""

from __future__ import annotations

import json
import os
import shutil
import subprocess
import sys
import sysconfig
import tempfile
import threading
from collections.abc import Sequence
from pathlib import Path
from types import TracebackType
from typing import IO, Any, TypeVar

__all__ = ["BusDevice", "Bus", "Place", "SimulatorError", "device", "program", "restart_beside_usb", "usb"]

_Self = TypeVar("_Self", bound="_Simulator")


class SimulatorError(Exception):
    """A simulator that does not start, has ended, or refuses a request; the text says why."""


def program(name: str = "zvr-sim") -> str:
    """Path of one of the simulator's programs: beside this package, as it is installed or built, or on the PATH."""
    # An environment has its programs in "bin" above its packages, and the default build in a folder beside them.
    folders = [parent / place for parent in Path(__file__).resolve().parents for place in ("bin", "default/bin")]
    folders += [Path(sysconfig.get_path("scripts")), Path(sys.executable).parent]
    for folder in folders:
        if os.access(folder / name, os.X_OK):
            return str(folder / name)
    found = shutil.which(name)
    if found is None:
        need = ", which needs libumockdev-dev" if name.endswith("usb") else ""
        raise SimulatorError(f"{name} is neither beside {Path(__file__).parent} nor on the PATH; "
                             f"`make build` builds it{need}")
    return found


class _Simulator:
    """A process that says a line when it is ready, and answers lines."""

    def __init__(self, command: Sequence[str]) -> None:
        self._lock = threading.Lock()
        self._errors: IO[str] | None = None
        if "--verbose" not in command:
            self._errors = tempfile.TemporaryFile("w+")
        self.process = subprocess.Popen([*command, "--stdin-stop"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        stderr=self._errors, text=True)
        self.said: dict[str, Any] = {}
        try:
            self.said = self._answer()
        except BaseException:
            self.process.kill()
            self._release()
            raise

    def _answer(self) -> dict[str, Any]:
        assert self.process.stdout is not None
        line = self.process.stdout.readline()
        if not line:
            raise SimulatorError(self._reason())
        answer: dict[str, Any] = json.loads(line)
        return answer

    def _reason(self) -> str:
        status = self.process.wait()
        text = ""
        if self._errors is not None:
            self._errors.seek(0)
            text = self._errors.read().strip()
        return text or f"{self.process.args!r} has ended with status {status}"

    def request(self, *words: object) -> dict[str, Any]:
        """Sends a line, and gives what is answered; by then it is done."""
        assert self.process.stdin is not None
        with self._lock:
            try:
                self.process.stdin.write(" ".join(map(str, words)) + "\n")
                self.process.stdin.flush()
            except (OSError, ValueError) as failure:
                raise SimulatorError("the simulator has ended") from failure
            answer = self._answer()
        if not answer["ok"]:
            raise SimulatorError(answer["error"])
        return answer

    def close(self) -> None:
        """Ends the simulator; a status other than 0 is a failure."""
        assert self.process.stdin is not None
        if self.process.stdin.closed:
            return
        try:
            self.process.stdin.close()
        except OSError:
            pass  # it has ended
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
        reason = self._reason() if self.process.wait() != 0 else None
        self._release()
        if reason is not None:
            raise SimulatorError(reason)

    def kill(self) -> None:
        """Ends it as a power cut does."""
        self.process.kill()
        self.process.wait()
        self._release()

    def _release(self) -> None:
        self.process.wait()
        for stream in (self.process.stdin, self.process.stdout, self._errors):
            if stream is not None:
                try:
                    stream.close()
                except OSError:
                    pass  # what was written last has nobody to read it

    def __enter__(self: _Self) -> _Self:
        return self

    def __exit__(self, kind: type[BaseException] | None, failure: BaseException | None,
                 trace: TracebackType | None) -> None:
        try:
            self.close()
        except SimulatorError:
            if failure is None:
                raise


class _Steered:
    """What can be changed of a device while it runs. Each method returns when it is so."""

    def request(self, *words: object) -> dict[str, Any]:
        raise NotImplementedError

    def stall(self, on: bool = True) -> None:
        """Requests are carried out and not answered, and nothing else is sent."""
        self.request("stall", "on" if on else "off")

    def wave(self, channel: int | str, kind: str, *numbers: float) -> None:
        """What is at an analog input, "*" for all, from now on: "sine", "ramp", "noise", "constant", "square" or
        "count"; and as far as they are given frequency, amplitude and offset."""
        self.request("wave", ":".join(map(str, (channel, kind, *numbers))))

    def level(self, port: int, pin: int, high: bool | None) -> None:
        """What is at a digital input; None leaves it to its wire."""
        self.request("level", port, pin, "off" if high is None else int(high))

    def refuse(self, command: str | int, status: int | None) -> None:
        """The status that a command is answered with, without being carried out; None ends it."""
        self.request("refuse", command, "off" if status is None else status)


class Place(_Steered, _Simulator):
    """A simulated device and where it is reached."""

    @property
    def model(self) -> str:
        return str(self.said["model"])

    @property
    def serial(self) -> str:
        """The serial number that it starts with."""
        return str(self.said["serial"])

    @property
    def host(self) -> str:
        return str(self.said["host"])

    @property
    def port(self) -> int:
        """TCP port of the commands."""
        return int(self.said["command_port"])

    @property
    def data_port(self) -> int:
        """TCP port of the streamed data, on Wi-Fi models."""
        return int(self.said["data_port"])

    @property
    def serial_port(self) -> str:
        """Path of the serial line, on serial models."""
        return str(self.said["serial_port"])

    @property
    def address(self) -> tuple[Any, ...]:
        """What `connect` of the model takes."""
        return tuple(self.said[key] for key in ("serial_port", "host", "data_port", "command_port") if key in self.said)

    def request(self, *words: object) -> dict[str, Any]:
        return _Simulator.request(self, *words)

    def cut(self) -> None:
        """Ends all connections; a serial line falls silent until its next client. New ones are accepted."""
        self.request("cut")


class BusDevice(_Steered):
    """A device on a simulated USB."""

    def __init__(self, bus: Bus, model: str, serial: str) -> None:
        self._bus = bus
        self.model = model
        self.serial = serial

    def request(self, *words: object) -> dict[str, Any]:
        verb, *rest = words
        return self._bus.request(verb, self.serial, *rest)

    def unplug(self) -> None:
        """Takes it away, as by its cable."""
        self.request("unplug")


class Bus(_Simulator):
    """A USB with simulated devices, for programs that are started beside it."""

    @property
    def devices(self) -> list[BusDevice]:
        """Those that it started with."""
        return [BusDevice(self, each["model"], each["serial"]) for each in self.said["devices"]]

    @property
    def environment(self) -> dict[str, str]:
        """What a program needs in its environment to see the devices, and what is in this one's."""
        preload = [os.environ.get("LD_PRELOAD", ""), str(self.said["preload"])]
        return {**os.environ, "LD_PRELOAD": " ".join(filter(None, preload)), "UMOCKDEV_DIR": str(self.said["root"])}

    def run(self, command: Sequence[str], **options: Any) -> subprocess.CompletedProcess[Any]:
        """`subprocess.run` of a program that sees the devices."""
        return subprocess.run(command, env=self.environment, **options)

    def plug(self, model: str, serial: str) -> BusDevice:
        self.request("plug", f"{model}:{serial}")
        return BusDevice(self, model, serial)


def device(model: str, *options: str, program: str | None = None) -> Place:
    """Starts `zvr-sim MODEL OPTIONS`; its --help lists the options. `program` is its path, if it is not to be found."""
    return Place([program or _program("zvr-sim"), model, *options])


def usb(*devices: str, program: str | None = None) -> Bus:
    """Starts `zvr-sim-usb` with devices, each a model or MODEL:SERIAL, and its options."""
    return Bus([program or _program("zvr-sim-usb"), *devices])


def restart_beside_usb(*devices: str) -> None:
    """Runs this program once more, beside simulated devices on USB, and ends with it; returns if it is there already.
    """
    if "UMOCKDEV_DIR" not in os.environ:
        command = [_program("zvr-sim-usb"), *devices, "--", sys.executable, *sys.orig_argv[1:]]
        sys.stdout.flush()
        os.execv(command[0], command)


_program = program
