"""A long recording of a busy board, always the same one, as `gputunectl record --frame-rate` would have written it."""

import datetime
import random

# What no other reading reaches, and when.
HOTTEST = 99.5
COOLEST = 12.25
HOTTEST_SECOND = 61801
COOLEST_SECOND = 123457

COLUMNS = {
    "gpu_core_clock_mhz": (1500, 4, 1), "gpu_memory_clock_mhz": (875, 0, 0), "gpu_temperature_celsius": (65, 0.5, 2),
    "gpu_hotspot_temperature_celsius": (76, 0.5, 2), "fan_duty_percent": (45, 1, 0), "fan_speed_rpm": (1650, 9, 0),
    "gpu_load_percent": (55, 1.3, 0), "memory_controller_load_percent": (50, 1.3, 0), "gpu_power_watts": (180, 2, 2),
    "memory_usage_megabytes": (4850, 3, 0), "vddc_millivolts": (1050, 3, 0), "temperature_limit_celsius": (95, 0, 0),
    "tdp_limit_percent": (15, 0, 0), "frame_rate_fps": (92, 2, 0),
}


def write(path, readings):
    """One reading a second, `readings` of them."""
    numbers = random.Random(1)
    start = datetime.datetime(2025, 1, 31, 12, 0, 0)
    levels = {name: middle for name, (middle, _, _) in COLUMNS.items()}
    with open(path, "w", encoding="utf-8", newline="") as file:
        file.write("time," + ",".join(COLUMNS) + ",adapter_name,fan_curve\n")
        for second in range(readings):
            for name, (middle, step, _) in COLUMNS.items():
                levels[name] += numbers.gauss(0, step) + (middle - levels[name]) * 0.01
            shown = {name: f"{levels[name]:.{decimals}f}" for name, (_, _, decimals) in COLUMNS.items()}
            if second in (HOTTEST_SECOND, COOLEST_SECOND):
                shown["gpu_temperature_celsius"] = str(HOTTEST if second == HOTTEST_SECOND else COOLEST)
            # Timers are late by some milliseconds.
            time = start + datetime.timedelta(seconds=second, milliseconds=numbers.randrange(16))
            board = "AMD Radeon RX 5700 XT,50:20 60:34 72:50 84:72 95:100" if second == 0 else ","
            file.write(f"{time.isoformat(timespec='milliseconds')},{','.join(shown.values())},{board}\n")
