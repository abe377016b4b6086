"""python_calls_test.py <bindings/python> <echo library>: every function of gputune.py, really called."""

import ctypes
import os
import re
import shutil
import sys
import tempfile
import unittest
from unittest import mock

DIRECTORY, LIBRARY = sys.argv[1:]
sys.path.insert(0, DIRECTORY)
import gputune  # noqa: E402

echo = ctypes.CDLL(LIBRARY)
echo.LastCall.restype = ctypes.c_char_p


def last_call():
    return echo.LastCall().decode()


class Calls(unittest.TestCase):
    def setUp(self):
        echo.Answer(1)
        echo.SetVendorInfo(gputune.Vendor.AMD, gputune.ApiType.OVERDRIVEN)
        with mock.patch.object(gputune, "_check_process"):
            self.board = gputune.Gputune(LIBRARY)

    def test_start_passes_the_log_mode(self):
        self.board.start(gputune.LogMode.FILE)
        self.assertEqual(last_call(), "InitVGAHelper 2")
        self.assertTrue(self.board.is_ready)

    def test_failed_start_names_the_reason(self):
        echo.Answer(0)
        with self.assertRaisesRegex(gputune.DriverError, "an AMD GPU, but its vendor's library"):
            self.board.start()
        echo.SetVendorInfo(gputune.Vendor.UNKNOWN, gputune.ApiType.NONE)
        with self.assertRaisesRegex(gputune.NoBoardError, "no supported GPU was found"):
            self.board.start()
        self.assertFalse(self.board.is_ready)
        echo.Answer(1)
        echo.SetVendorInfo(gputune.Vendor.INTEL, gputune.ApiType.IGCL)
        with mock.patch.object(gputune.Gputune, "is_ready", False):
            with self.assertRaisesRegex(gputune.DriverError, "an INTEL GPU, but no adapter"):
                self.board.start()

    def test_all_errors_are_of_one_kind(self):
        kinds = [getattr(gputune, name) for name in gputune.__all__ if name.endswith("Error")]
        self.assertEqual(len(kinds), 7)
        for kind in kinds:
            self.assertTrue(issubclass(kind, gputune.GputuneError))
        # A program may have caught this before there were kinds.
        self.assertTrue(issubclass(gputune.LibraryError, OSError))

    def test_both_halves_of_the_vendor_information_arrive(self):
        echo.SetVendorInfo(gputune.Vendor.NVIDIA, gputune.ApiType.NVAPI)
        self.assertIs(self.board.vendor, gputune.Vendor.NVIDIA)
        self.assertIs(self.board.api, gputune.ApiType.NVAPI)

    def test_adapter(self):
        self.assertEqual(self.board.active_adapter, 3)
        self.board.select_adapter(5)
        self.assertEqual(last_call(), "SetActiveAdapterIndex 5")

    def test_identity(self):
        self.assertEqual(self.board.identity(), gputune.Identity("Echo", 0x70011002, 7))

    def test_readings_have_name_value_and_unit(self):
        readings = self.board.read_sensors()
        self.assertEqual(last_call(), "FetchHwmValues")
        self.assertEqual(len(readings), 20)
        self.assertEqual(readings[2], gputune.Reading(gputune.HwmKey.GPU_TEMPERATURE, "Key 2", 2.5, "°C"))
        self.assertEqual(readings[19], gputune.Reading(gputune.HwmKey.TDP_LIMIT, "Key 20", 20.5, "%"))
        self.assertIsNone(self.board.reading(gputune.HwmKey.TEMPERATURE_LIMIT))

    def test_load_of_an_intel_board_has_no_unit(self):
        self.assertEqual(self.board.reading(gputune.HwmKey.GPU_LOAD).unit, "%")
        echo.SetVendorInfo(gputune.Vendor.INTEL, gputune.ApiType.IGCL)
        self.assertEqual(self.board.reading(gputune.HwmKey.GPU_LOAD).unit, "")

    def test_frame_rate(self):
        self.assertEqual(self.board.frame_rate, 144)

    def test_fan_speed(self):
        self.board.set_fan_speed(60)
        self.assertEqual(last_call(), "SetFanSpeed 60")
        self.board.set_fan_automatic()
        self.assertEqual(last_call(), "SetFanSpeed -1")
        for percent in (-1, 101):
            with self.assertRaises(ValueError):
                self.board.set_fan_speed(percent)
        self.assertEqual(last_call(), "SetFanSpeed -1")

    def test_numbers_that_do_not_fit_are_not_sent(self):
        self.board.set_fan_speed(40)
        for call in (lambda: self.board.set_clocks(4294968696, 0), lambda: self.board.select_adapter(2**32),
                     lambda: self.board.set_power_limit(4294967306, 80), lambda: self.board.profile(-1),
                     lambda: self.board.set_fan_curve([(40, 2**32 + 60)])):
            with self.assertRaises(ValueError):
                call()
        for call in (lambda: self.board.set_fan_speed(60.5), lambda: self.board.set_power_limit("10", 80),
                     lambda: self.board.set_fan_curve([(40, 60.5)])):
            with self.assertRaises(TypeError):
                call()
        self.assertEqual(last_call(), "SetFanSpeed 40")

    def test_fan_curve(self):
        self.board.set_fan_curve([(40, 20), (60, 45)])
        self.assertEqual(last_call(), "SetFanSpeedTable 2 40:20 60:45")

    def test_fan_curve_the_library_would_read_beyond_is_refused(self):
        with self.assertRaises(ValueError):
            self.board.set_fan_curve([])
        echo.SetVendorInfo(gputune.Vendor.AMD, gputune.ApiType.OVERDRIVE8)
        with self.assertRaises(ValueError):
            self.board.set_fan_curve([(40, 20)] * 4)
        self.board.set_fan_curve([(40, 20)] * 5)
        self.assertEqual(last_call(), "SetFanSpeedTable 5" + " 40:20" * 5)

    def test_fan_has_the_fields_the_board_tells(self):
        none = [None] * 8
        none[6] = 30
        self.assertEqual(self.board.fan().points, (gputune.FanPoint(*range(20, 28)), gputune.FanPoint(*none)))

    def test_power_limit(self):
        self.board.set_power_limit(10, temperature=80)
        self.assertEqual(last_call(), "SetPowerLimit 80 10")
        self.board.restore_power_limit()
        self.assertEqual(last_call(), "SetPowerLimitDefault")
        self.assertEqual(self.board.power_limit(), gputune.PowerLimit(40, 41, 42, None))
        echo.SetVendorInfo(gputune.Vendor.AMD, gputune.ApiType.OVERDRIVE8)
        self.assertEqual(self.board.power_limit(), gputune.PowerLimit(40, 41, 42, -1))

    def test_clocks(self):
        self.board.set_clocks(1400, 2000, gpu_voltage=1100, memory_voltage=950)
        self.assertEqual(last_call(), "SetPerformanceUser 1400 1100 2000 950")
        self.assertEqual(self.board.gpu_clock(), gputune.ClockRange(*range(50, 57), None))
        self.assertEqual(self.board.memory_clock(), gputune.ClockRange(*range(60, 68)))

    def test_profiles(self):
        for apply, name in ((self.board.apply_overclock, "OC"), (self.board.apply_silent, "Silent"),
                            (self.board.restore_defaults, "Default")):
            apply()
            self.assertEqual(last_call(), "SetPerformance" + name)
        self.assertEqual(self.board.profile(0xFFFF1002), gputune.Profile(*(70.25 + i for i in range(8)), 78, 79))
        self.assertEqual(last_call(), "GetExternalPerformanceParameter FFFF1002")

    def test_nothing_available_is_none(self):
        echo.Answer(0)
        for value in (self.board.active_adapter, self.board.identity(), self.board.frame_rate, self.board.fan(),
                      self.board.power_limit(), self.board.gpu_clock(), self.board.memory_clock(),
                      self.board.profile(1), self.board.reading(gputune.HwmKey.VDDC)):
            self.assertIsNone(value)
        self.assertEqual(self.board.read_sensors(), [])

    def test_refused_setting_raises(self):
        echo.Answer(0)
        for setter in (lambda: self.board.select_adapter(1), lambda: self.board.set_fan_speed(50),
                       self.board.set_fan_automatic, lambda: self.board.set_fan_curve([(40, 20)]),
                       lambda: self.board.set_power_limit(0, 80), self.board.restore_power_limit,
                       lambda: self.board.set_clocks(1, 1), self.board.apply_overclock, self.board.apply_silent,
                       self.board.restore_defaults):
            with self.assertRaisesRegex(gputune.NotStartedError, "start\\(\\) has to succeed first"):
                setter()
        with mock.patch.object(gputune.Gputune, "is_ready", True):
            with self.assertRaisesRegex(gputune.RefusedError, "SetFanSpeed was refused"):
                self.board.set_fan_speed(50)


class Loading(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory()
        self.addCleanup(self.directory.cleanup)

    def file(self, *names):
        return os.path.join(self.directory.name, *names)

    def put(self, *names):
        os.makedirs(os.path.dirname(self.file(*names)), exist_ok=True)
        shutil.copy(LIBRARY, self.file(*names))

    def loaded(self, bits):
        """The file that Python of this width takes when gputune.py is in the directory."""
        with mock.patch.object(gputune, "__file__", self.file("gputune.py")), \
                mock.patch.object(gputune.struct, "calcsize", return_value=bits // 8), \
                mock.patch.object(gputune, "_check_process"), \
                mock.patch.object(ctypes, "CDLL", wraps=ctypes.CDLL) as load:
            gputune.Gputune()
        return load.call_args.args[0]

    def test_another_process_than_windows_is_told(self):
        with self.assertRaisesRegex(gputune.ProcessError, f"this is Python on {sys.platform}; please use"):
            gputune.Gputune(LIBRARY)

    def test_windows_process_is_accepted(self):
        with mock.patch.object(sys, "platform", "win32"):
            gputune._check_process()

    def test_each_width_takes_its_own_of_two(self):
        self.put("gputune.dll")
        self.put("x64", "gputune.dll")
        self.assertEqual(self.loaded(64), self.file("x64", "gputune.dll"))
        self.assertEqual(self.loaded(32), self.file("gputune.dll"))

    def test_64_bit_process_takes_one_beside_the_binding(self):
        self.put("gputune.dll")
        self.assertEqual(self.loaded(64), self.file("gputune.dll"))

    def test_missing_library_is_told_with_the_files_looked_for(self):
        with self.assertRaisesRegex(gputune.LibraryError, "64-bit Python.*"
                                    + re.escape(f"{self.file('x64', 'gputune.dll')}, {self.file('gputune.dll')}")):
            self.loaded(64)
        with self.assertRaisesRegex(OSError, "32-bit Python.*" + re.escape(f"(looked for: {self.file('gputune.dll')})")):
            self.loaded(32)

    def test_library_of_another_width_is_told(self):
        with open(self.file("gputune.dll"), "wb") as file:
            file.write(b"MZ")
        with self.assertRaisesRegex(OSError, re.escape(self.file("gputune.dll")) + " cannot be loaded by this 64-bit"):
            self.loaded(64)

    def test_named_file_is_taken_and_no_other(self):
        self.put("gputune.dll")
        with mock.patch.object(gputune, "_check_process"), \
                self.assertRaisesRegex(OSError, "^" + re.escape(self.file("other.dll"))):
            gputune.Gputune(self.file("other.dll"))

    def test_missing_function_is_named(self):
        other = ctypes.CDLL(None)
        with mock.patch.object(gputune, "_check_process"), mock.patch.object(ctypes, "CDLL", return_value=other):
            with self.assertRaisesRegex(gputune.LibraryError, "has no function InitVGAHelper"):
                gputune.Gputune(LIBRARY)


unittest.main(argv=sys.argv[:1])
