// Read and tune the installed graphics board, whoever made its GPU, through gputune.dll.
//
//     GraphicsBoard.Start();
//     foreach (Reading reading in GraphicsBoard.ReadSensors())
//         Console.WriteLine("{0}: {1} {2}", reading.Name, reading.Value, reading.Unit);
//     GraphicsBoard.TrySetFanSpeed(60);
//
// One file to add to a project; C# 6 and later, .NET Framework 4.5 and later, .NET 5 and later. IGraphicsBoard.cs beside it is
// for programs that are tested without the library.
//
// Built for x86, x64 or AnyCPU: a 64-bit process loads x64\gputune.dll from beside the program, or gputune.dll, a 32-bit one
// gputune.dll; both look before that into the folder "runtimes" there, where packages put them.
using System;
using System.Collections.Generic;
using System.ComponentModel;
#if NET5_0_OR_GREATER
using System.Diagnostics.CodeAnalysis;
#endif
using System.IO;
using System.Runtime.InteropServices;

namespace Gputune
{
    /// <summary>Destination of the diagnostic log. The first start in the process fixes it.</summary>
    public enum LogMode
    {
        /// <summary>No log.</summary>
        None = 0,
        /// <summary>The process's standard output.</summary>
        Stdout = 1,
        /// <summary>The file "debug.log" in the current directory.</summary>
        File = 2,
        /// <summary>Both.</summary>
        Both = 3,
    }

    /// <summary>Who made the GPU.</summary>
    public enum Vendor
    {
        /// <summary>No supported GPU was found.</summary>
        Unknown = 0,
        /// <summary>AMD.</summary>
        Amd = 1,
        /// <summary>Intel.</summary>
        Intel = 2,
        /// <summary>NVIDIA.</summary>
        Nvidia = 3,
    }

    /// <summary>The vendor interface that is driven.</summary>
    public enum ApiType
    {
        /// <summary>None.</summary>
        None = 0,
        /// <summary>AMD Display Library, Overdrive8 generation.</summary>
        Overdrive8 = 2,
        /// <summary>AMD Display Library, OverdriveN generation.</summary>
        OverdriveN = 3,
        /// <summary>Intel Graphics Control Library.</summary>
        Igcl = 4,
        /// <summary>NVIDIA NVAPI.</summary>
        Nvapi = 5,
    }

    /// <summary>The sensors, with the unit of their readings.</summary>
    public enum HwmKey
    {
        /// <summary>MHz.</summary>
        GpuCoreClock = 0,
        /// <summary>MHz.</summary>
        GpuMemoryClock = 1,
        /// <summary>Degrees Celsius.</summary>
        GpuTemperature = 2,
        /// <summary>Degrees Celsius.</summary>
        GpuHotspotTemperature = 3,
        /// <summary>Degrees Celsius.</summary>
        GpuMemoryTemperature = 4,
        /// <summary>Percent.</summary>
        FanSpeedPercent = 5,
        /// <summary>Revolutions per minute.</summary>
        FanSpeedRpm = 6,
        /// <summary>Percent; on Intel boards a raw activity counter.</summary>
        GpuLoad = 7,
        /// <summary>Percent.</summary>
        MemoryControllerLoad = 8,
        /// <summary>Watts.</summary>
        GpuPower = 9,
        /// <summary>Watts.</summary>
        VddcPower = 10,
        /// <summary>Watts.</summary>
        VddciPower = 11,
        /// <summary>Percent.</summary>
        VrmEfficiency = 12,
        /// <summary>Megabytes.</summary>
        MemoryUsage = 13,
        /// <summary>Megabytes.</summary>
        MemoryUsageDedicated = 14,
        /// <summary>Megabytes.</summary>
        MemoryUsageDynamic = 15,
        /// <summary>Millivolts.</summary>
        Vddc = 16,
        /// <summary>Percent.</summary>
        CpuUsage = 17,
        /// <summary>MHz.</summary>
        CpuFrequency = 18,
        /// <summary>Degrees Celsius.</summary>
        TemperatureLimit = 19,
        /// <summary>Percent.</summary>
        TdpLimit = 20,
    }

    /// <summary>There is no board that can be used.</summary>
    public sealed class GputuneException : Exception
    {
        internal GputuneException(string message) : base(message)
        {
        }
    }

    /// <summary>Which board it is.</summary>
    public struct Identity
    {
        /// <summary>Product name.</summary>
        public string Name { get; set; }
        /// <summary>Device identifier in the high 16 bits, vendor identifier in the low 16; null if unknown.</summary>
        public uint? SubsystemId { get; set; }
        /// <summary>PCI bus number.</summary>
        public int BusNumber { get; set; }
    }

    /// <summary>What a sensor said last.</summary>
    public struct Reading
    {
        /// <summary>The sensor.</summary>
        public HwmKey Key { get; set; }
        /// <summary>Its name, in English.</summary>
        public string Name { get; set; }
        /// <summary>In <see cref="Unit"/>.</summary>
        public double Value { get; set; }
        /// <summary>Such as "MHz"; empty for a raw counter.</summary>
        public string Unit { get; set; }
    }

    /// <summary>
    /// One point of the fan's range and state. Speeds in percent, temperatures in degrees Celsius; null where the board
    /// tells none.
    /// </summary>
    public struct FanPoint
    {
        /// <summary>Default speed.</summary>
        public int? DefaultSpeed { get; set; }
        /// <summary>Default temperature.</summary>
        public int? DefaultTemperature { get; set; }
        /// <summary>Highest speed.</summary>
        public int? MaxSpeed { get; set; }
        /// <summary>Lowest speed.</summary>
        public int? MinSpeed { get; set; }
        /// <summary>Highest temperature.</summary>
        public int? MaxTemperature { get; set; }
        /// <summary>Lowest temperature.</summary>
        public int? MinTemperature { get; set; }
        /// <summary>Speed in effect.</summary>
        public int? CurrentSpeed { get; set; }
        /// <summary>Temperature in effect.</summary>
        public int? CurrentTemperature { get; set; }
    }

    /// <summary>One point of a fan curve that is to be set.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct FanTablePoint
    {
        /// <summary>Percent.</summary>
        public int FanSpeed;
        /// <summary>Degrees Celsius.</summary>
        public int FanTemperature;

        /// <summary>A point.</summary>
        /// <param name="temperature">Degrees Celsius.</param>
        /// <param name="speed">Percent.</param>
        public FanTablePoint(int temperature, int speed)
        {
            FanSpeed = speed;
            FanTemperature = temperature;
        }
    }

    /// <summary>Power limit in percent of the default power, relative to it (0 = default).</summary>
    public struct PowerLimit
    {
        /// <summary>Default.</summary>
        public int Default { get; set; }
        /// <summary>Highest limit.</summary>
        public int Max { get; set; }
        /// <summary>Lowest limit.</summary>
        public int Min { get; set; }
        /// <summary>In effect; null where it cannot be read (<see cref="HwmKey.TdpLimit"/> may have it).</summary>
        public int? Current { get; set; }
    }

    /// <summary>Range and state of a clock (MHz) and its voltage (mV); null where not available.</summary>
    public struct ClockRange
    {
        /// <summary>Default clock.</summary>
        public int? DefaultClock { get; set; }
        /// <summary>Default voltage.</summary>
        public int? DefaultVoltage { get; set; }
        /// <summary>Highest clock.</summary>
        public int? MaxClock { get; set; }
        /// <summary>Lowest clock.</summary>
        public int? MinClock { get; set; }
        /// <summary>Highest voltage.</summary>
        public int? MaxVoltage { get; set; }
        /// <summary>Lowest voltage.</summary>
        public int? MinVoltage { get; set; }
        /// <summary>Clock in effect.</summary>
        public int? CurrentClock { get; set; }
        /// <summary>Voltage in effect.</summary>
        public int? CurrentVoltage { get; set; }
    }

    /// <summary>
    /// The predefined overclock and silent profile of a board. Clocks are factors of the default clock; the given ones
    /// absolute clocks in MHz, which count instead where not 0. Power is in percent, relative to the default.
    /// </summary>
    public struct Profile
    {
        /// <summary>GPU clock, overclocked.</summary>
        public float GpuOverclock { get; set; }
        /// <summary>GPU clock, overclocked, in MHz.</summary>
        public float GpuOverclockGiven { get; set; }
        /// <summary>Memory clock, overclocked.</summary>
        public float MemoryOverclock { get; set; }
        /// <summary>Memory clock, overclocked, in MHz.</summary>
        public float MemoryOverclockGiven { get; set; }
        /// <summary>Power limit, overclocked.</summary>
        public float PowerOverclock { get; set; }
        /// <summary>GPU clock, silent.</summary>
        public float GpuSilent { get; set; }
        /// <summary>Memory clock, silent.</summary>
        public float MemorySilent { get; set; }
        /// <summary>Power limit, silent.</summary>
        public float PowerSilent { get; set; }
        /// <summary>Board power in watts.</summary>
        public int Watt { get; set; }
        /// <summary>Newest video BIOS marker.</summary>
        public int NewestVbios { get; set; }
    }

    /// <summary>
    /// The graphics board. The library's state is the process's, so this class is static; one call at a time. Start it
    /// first. A function whose name begins with Try answers false when the board or its driver refuses; the log says
    /// why. gputune.h says of each function what the vendors make of it.
    /// </summary>
    public static class GraphicsBoard
    {
        private const int NotAvailable = -1;
        // What the backend left as it was: no setting has this value.
        private const int Untouched = int.MinValue;
        private const int Overdrive8Points = 5;

        private static readonly string[] Units =
        {
            "MHz", "MHz", "\u00b0C", "\u00b0C", "\u00b0C", "%", "rpm", "%", "%", "W", "W", "W", "%", "MB", "MB", "MB",
            "mV", "%", "MHz", "\u00b0C", "%",
        };

        // ---- Lifecycle ----------------------------------------------------------------------------------------------

        /// <summary>
        /// Detect the GPU's vendor and get ready to use the board. To be called once: on Intel boards a second start
        /// leaves the board out of use.
        /// </summary>
        /// <exception cref="GputuneException">There is no board that can be used.</exception>
        /// <exception cref="PlatformNotSupportedException">This is no Windows process.</exception>
        /// <exception cref="DllNotFoundException">
        /// Beside the program is no gputune.dll of the process's width; the message names the files.
        /// </exception>
        public static void Start(LogMode log = LogMode.None)
        {
            if (TryStart(log))
                return;
            if (Vendor == Vendor.Unknown)
                throw new GputuneException("No supported GPU was found.");
            throw new GputuneException(string.Format("There is an {0} GPU, but it cannot be used: its vendor's library "
                + "cannot (is the driver installed?), or shows no usable adapter.", Vendor));
        }

        /// <summary>As <see cref="Start"/>; false when there is no board that can be used.</summary>
        /// <exception cref="PlatformNotSupportedException">This is no Windows process.</exception>
        /// <exception cref="DllNotFoundException">
        /// Beside the program is no gputune.dll of the process's width; the message names the files.
        /// </exception>
        public static bool TryStart(LogMode log = LogMode.None)
        {
            CheckProcess();
            return Native.InitVGAHelper((int)log) && Native.IsInitOk();
        }

        /// <summary>Whether a usable adapter was found and opened.</summary>
        public static bool IsReady
        {
            get { return Native.IsInitOk(); }
        }

        /// <summary>Who made the GPU that the last start found, even if it failed.</summary>
        public static Vendor Vendor
        {
            get { return (Vendor)(uint)Native.GetVendorInfo(); }
        }

        /// <summary>The vendor interface that the last start found, even if it failed.</summary>
        public static ApiType Api
        {
            get { return (ApiType)(Native.GetVendorInfo() >> 32); }
        }

        /// <summary>
        /// What <see cref="Start"/> sees to first, for a program that loads other libraries before: this is a process that
        /// can load gputune.dll, and has loaded it. A member that is used before the start sees to it, too: the exception is
        /// then that of a type initializer.
        /// </summary>
        /// <exception cref="PlatformNotSupportedException">This is no Windows process.</exception>
        /// <exception cref="DllNotFoundException">
        /// Beside the program is no gputune.dll of the process's width; the message names the files.
        /// </exception>
        public static void CheckProcess()
        {
            CheckProcess(Environment.OSVersion.Platform);
        }

        private static void CheckProcess(PlatformID system)
        {
            if (system != PlatformID.Win32NT)
                throw new PlatformNotSupportedException("gputune.dll is a library for Windows.");
            LibraryFile.Load();
        }

        // ---- Adapters -----------------------------------------------------------------------------------------------

        /// <summary>The adapter in use, as the vendor's library numbers it; null when there is none.</summary>
        public static int? ActiveAdapter
        {
            get { return Known(Native.GetActiveAdapterIndex()); }
        }

        /// <summary>Choose the adapter that later calls act on; false when there is none of this number.</summary>
        public static bool TrySelectAdapter(int index)
        {
            return Native.SetActiveAdapterIndex(index);
        }

        /// <summary>Which board it is; null where the vendor's backend does not tell.</summary>
        public static Identity? GetIdentity()
        {
            var info = new Native.VgaInfo();
            Native.GetVGAInfo(ref info);
            if (info.SubsystemId == 0 && string.IsNullOrEmpty(info.AdapterName) && info.BusNumber == 0)
                return null;
            return new Identity
            {
                Name = info.AdapterName,
                SubsystemId = info.SubsystemId == 0 ? (uint?)null : info.SubsystemId,
                BusNumber = info.BusNumber,
            };
        }

        // ---- Monitoring ---------------------------------------------------------------------------------------------

        /// <summary>Read all sensors once; <see cref="GetReading"/> then has what they said.</summary>
        public static void Fetch()
        {
            Native.FetchHwmValues();
        }

        /// <summary>
        /// The last reading of a sensor; null when it never had one. A sensor that cannot be read keeps its last one.
        /// </summary>
        public static Reading? GetReading(HwmKey key)
        {
            var value = new Native.HwmValue();
            Native.GetHwmValue(ref value, (int)key);
            if (!value.Valid)
                return null;
            bool isCounter = key == HwmKey.GpuLoad && Vendor == Vendor.Intel;
            return new Reading
            {
                Key = key,
                Name = value.Name,
                Value = value.Value,
                Unit = isCounter ? "" : Units[(int)key],
            };
        }

        /// <summary>Read all sensors once: the readings of those that the board has.</summary>
        public static IList<Reading> ReadSensors()
        {
            Fetch();
            var readings = new List<Reading>();
            for (int key = 0; key < Units.Length; ++key)
            {
                Reading? reading = GetReading((HwmKey)key);
                if (reading.HasValue)
                    readings.Add(reading.Value);
            }
            return readings;
        }

        /// <summary>Frames per second on the board's display; null when not available.</summary>
        public static int? FrameRate
        {
            get { return Known(Native.GetFrameRate()); }
        }

        // ---- Fan ----------------------------------------------------------------------------------------------------

        /// <summary>Set a fixed fan speed.</summary>
        /// <param name="percent">0 to 100.</param>
        public static bool TrySetFanSpeed(int percent)
        {
            if (percent < 0 || percent > 100)
                throw new ArgumentOutOfRangeException("percent", percent, "A fan speed is 0 to 100 percent.");
            return Native.SetFanSpeed(percent);
        }

        /// <summary>Return the fan to the driver's control.</summary>
        public static bool TrySetFanAutomatic()
        {
            return Native.SetFanSpeed(-1);
        }

        /// <summary>Set a fan curve.</summary>
        /// <param name="points">In ascending order; Overdrive8 boards take five.</param>
        public static bool TrySetFanCurve(params FanTablePoint[] points)
        {
            if (points == null)
                throw new ArgumentNullException("points");
            // Five are read, whatever number is given.
            if (points.Length == 0 || (Api == ApiType.Overdrive8 && points.Length != Overdrive8Points))
                throw new ArgumentException("A fan curve of this board has another number of points.", "points");
            return Native.SetFanSpeedTable(points, points.Length);
        }

        /// <summary>
        /// Range and state of the fan: one point for a fixed speed, five for a curve; null when not available.
        /// </summary>
#if NET5_0_OR_GREATER
        [return: MaybeNull]
#endif
        public static IList<FanPoint> GetFan()
        {
            var setting = new Native.FanSetting { Points = new Native.FanPoint[Native.FanPointCapacity] };
            for (int i = 0; i < setting.Points.Length; ++i)
                setting.Points[i] = Native.FanPoint.Of(Untouched);
            Native.GetFanSetting(ref setting);
            if (!setting.Valid)
                return null;
            var points = new List<FanPoint>();
            for (int i = 0; i < setting.PointCount && i < setting.Points.Length; ++i)
            {
                Native.FanPoint point = setting.Points[i];
                points.Add(new FanPoint
                {
                    DefaultSpeed = Known(point.DefaultSpeed),
                    DefaultTemperature = Known(point.DefaultTemperature),
                    MaxSpeed = Known(point.MaxSpeed),
                    MinSpeed = Known(point.MinSpeed),
                    MaxTemperature = Known(point.MaxTemperature),
                    MinTemperature = Known(point.MinTemperature),
                    CurrentSpeed = Known(point.CurrentSpeed),
                    CurrentTemperature = Known(point.CurrentTemperature),
                });
            }
            return points;
        }

        // ---- Power --------------------------------------------------------------------------------------------------

        /// <summary>Set the power limit, and on OverdriveN boards the temperature limit.</summary>
        /// <param name="percent">Relative to the default power (10 = 110 %).</param>
        /// <param name="temperature">Degrees Celsius; ignored elsewhere.</param>
        public static bool TrySetPowerLimit(int percent, int temperature)
        {
            return Native.SetPowerLimit(temperature, percent);
        }

        /// <summary>Restore the default power limit.</summary>
        public static bool TryRestorePowerLimit()
        {
            return Native.SetPowerLimitDefault();
        }

        /// <summary>Range of the power limit; null when not available.</summary>
        public static PowerLimit? GetPowerLimit()
        {
            var setting = new Native.PowerLimitSetting();
            Native.GetPowerLimitSetting(ref setting);
            if (!setting.Valid)
                return null;
            // Where the value in effect is always read, -1 is a limit of -1 percent.
            bool isRead = setting.Current != NotAvailable || Api == ApiType.Overdrive8;
            return new PowerLimit
            {
                Default = setting.Default,
                Max = setting.Max,
                Min = setting.Min,
                Current = isRead ? setting.Current : (int?)null,
            };
        }

        // ---- Clocks and profiles ------------------------------------------------------------------------------------

        /// <summary>
        /// Set clocks (MHz) and voltages (mV). OverdriveN: 0 keeps what is. Overdrive8: no voltages; clocks that are in
        /// effect already are refused. Intel: offsets from the default clocks, no voltages.
        /// </summary>
        public static bool TrySetClocks(int gpu, int memory, int gpuVoltage = 0, int memoryVoltage = 0)
        {
            return Native.SetPerformanceUser(gpu, gpuVoltage, memory, memoryVoltage);
        }

        /// <summary>Apply the predefined overclock profile of the board (AMD).</summary>
        public static bool TryApplyOverclock()
        {
            return Native.SetPerformanceOC();
        }

        /// <summary>Apply the predefined silent profile of the board (AMD).</summary>
        public static bool TryApplySilent()
        {
            return Native.SetPerformanceSilent();
        }

        /// <summary>Restore the driver's defaults (AMD).</summary>
        public static bool TryRestoreDefaults()
        {
            return Native.SetPerformanceDefault();
        }

        /// <summary>Range and state of the GPU clock; null when not available.</summary>
        public static ClockRange? GetGpuClock()
        {
            var setting = new Native.ClockSetting();
            Native.GetGpuClockSetting(ref setting);
            return ToClockRange(setting);
        }

        /// <summary>Range and state of the memory clock; null when not available.</summary>
        public static ClockRange? GetMemoryClock()
        {
            var setting = new Native.ClockSetting();
            Native.GetMemClockSetting(ref setting);
            return ToClockRange(setting);
        }

        /// <summary>
        /// The predefined profile of a board, from "Config\ConfigModel.xml" beside the program; null without one.
        /// </summary>
        /// <param name="subsystemId">The board, as <see cref="Identity.SubsystemId"/>.</param>
        public static Profile? GetProfile(uint subsystemId)
        {
            var record = new Native.PredefinedPerformanceParameter();
            Native.GetExternalPerformanceParameter(ref record, subsystemId);
            if (!record.Valid)
                return null;
            return new Profile
            {
                GpuOverclock = record.GpuOC,
                GpuOverclockGiven = record.GpuOCGivenValue,
                MemoryOverclock = record.MemOC,
                MemoryOverclockGiven = record.MemOCGivenValue,
                PowerOverclock = record.PowerOC,
                GpuSilent = record.GpuSilent,
                MemorySilent = record.MemSilent,
                PowerSilent = record.PowerSilent,
                Watt = record.Watt,
                NewestVbios = record.NewestVBIOS,
            };
        }

        private static ClockRange? ToClockRange(Native.ClockSetting setting)
        {
            if (!setting.Valid)
                return null;
            return new ClockRange
            {
                DefaultClock = Known(setting.DefaultClock),
                DefaultVoltage = Known(setting.DefaultVoltage),
                MaxClock = Known(setting.MaxClock),
                MinClock = Known(setting.MinClock),
                MaxVoltage = Known(setting.MaxVoltage),
                MinVoltage = Known(setting.MinVoltage),
                CurrentClock = Known(setting.CurrentClock),
                CurrentVoltage = Known(setting.CurrentVoltage),
            };
        }

        private static int? Known(int value)
        {
            return value == NotAvailable || value == Untouched ? (int?)null : value;
        }
    }

    // The file that a process loads. The runtime finds it by its name afterwards, and knows nothing of widths.
    internal static class LibraryFile
    {
        internal const string Name = "gputune.dll";
        private static bool loaded;

        internal static void Load()
        {
            if (!loaded)
                Load(AppDomain.CurrentDomain.BaseDirectory, IntPtr.Size, File.Exists, Open);
            loaded = true;
        }

        // Of the files in this folder that are for this width, the first that is there. `open` returns what went wrong,
        // if anything.
        internal static void Load(string folder, int pointerSize, Func<string, bool> exists, Func<string, string> open)
        {
            string width = 8 * pointerSize + "-bit";
            string processor = pointerSize == 8 ? "x64" : "x86";
            var files = new List<string>
            {
                Path.Combine(folder, "runtimes", "win-" + processor, "native", Name),
                Path.Combine(folder, Name),
            };
            if (pointerSize == 8)
                files.Insert(0, Path.Combine(folder, processor, Name));
            int found = files.FindIndex(file => exists(file));
            if (found < 0)
                throw new DllNotFoundException(string.Format("There is no {0} gputune.dll for this {0} process: {1}.", width,
                    string.Join(" or ", files)));
            string problem = open(files[found]);
            if (problem.Length > 0)
                throw new DllNotFoundException(string.Format("{0} cannot be loaded by this {1} process, which needs the {1} "
                    + "gputune.dll: {2}", files[found], width, problem));
        }

        private static string Open(string file)
        {
            return LoadLibraryW(file) == IntPtr.Zero ? new Win32Exception(Marshal.GetLastWin32Error()).Message : "";
        }

        [DllImport("kernel32.dll", CharSet = CharSet.Unicode, ExactSpelling = true, SetLastError = true)]
        private static extern IntPtr LoadLibraryW(string file);
    }

    // The library's records and functions, as in gputune.h.
    //
    // Records come back by value, which in binary form means: the caller passes the address of its storage as the first
    // argument, and gets it back. They are declared in this form, since the runtime's marshaller refuses to return
    // records with texts and arrays in them.
    internal static class Native
    {
        internal const int FanPointCapacity = 50;
        private const int TextCapacity = 256;
        private const string Library = LibraryFile.Name;
        private const CallingConvention Convention = CallingConvention.Cdecl;

        // Before the first of the functions is called, and the library loaded for it.
        static Native()
        {
            GraphicsBoard.CheckProcess();
        }

        [StructLayout(LayoutKind.Sequential, CharSet = CharSet.Ansi)]
        internal struct HwmValue
        {
            public double Value;
            [MarshalAs(UnmanagedType.ByValTStr, SizeConst = TextCapacity)] public string Name;
            [MarshalAs(UnmanagedType.I1)] public bool Valid;
            [MarshalAs(UnmanagedType.ByValArray, SizeConst = 7)] public byte[] Reserved;
        }

        [StructLayout(LayoutKind.Sequential, CharSet = CharSet.Ansi)]
        internal struct VgaInfo
        {
            public uint SubsystemId;
            [MarshalAs(UnmanagedType.ByValTStr, SizeConst = TextCapacity)] public string AdapterName;
            public int BusNumber;
        }

        [StructLayout(LayoutKind.Sequential)]
        internal struct FanPoint
        {
            public int DefaultSpeed;
            public int DefaultTemperature;
            public int MaxSpeed;
            public int MinSpeed;
            public int MaxTemperature;
            public int MinTemperature;
            public int CurrentSpeed;
            public int CurrentTemperature;

            internal static FanPoint Of(int value)
            {
                return new FanPoint
                {
                    DefaultSpeed = value,
                    DefaultTemperature = value,
                    MaxSpeed = value,
                    MinSpeed = value,
                    MaxTemperature = value,
                    MinTemperature = value,
                    CurrentSpeed = value,
                    CurrentTemperature = value,
                };
            }
        }

        [StructLayout(LayoutKind.Sequential)]
        internal struct FanSetting
        {
            [MarshalAs(UnmanagedType.I1)] public bool Valid;
            public int PointCount;
            [MarshalAs(UnmanagedType.ByValArray, SizeConst = FanPointCapacity)] public FanPoint[] Points;
        }

        [StructLayout(LayoutKind.Sequential)]
        internal struct PowerLimitSetting
        {
            [MarshalAs(UnmanagedType.I1)] public bool Valid;
            public int Default;
            public int Max;
            public int Min;
            public int Current;
        }

        [StructLayout(LayoutKind.Sequential)]
        internal struct ClockSetting
        {
            [MarshalAs(UnmanagedType.I1)] public bool Valid;
            public int DefaultClock;
            public int DefaultVoltage;
            public int MaxClock;
            public int MinClock;
            public int MaxVoltage;
            public int MinVoltage;
            public int CurrentClock;
            public int CurrentVoltage;
        }

        [StructLayout(LayoutKind.Sequential)]
        internal struct PredefinedPerformanceParameter
        {
            [MarshalAs(UnmanagedType.I1)] public bool Valid;
            public float GpuOC;
            public float GpuOCGivenValue;
            public float MemOC;
            public float MemOCGivenValue;
            public float PowerOC;
            public float GpuSilent;
            public float MemSilent;
            public float PowerSilent;
            public int Watt;
            public int NewestVBIOS;
        }

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool InitVGAHelper(int logMode);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool IsInitOk();

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern ulong GetVendorInfo();

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool SetActiveAdapterIndex(int index);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern int GetActiveAdapterIndex();

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern IntPtr GetVGAInfo(ref VgaInfo storage);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern void FetchHwmValues();

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern IntPtr GetHwmValue(ref HwmValue storage, int key);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern int GetFrameRate();

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool SetFanSpeed(int percent);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool SetFanSpeedTable([In] FanTablePoint[] table, int count);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern IntPtr GetFanSetting(ref FanSetting storage);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool SetPowerLimit(int temperatureLimit, int powerLimit);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool SetPowerLimitDefault();

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern IntPtr GetPowerLimitSetting(ref PowerLimitSetting storage);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool SetPerformanceUser(int gpuClock, int gpuVoltage, int memClock, int memVoltage);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool SetPerformanceOC();

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool SetPerformanceDefault();

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        [return: MarshalAs(UnmanagedType.I1)]
        internal static extern bool SetPerformanceSilent();

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern IntPtr GetGpuClockSetting(ref ClockSetting storage);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern IntPtr GetMemClockSetting(ref ClockSetting storage);

        [DllImport(Library, CallingConvention = Convention, ExactSpelling = true)]
        internal static extern IntPtr GetExternalPerformanceParameter(
            ref PredefinedPerformanceParameter storage, uint hwid);
    }
}
