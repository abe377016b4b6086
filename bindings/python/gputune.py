"""Read and tune the installed graphics board, whoever made its GPU, through gputune.dll.

    import gputune

    board = gputune.Gputune()
    board.start()
    print(board.identity())
    for reading in board.read_sensors():
        print(f"{reading.name}: {reading.value:g} {reading.unit}")
    board.set_fan_speed(60)

This needs Python 3.8 or later for Windows, of either width. 64-bit Python loads x64\\gputune.dll from beside this file, or
gputune.dll, 32-bit Python gputune.dll. The library takes one call at a time: a program with several threads serialises
its calls. gputune.h says of each function what the vendors make of it. What goes wrong is a GputuneError of some kind.
"""

from __future__ import annotations

import ctypes
import enum
import os
import struct
import sys
from ctypes import c_bool, c_char, c_double, c_float, c_int, c_int32, c_uint8, c_uint32, c_uint64
from dataclasses import dataclass
from typing import Any, Callable, Dict, Iterable, List, Optional, Tuple

__all__ = [
    "ApiType", "ClockRange", "DriverError", "FanPoint", "FanSettings", "Gputune", "GputuneError", "HwmKey", "Identity",
    "LibraryError", "LogMode", "NoBoardError", "NotStartedError", "PowerLimit", "ProcessError", "Profile", "Reading",
    "RefusedError", "Vendor",
]

__version__ = "0.2.0"


# ---- What goes wrong -------------------------------------------------------------------------------------------------


class GputuneError(Exception):
    """What all errors of this module are, but for arguments that are wrong in themselves (ValueError, TypeError)."""


class ProcessError(GputuneError):
    """This process cannot load a library for Windows."""


class LibraryError(GputuneError, OSError):
    """gputune.dll is missing, or is one for processes of the other width, or is another version."""


class NoBoardError(GputuneError):
    """There is no GPU of a vendor that is known."""


class DriverError(GputuneError):
    """There is such a GPU, and its vendor's library cannot be used, or shows no adapter that can."""


class NotStartedError(GputuneError):
    """A setting needs a board, and start() has not succeeded."""


class RefusedError(GputuneError):
    """The board or its driver refused a setting."""


# ---- Enumerations ----------------------------------------------------------------------------------------------------


class LogMode(enum.IntEnum):
    """Destination of the diagnostic log. The first start in the process fixes it."""

    NONE = 0
    STDOUT = 1
    FILE = 2  #: "debug.log" in the current directory
    BOTH = 3


class Vendor(enum.IntEnum):
    """Who made the GPU."""

    UNKNOWN = 0
    AMD = 1
    INTEL = 2
    NVIDIA = 3


class ApiType(enum.IntEnum):
    """The vendor interface that is driven."""

    NONE = 0
    OVERDRIVE8 = 2
    OVERDRIVEN = 3
    IGCL = 4
    NVAPI = 5


class HwmKey(enum.IntEnum):
    """The sensors."""

    GPU_CORE_CLOCK = 0
    GPU_MEMORY_CLOCK = 1
    GPU_TEMPERATURE = 2
    GPU_HOTSPOT_TEMPERATURE = 3
    GPU_MEMORY_TEMPERATURE = 4
    FAN_SPEED_PERCENT = 5
    FAN_SPEED_RPM = 6
    GPU_LOAD = 7  #: on Intel boards a raw activity counter, no percentage
    MEMORY_CONTROLLER_LOAD = 8
    GPU_POWER = 9
    VDDC_POWER = 10
    VDDCI_POWER = 11
    VRM_EFFICIENCY = 12
    MEMORY_USAGE = 13
    MEMORY_USAGE_DEDICATED = 14
    MEMORY_USAGE_DYNAMIC = 15
    VDDC = 16
    CPU_USAGE = 17
    CPU_FREQUENCY = 18
    TEMPERATURE_LIMIT = 19
    TDP_LIMIT = 20


# By HwmKey.
_UNITS = ("MHz", "MHz", "°C", "°C", "°C", "%", "rpm", "%", "%", "W", "W", "W", "%", "MB", "MB", "MB", "mV", "%", "MHz",
          "°C", "%")


# ---- What the functions return ---------------------------------------------------------------------------------------


@dataclass(frozen=True)
class Identity:
    """Which board it is."""

    name: str
    subsystem_id: Optional[int]  #: device identifier in the high 16 bits, vendor identifier in the low 16
    bus_number: int


@dataclass(frozen=True)
class Reading:
    """What a sensor said last."""

    key: HwmKey
    name: str
    value: float
    unit: str


@dataclass(frozen=True)
class FanPoint:
    """One point of the fan's range and state: speeds in percent, temperatures in °C; None where there is none."""

    default_speed: Optional[int]
    default_temperature: Optional[int]
    max_speed: Optional[int]
    min_speed: Optional[int]
    max_temperature: Optional[int]
    min_temperature: Optional[int]
    current_speed: Optional[int]
    current_temperature: Optional[int]


@dataclass(frozen=True)
class FanSettings:
    """The points of the fan: one for a fixed speed, five for a curve."""

    points: Tuple[FanPoint, ...]


@dataclass(frozen=True)
class PowerLimit:
    """Power limit in percent of the default power, relative to it (0 = default)."""

    default: int
    max: int
    min: int
    current: Optional[int]  #: None where it cannot be read; HwmKey.TDP_LIMIT may have it


@dataclass(frozen=True)
class ClockRange:
    """Clocks in MHz, voltages in mV; None where not available."""

    default_clock: Optional[int]
    default_voltage: Optional[int]
    max_clock: Optional[int]
    min_clock: Optional[int]
    max_voltage: Optional[int]
    min_voltage: Optional[int]
    current_clock: Optional[int]
    current_voltage: Optional[int]


@dataclass(frozen=True)
class Profile:
    """The predefined overclock and silent profile of a board.

    Clocks are factors of the default clock; the given ones absolute clocks in MHz, which count instead where not 0.
    Power is in percent as for set_power_limit.
    """

    gpu_overclock: float
    gpu_overclock_given: float
    memory_overclock: float
    memory_overclock_given: float
    power_overclock: float
    gpu_silent: float
    memory_silent: float
    power_silent: float
    watt: int
    newest_vbios: int


# ---- The library's records and functions, as in gputune.h ------------------------------------------------------------


class _HwmValue(ctypes.Structure):
    _fields_ = [("Value", c_double), ("Name", c_char * 256), ("Valid", c_bool), ("Reserved", c_uint8 * 7)]


class _VgaInfo(ctypes.Structure):
    _fields_ = [("SubsystemId", c_uint32), ("AdapterName", c_char * 256), ("BusNumber", c_int32)]


def _int_fields(*names: str) -> List[Tuple[str, Any]]:
    return [(name, c_int32) for name in names]


class _FanPoint(ctypes.Structure):
    _fields_ = _int_fields("DefaultSpeed", "DefaultTemperature", "MaxSpeed", "MinSpeed", "MaxTemperature",
                           "MinTemperature", "CurrentSpeed", "CurrentTemperature")


class _FanSetting(ctypes.Structure):
    _fields_ = [("Valid", c_bool), ("PointCount", c_int32), ("Points", _FanPoint * 50)]


class _PowerLimitSetting(ctypes.Structure):
    _fields_ = [("Valid", c_bool)] + _int_fields("Default", "Max", "Min", "Current")


class _ClockSetting(ctypes.Structure):
    _fields_ = [("Valid", c_bool)] + _int_fields("DefaultClock", "DefaultVoltage", "MaxClock", "MinClock", "MaxVoltage",
                                                 "MinVoltage", "CurrentClock", "CurrentVoltage")


class _FanTablePoint(ctypes.Structure):
    _fields_ = _int_fields("FanSpeed", "FanTemperature")


class _PredefinedPerformanceParameter(ctypes.Structure):
    _fields_ = [("Valid", c_bool)] + [
        (name, c_float) for name in ("GpuOC", "GpuOCGivenValue", "MemOC", "MemOCGivenValue", "PowerOC", "GpuSilent",
                                     "MemSilent", "PowerSilent")
    ] + _int_fields("Watt", "NewestVBIOS")


# Name: result, arguments.
_FUNCTIONS: Dict[str, Tuple[Any, ...]] = {
    "InitVGAHelper": (c_bool, c_int),
    "IsInitOk": (c_bool,),
    "GetVendorInfo": (c_uint64,),
    "SetActiveAdapterIndex": (c_bool, c_int),
    "GetActiveAdapterIndex": (c_int,),
    "GetVGAInfo": (_VgaInfo,),
    "FetchHwmValues": (None,),
    "GetHwmValue": (_HwmValue, c_int),
    "GetFrameRate": (c_int,),
    "SetFanSpeed": (c_bool, c_int),
    "SetFanSpeedTable": (c_bool, ctypes.POINTER(_FanTablePoint), c_int),
    "GetFanSetting": (_FanSetting,),
    "SetPowerLimit": (c_bool, c_int, c_int),
    "SetPowerLimitDefault": (c_bool,),
    "GetPowerLimitSetting": (_PowerLimitSetting,),
    "SetPerformanceUser": (c_bool, c_int, c_int, c_int, c_int),
    "SetPerformanceOC": (c_bool,),
    "SetPerformanceDefault": (c_bool,),
    "SetPerformanceSilent": (c_bool,),
    "GetGpuClockSetting": (_ClockSetting,),
    "GetMemClockSetting": (_ClockSetting,),
    "GetExternalPerformanceParameter": (_PredefinedPerformanceParameter, c_uint32),
}

# What the backend left as it was: no setting has this value.
_UNTOUCHED = -(2**31)
_OVERDRIVE8_POINTS = 5


def _is_record(type_: object) -> bool:
    return isinstance(type_, type) and issubclass(type_, ctypes.Structure)


def _bind(library: ctypes.CDLL) -> Dict[str, Any]:
    """The functions with their types.

    One that returns a record takes, in its binary form, the address of the storage as its first argument. It is called
    in this form, which leaves nothing to the interpreter's own idea of it.
    """
    functions = {}
    for name, (result, *arguments) in _FUNCTIONS.items():
        try:
            function = getattr(library, name)
        except AttributeError:
            raise LibraryError(f"{library._name} has no function {name}: it is another library or version") from None
        if _is_record(result):
            function.argtypes = [ctypes.POINTER(result), *arguments]
            function.restype = ctypes.c_void_p
        else:
            function.argtypes = arguments
            function.restype = result
        functions[name] = function
    return functions


def _whole(value: int, minimum: int = -(2**31), maximum: int = 2**31 - 1) -> int:
    """The value of a C integer argument: ctypes would send another one for what does not fit."""
    if not isinstance(value, int):
        raise TypeError(f"an integer is needed, not {value!r}")
    if not minimum <= value <= maximum:
        raise ValueError(f"{value} is not from {minimum} to {maximum}")
    return value


# What can be sent as an argument of a type.
_FIT: Dict[Any, Callable[[int], int]] = {c_int: _whole, c_uint32: lambda value: _whole(value, 0, 2**32 - 1)}


def _check_process() -> None:
    if sys.platform != "win32":
        raise ProcessError(
            f"gputune.dll is a library for Windows programs, and this is Python on {sys.platform}; "
            "please use Python for Windows")


def _load(path: Optional[str]) -> ctypes.CDLL:
    """The library from this file, else that of the process's width from beside this one, else by its name."""
    bits = struct.calcsize("P") * 8
    if path is not None:
        files = [os.path.abspath(path)]
    else:
        directory = os.path.dirname(os.path.abspath(__file__))
        files = [os.path.join(directory, "gputune.dll")]
        if bits == 64:
            files.insert(0, os.path.join(directory, "x64", "gputune.dll"))
    found = next(filter(os.path.exists, files), files[0] if path is not None else "gputune.dll")
    try:
        return ctypes.CDLL(found)
    except OSError as error:
        raise LibraryError(f"{found} cannot be loaded by this {bits}-bit Python, which needs the {bits}-bit gputune.dll "
                      f"(looked for: {', '.join(files)}): {error}") from error


def _text(value: bytes) -> str:
    return value.decode("mbcs" if sys.platform == "win32" else "utf-8", "replace")


def _known(value: int) -> Optional[int]:
    return None if value in (-1, _UNTOUCHED) else value


# ---- The interface ---------------------------------------------------------------------------------------------------


class Gputune:
    """gputune.dll. All objects of this class are the same library; its state is the process's."""

    def __init__(self, path: Optional[str] = None) -> None:
        """Load the library: from `path`, else from beside this file, else from where the system finds it.

        Raises ProcessError in any but a Windows process, and LibraryError, with the names of the files that were looked
        for, when none can be loaded.
        """
        _check_process()
        self._functions = _bind(_load(path))

    def _call(self, name: str, *arguments: Any) -> Any:
        result, *types = _FUNCTIONS[name]
        values = [_FIT.get(type_, lambda value: value)(value) for type_, value in zip(types, arguments)]
        if not _is_record(result):
            return self._functions[name](*values)
        record = result()
        self._functions[name](ctypes.byref(record), *values)
        return record

    def _set(self, name: str, *arguments: Any) -> None:
        if not self._call(name, *arguments):
            if not self.is_ready:
                raise NotStartedError("no board is in use; start() has to succeed first")
            raise RefusedError(f"{name} was refused by the board or its driver (the log says more, see LogMode)")

    # -- lifecycle

    def start(self, log: LogMode = LogMode.NONE) -> None:
        """Detect the GPU's vendor and get ready to use the board.

        To be called once: on Intel boards a second start leaves the board out of use. Raises NoBoardError or DriverError
        when there is no board that can be used.
        """
        if not self._call("InitVGAHelper", log):
            if self.vendor == Vendor.UNKNOWN:
                raise NoBoardError("no supported GPU was found")
            raise DriverError(f"there is an {self.vendor.name} GPU, but its vendor's library cannot be used "
                               "(is the driver installed?)")
        if not self.is_ready:
            raise DriverError(f"there is an {self.vendor.name} GPU, but no adapter that can be used")

    @property
    def is_ready(self) -> bool:
        """Whether a usable adapter was found and opened."""
        return bool(self._call("IsInitOk"))

    @property
    def vendor(self) -> Vendor:
        """What the last start found, even if it failed."""
        return Vendor(self._call("GetVendorInfo") & 0xFFFFFFFF)

    @property
    def api(self) -> ApiType:
        """What the last start found, even if it failed."""
        return ApiType(self._call("GetVendorInfo") >> 32)

    # -- adapters

    @property
    def active_adapter(self) -> Optional[int]:
        """The adapter in use, as the vendor's library numbers it; None when there is none."""
        return _known(self._call("GetActiveAdapterIndex"))

    def select_adapter(self, index: int) -> None:
        """Choose the adapter that later calls act on. Raises RefusedError when there is none of this number."""
        self._set("SetActiveAdapterIndex", index)

    def identity(self) -> Optional[Identity]:
        """Which board it is; None where the vendor's backend does not tell."""
        info = self._call("GetVGAInfo")
        if info.SubsystemId == 0 and not info.AdapterName and info.BusNumber == 0:
            return None
        return Identity(_text(info.AdapterName), info.SubsystemId or None, info.BusNumber)

    # -- monitoring

    def fetch(self) -> None:
        """Read all sensors once; reading() then has what they said."""
        self._call("FetchHwmValues")

    def reading(self, key: HwmKey) -> Optional[Reading]:
        """The last reading of a sensor; None when it never had one. A sensor that cannot be read keeps its last one."""
        value = self._call("GetHwmValue", key)
        if not value.Valid:
            return None
        key = HwmKey(key)
        counter = key == HwmKey.GPU_LOAD and self.vendor == Vendor.INTEL
        return Reading(key, _text(value.Name), value.Value, "" if counter else _UNITS[key])

    def read_sensors(self) -> List[Reading]:
        """Read all sensors once: the readings of those that the board has."""
        self.fetch()
        return [reading for reading in map(self.reading, HwmKey) if reading]

    @property
    def frame_rate(self) -> Optional[int]:
        """Frames per second on the board's display; None when not available."""
        return _known(self._call("GetFrameRate"))

    # -- fan

    def set_fan_speed(self, percent: int) -> None:
        """Set a fixed fan speed, 0 to 100 percent. Raises RefusedError when it is refused, as all setters do."""
        if not 0 <= percent <= 100:
            raise ValueError(f"a fan speed is 0 to 100 percent, not {percent}")
        self._set("SetFanSpeed", percent)

    def set_fan_automatic(self) -> None:
        """Return the fan to the driver's control."""
        self._set("SetFanSpeed", -1)

    def set_fan_curve(self, points: Iterable[Tuple[int, int]]) -> None:
        """Set a fan curve: (temperature in °C, speed in percent) in ascending order. Overdrive8 boards take five."""
        table = [_FanTablePoint(FanSpeed=_whole(speed), FanTemperature=_whole(temperature))
                 for temperature, speed in points]
        # Five are read, whatever number is given.
        if not table or (self.api == ApiType.OVERDRIVE8 and len(table) != _OVERDRIVE8_POINTS):
            raise ValueError(f"a fan curve of this board has {_OVERDRIVE8_POINTS} points, not {len(table)}"
                             if table else "a fan curve has points")
        self._set("SetFanSpeedTable", (_FanTablePoint * len(table))(*table), len(table))

    def fan(self) -> Optional[FanSettings]:
        """Range and state of the fan; None when not available. A field that the board does not tell is None."""
        setting = _FanSetting()
        for point in setting.Points:
            for field, _ in _FanPoint._fields_:
                setattr(point, field, _UNTOUCHED)
        self._functions["GetFanSetting"](ctypes.byref(setting))
        if not setting.Valid:
            return None
        count = max(0, min(setting.PointCount, len(setting.Points)))
        return FanSettings(tuple(
            FanPoint(*(_known(getattr(point, field)) for field, _ in _FanPoint._fields_))
            for point in setting.Points[:count]))

    # -- power

    def set_power_limit(self, percent: int, temperature: int) -> None:
        """Set the power limit, relative to the default power (10 = 110 %).

        OverdriveN boards also take the temperature limit (°C), which others ignore.
        """
        self._set("SetPowerLimit", temperature, percent)

    def restore_power_limit(self) -> None:
        """Restore the default power limit."""
        self._set("SetPowerLimitDefault")

    def power_limit(self) -> Optional[PowerLimit]:
        """Range of the power limit; None when not available."""
        setting = self._call("GetPowerLimitSetting")
        if not setting.Valid:
            return None
        # Where the value in effect is always read, -1 is a limit of -1 percent.
        readable = setting.Current != -1 or self.api == ApiType.OVERDRIVE8
        return PowerLimit(setting.Default, setting.Max, setting.Min, setting.Current if readable else None)

    # -- clocks and profiles

    def set_clocks(self, gpu: int, memory: int, gpu_voltage: int = 0, memory_voltage: int = 0) -> None:
        """Set clocks (MHz) and voltages (mV).

        OverdriveN: 0 keeps what is. Overdrive8: no voltages; clocks that are in effect already are refused. Intel:
        offsets from the default clocks, no voltages.
        """
        self._set("SetPerformanceUser", gpu, gpu_voltage, memory, memory_voltage)

    def apply_overclock(self) -> None:
        """Apply the predefined overclock profile of the board (AMD)."""
        self._set("SetPerformanceOC")

    def apply_silent(self) -> None:
        """Apply the predefined silent profile of the board (AMD)."""
        self._set("SetPerformanceSilent")

    def restore_defaults(self) -> None:
        """Restore the driver's defaults (AMD)."""
        self._set("SetPerformanceDefault")

    def _clock(self, name: str) -> Optional[ClockRange]:
        setting = self._call(name)
        if not setting.Valid:
            return None
        return ClockRange(*(_known(getattr(setting, field)) for field, _ in _ClockSetting._fields_[1:]))

    def gpu_clock(self) -> Optional[ClockRange]:
        """Range and state of the GPU clock; None when not available."""
        return self._clock("GetGpuClockSetting")

    def memory_clock(self) -> Optional[ClockRange]:
        """Range and state of the memory clock; None when not available."""
        return self._clock("GetMemClockSetting")

    def profile(self, subsystem_id: int) -> Optional[Profile]:
        """The predefined profile of a board, from "Config\\ConfigModel.xml" beside the program; None without one."""
        record = self._call("GetExternalPerformanceParameter", subsystem_id)
        if not record.Valid:
            return None
        return Profile(*(getattr(record, field) for field, _ in record._fields_[1:]))
