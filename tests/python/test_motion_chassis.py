"""Motion in the slots of the chassis."""

import asyncio
import re
import threading

import pytest
from forms import awaited
from motion_products import AXIS_0, AXIS_1, AXIS_2, AXIS_3, connectors_of
from peer import Peer

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")


def test_slots_of_the_chassis_count_from_1(chassis, call):
    for slot, connector in [(1, 0), (2, 1), (4, 3)]:
        call(chassis, "Motion_cfgHome", slot, 0, 1, 1)
        call(chassis, "Motion_getLogicalPosi", slot, 0)
        call(chassis, "Motion_getEncoderPosi", slot, 0)
        assert set(connectors_of(chassis)) == {connector}
    for slot in (0, 3, 5):
        with pytest.raises(pyzvr.MotionPortNotAvaliable):
            call(chassis, "Motion_getMoveStatus", slot, 0)
    assert chassis.client_cmd.sent == []
    assert pyzvr.HANDLE_PROPERTIES["Lattice"]["Motion"] == 1


def test_some_steps_map_a_slot_twice(chassis, call):
    twice = [2] if call is awaited else [3]
    call(chassis, "Motion_cfgBreakPoint", 4, 0, 1, 0, 0, 0, 0, 0)
    assert connectors_of(chassis) == [3] * 6 + [2] + [3] * 2
    call(chassis, "Motion_enableServoOn", 4, 0)
    assert connectors_of(chassis) == [3, 2] + twice
    call(chassis, "Motion_setLogicalPosi", 3, 0, 1)
    assert connectors_of(chassis) == twice
    with pytest.raises(ValueError):
        call(chassis, "Motion_enableServoOn", 1, 0)
    assert connectors_of(chassis) == [0]


def test_four_axes_from_one_loop_over_a_socket_that_answers_out_of_order():
    """Replies to all requests that wait are sent in turned order, some in pieces: each must reach its own axis."""
    waiting, lock, header = [], threading.Lock(), bytes([2, 0, 8, pyzvr.MOTION])

    def answer(connection, data):
        with lock:
            for frame in re.findall(header + rb"(.{7})\r\n", data, re.DOTALL):
                axis = frame[2]
                value = 1000 * axis + frame[1] if frame[1] in (pyzvr.MOTION_30_LP, pyzvr.MOTION_31_RP) else 0
                waiting.append(header + frame[:3] + value.to_bytes(4, "big") + b"\r\n")
            if len(waiting) >= 4:
                stream = b"".join(reversed(waiting))
                waiting.clear()
                connection.sendall(stream[:21])
                connection.sendall(stream[21:])

    async def axis(ratchet, number):
        configured = await ratchet.Motion_cfgAxisMove_async(0, number, 1, 100 * number, 1000, 5000, 5000)
        logical = await ratchet.Motion_getLogicalPosi_async(0, number)
        return configured, [logical, await ratchet.Motion_getEncoderPosi_async(0, number)]

    async def all_axes(ratchet):
        return await asyncio.gather(*(axis(ratchet, number) for number in range(4)))

    peer = Peer(answer)
    with pyzvr.Ratchet() as ratchet:
        ratchet.connect("127.0.0.1", peer.port, verbose=False)
        results = asyncio.run(all_axes(ratchet))
    peer.close()
    read = pyzvr.MOTION_30_LP, pyzvr.MOTION_31_RP
    assert results == [(0, [1000 * mask + code for code in read]) for mask in (AXIS_0, AXIS_1, AXIS_2, AXIS_3)]
