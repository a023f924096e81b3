"""I2C, SPI and UART: a memory, a thermometer, a flash, a line that echoes and a receiver that talks.

    python3 examples/buses.py         starts itself again beside a simulated box with all of these
    python3 examples/buses.py SERIAL  uses a device by its serial number; "default" takes the first one
"""

from __future__ import annotations

import asyncio
import sys
import time
import warnings

from _simulated import run_beside_usb  # first: it finds a build

import pyzvr

I2C, SPI, ECHO, TALKER = 1, 2, 1, 2  # ports
MEMORY, THERMOMETER = 0x50, 0x48  # addresses
READ, PROGRAM, STATUS, ENABLE, ERASE, IDENTIFY = 0x03, 0x02, 0x05, 0x06, 0x20, 0x9F  # commands of the flash


def i2c(box: pyzvr.SableCan) -> None:
    box.I2C_open(I2C)
    box.I2C_setClockRate(I2C, 1)  # 400 kHz
    text = list(b"Sable-01")
    box.I2C_write(I2C, MEMORY, [0x10, *text])  # a page of eight bytes
    box.I2C_write(I2C, MEMORY, [0x10])  # where to read
    print("Memory:     ", bytes(box.I2C_read(I2C, MEMORY, 8)))
    box.I2C_write(I2C, THERMOMETER, [0])
    high, low = box.I2C_read(I2C, THERMOMETER, 2)
    print(f"Thermometer: {(high << 8 | low) / 256:.2f} degrees")
    print("Nobody at 9:", box.I2C_write(I2C, 9, [0]))  # the code of a refusal
    box.I2C_close(I2C)


def spi(box: pyzvr.SableCan) -> None:
    """A flash erases a sector, takes a page, and is busy meanwhile."""

    def change(*command: int) -> None:
        box.SPI_write(SPI, [ENABLE])
        box.SPI_write(SPI, list(command))
        while box.SPI_readAndWrite(SPI, [STATUS, 0])[1] & 1:
            time.sleep(0.001)

    box.SPI_open(SPI)
    box.SPI_setMode(SPI, 0)
    box.SPI_setPrescaler(SPI, 8)
    print("Flash:      ", " ".join(f"{byte:02X}" for byte in box.SPI_readAndWrite(SPI, [IDENTIFY, 0, 0, 0])[1:]))
    change(ERASE, 0, 16, 0)
    change(PROGRAM, 0, 16, 0, *b"kept without power")
    print("             ", bytes(box.SPI_readAndWrite(SPI, [READ, 0, 16, 0, *bytes(18)])[4:]), sep="")
    box.SPI_close(SPI)


async def uart(box: pyzvr.SableCan) -> None:
    """What is written comes back on one line; on the other one a receiver tells its position."""
    for port in (ECHO, TALKER):
        await box.UART_open_async(port)
        await box.UART_setBaudRate_async(port, 115200)
    await box._UART_startReading_async(TALKER)  # opening starts the first port's only
    message = "one write is fifty characters at most"
    await box.UART_write_async(ECHO, message)
    echoed = b""
    while len(echoed) < len(message):
        echoed += await box.UART_readBytes_async(ECHO, 100)
        await asyncio.sleep(0.002)
    print("Echo:       ", echoed.decode())
    sentences = b""
    while b"RMC" not in sentences or not sentences.endswith(b"\n"):
        sentences += await box.UART_readBytes_async(TALKER, 1000)
        await asyncio.sleep(0.01)
    for line in sentences.decode().splitlines()[-2:]:
        body, _, checksum = line[1:].partition("*")
        computed = 0
        for character in body:
            computed ^= ord(character)
        print("Talker:     ", line, "right" if int(checksum, 16) == computed else "WRONG")
    for port in (ECHO, TALKER):
        await box.UART_close_async(port)  # the blocking form of this one operation does not work


def main() -> None:
    run_beside_usb("SableCan")
    # Where no libusb lies beside the package, the system's own is used, with a warning.
    warnings.simplefilter("ignore", UserWarning)
    with pyzvr.SableCan() as box:
        box.connect(sys.argv[1] if len(sys.argv) > 1 else "default")
        i2c(box)
        spi(box)
        asyncio.run(uart(box))
        box.DO_openPins(0, [4])
        print("Lines:      ", box.Sys_getPinModeInPort(0))
        box.DO_closePins(0, [4])


if __name__ == "__main__":
    main()
