"""What the motion controller refuses."""

import pytest
from motion_products import WRONG

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")

# operation, arguments that are right, and per place of an argument what is wrong there
REFUSALS = [
    ("Motion_open", (0,), [(5, pyzvr.MotionPortNotAvaliable)]), ("Motion_close", (0,), [("0", WRONG)]),
    ("Motion_cfgHome", (0, 0, 1, 1), [(-1, pyzvr.MotionPortNotAvaliable), (0.0, WRONG), (2, pyzvr.MotionEnableError),
                                      (2, pyzvr.MotionPolarityError)]),
    ("Motion_cfgAxis", (0, 0, 0, 0, 0, 0), [
        None, None, (2, pyzvr.MotionStepperOutputError), (2, pyzvr.MotionDirectionError),
        (-1, pyzvr.MotionDirectionError),
        ("1", WRONG)]),
    ("Motion_cfgLimit", (0, 0, 1, 1, 1), [None, None, (2, pyzvr.MotionEnableError), (None, WRONG),
                                          (2, pyzvr.MotionPolarityError)]),
    ("Motion_cfgJerkAndAccelMode", (0, 0, 1, 0), [
        None, ("0", WRONG), (1.5, WRONG), (3, pyzvr.MotionAccelerationModeError)]),
    ("Motion_rstEncoderPosi", (0, 0, 0), [None, None, (0.5, WRONG)]),
    ("Motion_enableServoOn", (0, 0), [(7, pyzvr.MotionPortNotAvaliable), (None, WRONG)]),
    ("_Motion_enableServoOn", (0, 0, 1), [None, None, (2, pyzvr.MotionEnableError)]),
    ("Motion_cfgCapture", (0, 0, 0, 0), [
        None, None, (2, pyzvr.MotionCaptureTypeError), (2, pyzvr.MotionCaptureModeError)]),
    ("Motion_cfgBreakPoint", (0, 0, 0, 0, 0, 0, 0, 0), [
        None, None, (2, pyzvr.MotionBreakPointModeError), (2, pyzvr.MotionPolarityError)] + [(0.0, WRONG)] * 4),
    ("Motion_cfgAxisMove", (0, 0, 0, 0, 0, 0, 0), [
        None, None, (3, pyzvr.MotionOperationModeError)] + [(0.0, WRONG)] * 4),
    ("Motion_stop", (0, 0, 0), [None, None, (2, pyzvr.MotionStopModeError)]),
    ("Motion_cfg2AxisLinearInterpo", (0, 0, 1, 1, 1), [None, ("", WRONG), (0.0, WRONG), ("", WRONG), (0.0, WRONG)]),
    ("Motion_cfgCircularInterpo", (0, 0, 1, 0, 0, 0, 0, 0, 0), [
        None, (0.0, WRONG), (0.0, WRONG)] + [("", WRONG)] * 4 + [(2, pyzvr.MotionDirectionError), (0.0, WRONG)]),
    ("Motion_cfgHelicalInterpo", (0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0), [None] + [("", WRONG)] * 4 + [
        (2, pyzvr.MotionEnableError), ("", WRONG), (2, pyzvr.MotionEnableError), ("", WRONG), ("", WRONG), (0.0, WRONG),
        (2, pyzvr.MotionDirectionError), ("", WRONG)]),
    ("Motion_cfgFindRef", (0, 0, 0, 0, 0, 0, 0, 0, 0), [
        None, None, (3, pyzvr.MotionSearchTypeError), (2, pyzvr.MotionSearchTypeError), (0.0, WRONG), (0.0, WRONG),
        ("", WRONG), (2, pyzvr.MotionEnableError), (0.0, WRONG)]),
    ("Motion_getLogicalPosi", (0, 0), [None, ("", WRONG)]),
]


@pytest.mark.parametrize("operation, right, wrong", REFUSALS, ids=lambda value: value if isinstance(value, str) else "")
def test_bad_arguments_fail_by_name_before_anything_is_sent(ratchet, call, operation, right, wrong):
    records = lambda: repr([*vars(ratchet).values()])  # noqa: E731
    before = records()
    for place, (value, error) in ((place, each) for place, each in enumerate(wrong) if each):
        with pytest.raises(error) as raised:
            call(ratchet, operation, *right[:place], value, *right[place + 1:])
        assert raised.type is error
        assert ratchet.client_cmd.sent == []
        assert records() == before
