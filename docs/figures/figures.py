"""Draws the figures of the pages from what simulated devices do.

python3 docs/figures/figures.py FOLDER [NAME...]
"""

import asyncio
import contextlib
import sys
import time
from pathlib import Path

import zvrkit.sim
from plots import axes, save
from style import BLUE, FILL, GREEN, MUTED, ORANGE, WIDTH, Drawing

import pyzvr


def stream(path):
    """What a simulated box has on three of its channels, each sample where its block says that it was taken."""
    with zvrkit.sim.device("TarnAnalog") as place, pyzvr.TarnAnalog() as box:
        box.connect(*place.address, verbose=False)
        box.AI_open(0)
        box.AI_setMode(0, 2)
        box.AI_setSamplingRate(0, 2000)
        with box.AI_stream(0, 200) as blocks:
            block = next(iter(blocks))
    times = [1000 * (block.first_row + row) / block.rate for row in range(len(block))]
    figure, plot = axes(230)
    for channel in range(3):
        volts = [row[channel] for row in block.tolist()]
        plot.plot(times, volts, label=f"channel {channel}", marker=".", markersize=3, linewidth=1.2)
    plot.set(xlabel="time since the first sample (ms)", ylabel="V", xlim=(0, times[-1]))
    plot.legend(loc="lower center", bbox_to_anchor=(0.45, 1), ncol=3, columnspacing=1, handlelength=1.2)
    save(figure, path)


def sweep(path):
    """An output swept from one end to the other, and what the input behind it reads."""
    steps = [-5 + 0.1 * step for step in range(101)]
    read = []
    with zvrkit.sim.device("HeronMixed") as place, pyzvr.HeronMixed() as box:
        box.connect(*place.address, verbose=False)
        box.AI_open(0)
        box.AO_open(0)
        for volts in steps:
            box.AO_writeOneChannel(0, 0, volts)
            read.append(box.AI_readOnDemand(0)[0])
    figure, (above, below) = axes(300, 2, sharex=True, height_ratios=(2, 1))
    above.plot(steps, read, marker=".", markersize=3, linewidth=1)
    above.set(ylabel="read (V)")
    below.plot(steps, [1000 * (got - put) for put, got in zip(steps, read)], color=ORANGE, marker=".", linestyle="none")
    below.set(ylabel="error (mV)", xlabel="put out (V)", xlim=(-5, 5))
    save(figure, path)


async def travelled(controller):
    """Times, positions and speeds of a move, of the requests whose moment is known well."""
    rows = []
    await controller.Motion_open_async(0)
    await controller.Motion_cfgAxisMove_async(0, 0, 0, 2000, velo=4000, accel=10000, decel=10000)
    await controller.Motion_startSingleAxisMove_async(0, 0)
    begin = time.monotonic()
    while time.monotonic() - begin < 1.1:
        asked = time.monotonic()
        position = await controller.Motion_getLogicalPosi_async(0, 0)
        speed = await controller._Motion_getCurrentDriveSpeed_async(0, 0)
        answered = time.monotonic()
        if answered - asked < 0.02:
            rows.append(((asked + answered) / 2 - begin, position, speed))
        await asyncio.sleep(0.01)
    return rows


def axis_profile(path):
    """A trapezoid: position and speed of an axis while it moves."""
    rows = []
    for _ in range(3):  # on a busy machine few moments are known
        if len(rows) > 40:
            break
        with zvrkit.sim.device("Ratchet") as place, pyzvr.Ratchet() as controller:
            controller.connect(*place.address, verbose=False)
            rows = sorted(rows + asyncio.run(travelled(controller)))
    times, positions, speeds = zip(*rows)
    figure, (above, below) = axes(300, 2, sharex=True)
    above.plot(times, positions)
    above.set(ylabel="position (pulses)", ylim=(0, None))
    below.plot(times, speeds, color=ORANGE)
    below.set(ylabel="pulses per second", xlabel="time (s)", xlim=(0, times[-1]), ylim=(0, None))
    save(figure, path)


def drone_path(path):
    """A rectangle, flown and seen from above."""
    norths, easts, corners = [], [], []

    def finish(drone, keep=True):
        while not drone.Drone_readTrajectoryStatus()[0]:
            if keep:
                state = drone.Drone_getPositionWithNED()
                norths.append(state[3])
                easts.append(state[4])
            time.sleep(0.005)

    with zvrkit.sim.device("Drone", "--pace", "20") as place, pyzvr.Drone() as drone:
        drone.connect(*place.address, verbose=False)
        drone.Drone_activate()
        drone.Drone_startTakeOff()
        finish(drone, keep=False)
        for north, east in ((3, 0), (0, 4), (-3, 0), (0, -4)):
            drone.Drone_moveNedRelXY(north, east, 2)
            finish(drone)
            state = drone.Drone_getPositionWithNED()
            corners.append((state[4], state[3]))
        drone.Drone_startLanding()
    figure, plot = axes(300)
    plot.plot(easts, norths, marker=".", markersize=4, linewidth=1.2)
    plot.plot(*zip(*corners), linestyle="none", marker="o", color=ORANGE)
    for number, (east, north) in enumerate(corners, 1):
        plot.annotate(str(number), (east, north), textcoords="offset points", xytext=(8, 8))
    plot.set(xlabel="east (m)", ylabel="north (m)", aspect="equal", xlim=(-1, 5), ylim=(-1, 4))
    save(figure, path)


def sent_by(request):
    """The frame that a request puts on the link."""

    class Recorder:
        def sendPacket(self, int_list):
            sent.append(bytes(int_list))

    sent = []
    with pyzvr.TarnDio() as box:
        box.client_cmd = Recorder()
        with contextlib.suppress(pyzvr.ReceivePacketTimeoutError):
            request(box)
    return sent[0]


def frame(path):
    """A request with data, its bytes in two rows of words about them."""
    port, mask, values = 0, 0x00FF, 0x0105
    data = sent_by(lambda box: box._setDIOState(port, mask, values, timeout=0.01))
    parts = ((1, "start", "always 2", MUTED), (2, "length", "of command and data", BLUE),
             (1, "command", f"SET_DIO_STATE, {pyzvr.SET_DIO_STATE}", ORANGE),
             (len(data) - 6, "data", "port, mask, levels", GREEN),
             (2, "trailer", "always 13 10", MUTED))  # fmt: skip
    drawing = Drawing(178, "A frame, byte by byte")
    cell, place = (WIDTH - 2) / len(data), 0
    for row, (count, name, meaning, colour) in enumerate(parts):
        left = 1 + place * cell
        for number in range(place, place + count):
            drawing.box(1 + number * cell + 1, 24, cell - 2, 34, FILL, colour)
            drawing.text(1 + (number + 0.5) * cell, 46, f"{data[number]:02X}", 14, anchor="middle", fixed=True)
            drawing.text(1 + (number + 0.5) * cell, 14, number, 11, MUTED, anchor="middle")
        drawing.line(left + 3, 64, left + count * cell - 3, 64, colour)
        drawing.box(6, 80 + 20 * row, 10, 10, FILL, colour)
        drawing.text(24, 89 + 20 * row, name, bold=True)
        bytes_ = f"byte {place}" if count == 1 else f"bytes {place} to {place + count - 1}"
        drawing.text(104, 89 + 20 * row, f"{bytes_}: {meaning}")
        place += count
    drawing.save(path)


FIGURES = (stream, sweep, axis_profile, drone_path, frame)


def main():
    folder, *names = sys.argv[1:]
    for figure in FIGURES:
        if not names or figure.__name__ in names:
            figure(Path(folder) / f"{figure.__name__}.svg")


if __name__ == "__main__":
    main()
