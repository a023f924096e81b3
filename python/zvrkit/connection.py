"""Keeps a box connected: makes its connection anew, with growing pauses, whenever the device or the network ended it.

Nothing is set or opened again on the device: what that takes is up to the program, which is told.
"""

from __future__ import annotations

import logging
import threading
from collections.abc import Callable
from types import TracebackType
from typing import Any, Protocol

__all__ = ["Box", "Reconnecting", "reconnecting"]

logger = logging.getLogger("zvrkit.connection")
# Without a handler of its own a library's warnings would be printed by programs that set up no logging.
logging.getLogger("zvrkit").addHandler(logging.NullHandler())


class Box(Protocol):
    """What is asked of a box: any product of `pyzvr` that has a connection."""

    def isConnected(self) -> bool: ...

    def reconnect(self, verbose: bool = ...) -> Any: ...

    def onConnectionLost(self, callback: Callable[[Exception], object]) -> Any: ...


class Reconnecting:
    """Looks after one box until `stop`, or the end of its `with` block; see `reconnecting`."""

    def __init__(self, box: Box, first: float, most: float,
                 callback: Callable[[bool, Exception | None], object] | None) -> None:
        if not 0 < first <= most:
            raise ValueError(f"first: more than 0 and at most most={most} is wanted, not {first}")
        self._box = box
        self._first, self._most = first, most
        self._callback = callback
        self._lost = threading.Event()
        self._stopped = threading.Event()
        self._reason: Exception | None = None
        box.onConnectionLost(self._lose)
        self._thread = threading.Thread(target=self._run, name="zvrkit reconnecting", daemon=True)
        self._thread.start()

    def stop(self) -> None:
        """Leaves the box as it is from now on. Returns when a try that is under way is over."""
        self._stopped.set()
        self._lost.set()
        if threading.current_thread() is not self._thread:
            self._thread.join()

    def __enter__(self) -> Reconnecting:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: TracebackType | None) -> None:
        self.stop()

    def _lose(self, reason: Exception) -> None:
        self._reason = reason
        self._lost.set()

    def _tell(self, connected: bool, reason: Exception | None) -> None:
        if self._callback is None:
            return
        try:
            self._callback(connected, reason)
        except Exception:
            logger.exception("the callback of a box that is kept connected failed")

    def _run(self) -> None:
        while True:
            self._lost.wait()
            self._lost.clear()
            if self._stopped.is_set():
                return
            logger.warning("%r: connection lost: %s", self._box, self._reason)
            self._tell(False, self._reason)
            if not self._try_until_connected():
                return

    def _leave_alone(self) -> None:
        def is_wanted() -> bool:
            return not getattr(self._box, "_disconnect_asked", False) or getattr(self._box, "killed", False)

        if is_wanted():
            return
        logger.info("%r: disconnected, and left alone until it is connected", self._box)
        while not is_wanted() and not self._stopped.wait(self._first):
            pass

    def _try_until_connected(self) -> bool:
        pause = self._first
        while not self._stopped.is_set():
            self._leave_alone()
            if self._stopped.is_set():
                return False
            try:
                if not self._box.isConnected():
                    self._box.reconnect(verbose=False)
                self._box.onConnectionLost(self._lose)
            except Exception as error:
                if getattr(self._box, "killed", False):
                    logger.info("%r: closed, and no longer kept connected", self._box)
                    return False
                logger.info("%r: not reached (%s); again in %.3g s", self._box, error, pause)
                self._stopped.wait(pause)
                pause = min(2 * pause, self._most)
            else:
                logger.warning("%r: connected again", self._box)
                self._tell(True, None)
                return True
        return False


def reconnecting(box: Box, first: float = 0.1, most: float = 30.0,
                 callback: Callable[[bool, Exception | None], object] | None = None) -> Reconnecting:
    """Keeps a connected box connected until `stop` of what is returned, or the end of its `with` block.

    After a loss it tries at once, then after `first` seconds, twice that, and so on up to `most` seconds.
    `callback(connected, reason)` is called on a thread: with False and the error after a loss, with True and None when
    there is a connection again. `disconnect` ends the trying until the box is connected. `logging.getLogger("zvrkit.connection")` tells the same.

        >>> import pyzvr, zvrkit, zvrkit.sim
        >>> with zvrkit.sim.device("TarnDio") as place, pyzvr.TarnDio() as box:
        ...     box.connect(*place.address, verbose=False)
        ...     with zvrkit.reconnecting(box):
        ...         print(box.Sys_getSerialNumber())
        Opened handle (Tarn-Dio)
        SIM00001
        Disconnected from Tarn-Dio (127.0.0.1)
        Closed handle (Tarn-Dio)
    """
    return Reconnecting(box, first, most, callback)
