"""Settings of axes in files."""

import asyncio
import configparser
import contextlib
import copy
import os
import resource
import shutil
import tempfile
from pathlib import Path
from unittest import mock

import pytest
from motion_products import AXIS_0, AXIS_1, AXIS_3, WR2, WR3, Frame, connectors_of, handle, outputs, registers
from motion_products import rewritten, sent_by, take_frames, writes
from simulators import connected

import pyzvr

pytestmark = pytest.mark.filterwarnings("ignore:Warning -9")


@pytest.fixture
def ini(tmp_path):
    path = tmp_path / "axes.ini"
    path.touch()
    return path


def use(product, call, path):
    assert call(product, "Motion_openCfgFile", str(path)) == 0


def test_settings_go_through_a_file(ratchet, call, ini):
    use(ratchet, call, ini)
    ratchet.axis_2.motion_dict.update({"Home Enable": 1, "Offset Position": -7, "Approach Velocity Percent": 35})
    ratchet.axis_4.motion_dict["Stepper Output"] = 1
    assert call(ratchet, "Motion_saveCfgFile") == 0
    assert ratchet.client_cmd.sent == []
    lines = ini.read_text().splitlines()
    assert [line for line in lines if line.startswith("[")] == [f"[Axis_{number}]" for number in (1, 2, 3, 4)]
    assert len(lines) == 4 * 24
    assert lines[1] == "stepper output = Step/Dir(One Pulse)"
    assert lines[23] == ""
    assert {"approach velocity percent = 20.0", "initial search direction = Reverse", "home polarity = Active Low",
            "forward enable = TRUE"} < set(lines[:24])
    saved = copy.deepcopy([axis.motion_dict for axis in axes_of(ratchet)])
    ratchet.Motion_saveCfgFile()
    assert ini.read_text().splitlines() == lines
    with handle("Ratchet") as other:
        use(other, call, ini)
        assert call(other, "Motion_loadCfgFile") == 0
        assert [axis.motion_dict for axis in axes_of(other)] == saved
        connectors, frames = take_frames(other)
        assert set(connectors) == {0}
        assert len(frames) == 4 * 20
        assert frames[:2] == outputs(AXIS_0)
        assert frames[61] == Frame(pyzvr.MOTION_E3_WR3, AXIS_3, 0)
        assert Frame(pyzvr.MOTION_E2_WR2, AXIS_1, WR2.SP1E) in frames


def axes_of(product):
    return [product.axis_1, product.axis_2, product.axis_3, product.axis_4]


def test_loading_on_the_chassis_reaches_the_first_connector(chassis, call, ini):
    use(chassis, call, ini)
    chassis.Motion_saveCfgFile()
    assert call(chassis, "Motion_loadCfgFile") == 0
    assert connectors_of(chassis) == [0] * 80


def test_a_file_edited_by_hand(ratchet, call, ini):
    use(ratchet, call, ini)
    ratchet.Motion_saveCfgFile()
    text = ini.read_text()

    def load(old, new):
        ini.write_text(text.replace(old, new, 1))
        use(ratchet, call, ini)
        return call(ratchet, "Motion_loadCfgFile")

    assert load("home enable = FALSE", 'HOME Enable: "TRUE"') == 0
    assert ratchet.axis_1.motion_dict["Home Enable"] == 1
    assert load("percent = 20.0", "percent = 35") == 0
    assert repr(ratchet.axis_1.motion_dict["Approach Velocity Percent"]) == "35.0"
    ratchet.client_cmd.sent.clear()
    for old, new, error in [
            ("offset position = 2000", "offset position = 2000.5", ValueError),
            ("home enable = FALSE", "home enable = false", KeyError),
            ("home enable = FALSE\n", "", configparser.NoOptionError),
            ("[Axis_3]", "[Axis_5]", configparser.NoSectionError),
            ("[Axis_1]", "", configparser.MissingSectionHeaderError),
            ("[Axis_1]", "[Axis_1]\n???", configparser.ParsingError)]:
        ratchet.axis_1.motion_dict.update({"Stepper Output": 1, "Forward Enable": 0})
        with pytest.raises(error):
            load(old, new)
        # What stands before the fault is stored.
        reached = error not in (configparser.MissingSectionHeaderError, configparser.ParsingError)
        assert ratchet.axis_1.motion_dict["Stepper Output"] == (0 if reached else 1)
        assert ratchet.client_cmd.sent == []


def test_files_that_are_not_there(ratchet, call, ini, tmp_path):
    for operation in ("Motion_saveCfgFile", "Motion_loadCfgFile"):
        with pytest.raises(AttributeError):
            call(ratchet, operation)
    (tmp_path / "axes.txt").touch()
    for name, error in [("none.ini", pyzvr.IniFileNotFoundError), ("none.txt", pyzvr.IniFileNotFoundError),
                          ("axes.txt", pyzvr.IniFileExtensionNameError)]:
        with pytest.raises(error):
            call(ratchet, "Motion_openCfgFile", str(tmp_path / name))
    use(ratchet, call, ini)
    ini.unlink()
    with pytest.raises(configparser.NoSectionError):
        call(ratchet, "Motion_loadCfgFile")
    assert call(ratchet, "Motion_saveCfgFile") == 0
    assert ini.exists()
    assert ratchet.client_cmd.sent == []


@contextlib.contextmanager
def small_files(size):
    limits = resource.getrlimit(resource.RLIMIT_FSIZE)
    resource.setrlimit(resource.RLIMIT_FSIZE, (size, limits[1]))
    try:
        yield
    finally:
        resource.setrlimit(resource.RLIMIT_FSIZE, limits)


def test_a_save_writes_into_the_file_itself(ratchet, call, ini):
    use(ratchet, call, ini)
    second = ini.with_name("second.ini")
    os.link(ini, second)
    ini.chmod(0o640)
    before = ini.stat()
    assert call(ratchet, "Motion_saveCfgFile") == 0
    assert second.read_text() == ini.read_text() != ""
    text = ini.read_text()
    # The one has no text, the other is no value to the parser.
    for key, value, error in (("Home Enable", 2, KeyError), ("Offset Position", "%", ValueError)):
        with mock.patch.dict(ratchet.axis_3.motion_dict, {key: value}), pytest.raises(error):
            call(ratchet, "Motion_saveCfgFile")
        assert ini.read_text() == text
    with small_files(1000), pytest.raises(OSError):
        call(ratchet, "Motion_saveCfgFile")
    assert call(ratchet, "Motion_saveCfgFile") == 0
    assert second.read_text() == ini.read_text() == text
    after = ini.stat()
    kept = after.st_ino, after.st_nlink, after.st_mode, after.st_uid
    assert kept == (before.st_ino, 2, before.st_mode, before.st_uid)
    assert set(ini.parent.iterdir()) == {ini, second}


def test_the_hosts_functions_are_used_as_they_are_now(ratchet, call, ini):
    with mock.patch("os.path.isfile", return_value=True):
        assert call(ratchet, "Motion_openCfgFile", "missing.ini") == 0
    with mock.patch("builtins.open", mock.mock_open()) as opened:
        call(ratchet, "Motion_saveCfgFile")
    assert opened.mock_calls[0] == mock.call("missing.ini", "w")
    assert opened.mock_calls[-1] == mock.call().close()
    assert "".join(each.args[0] for each in opened().write.mock_calls).startswith("[Axis_1]\nstepper output")
    with pytest.raises(pyzvr.IniFileNotFoundError):
        call(ratchet, "Motion_openCfgFile", "missing.ini")
    assert call(ratchet, "Motion_openCfgFile", ini) == 0
    assert call(ratchet, "Motion_saveCfgFile") == 0
    assert ini.read_text()
    for wrong in (5, None, b"axes.ini"):
        with pytest.raises(TypeError, match="filename: .*(int|NoneType|bytes)"):
            call(ratchet, "Motion_openCfgFile", wrong)


def test_saving_where_the_folder_takes_no_new_file(ratchet):
    folder = Path(tempfile.mkdtemp())
    ini = folder / "axes.ini"
    link = folder / "link.ini"
    ini.touch(0o666)
    link.symlink_to(ini)
    ini.chmod(0o666)
    ratchet.Motion_openCfgFile(str(link))
    ratchet.Motion_saveCfgFile()
    assert link.is_symlink()
    assert (before := ini.read_text())
    ratchet.axis_1.motion_dict["Home Enable"] = 1
    folder.chmod(0o555)
    user = os.geteuid()
    try:
        if user == 0:
            os.seteuid(65534)
        assert ratchet.Motion_saveCfgFile() == 0
    finally:
        os.seteuid(user)
        folder.chmod(0o755)
    assert ini.read_text() == before.replace("home enable = FALSE", "home enable = TRUE", 1)
    shutil.rmtree(folder)


def test_the_drive_keeps_one_axis(pawl, call, ini):
    registers(pawl)
    use(pawl, call, ini)
    pawl.axis.motion_dict.update({"Reverse Enable": 0, "Inverse Motion Direction": 1})
    assert call(pawl, "Motion_saveCfgFile") == 0
    assert (ini.read_text().count("["), len(ini.read_text().splitlines())) == (1, 24)
    pawl.axis.motion_dict.update({"Reverse Enable": 1, "Inverse Motion Direction": 0})
    assert call(pawl, "Motion_loadCfgFile") == 0
    assert (pawl.axis.motion_dict["Reverse Enable"], pawl.axis.motion_dict["Inverse Motion Direction"]) == (0, 1)
    switches = rewritten(PAWL_00_GCONF=16, PAWL_34_SWMODE=16) + rewritten(PAWL_34_SWMODE=1)
    assert sent_by(pawl) == writes(PAWL_3A_ENC_CONST=0) + switches


def test_a_simulated_axis_takes_its_settings_and_moves(ini):
    async def move(ratchet):
        assert await ratchet.Motion_open_async(0) == await ratchet.Motion_openCfgFile_async(str(ini)) == 0
        assert await ratchet.Motion_saveCfgFile_async() == await ratchet.Motion_loadCfgFile_async() == 0
        assert await ratchet.Motion_cfgAxisMove_async(0, 2, 1, -300, 20000, 400000, 200000) == 0
        words = await ratchet._Motion_getWR2_async(0, 2), await ratchet._Motion_getWR3_async(0, 2)
        assert await ratchet.Motion_startSingleAxisMove_async(0, 2) == 0
        while not await ratchet.Motion_getMoveStatus_async(0, 2):
            pass
        return words, [await ratchet.Motion_getLogicalPosi_async(0, axis) for axis in range(4)]

    words = WR2.SP2L | WR2.HLML | WR2.HLME | WR2.HLMM, WR3.DSNDE | WR3.DPMD0 | WR3.DPMD1
    with connected("Ratchet") as ratchet:
        assert asyncio.run(move(ratchet)) == (words, [0, 0, -300, 0])
        with pytest.raises(pyzvr.MotionPortNotAvaliable):
            ratchet.Motion_open(1)
