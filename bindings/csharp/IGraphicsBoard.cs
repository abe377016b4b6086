// The graphics board as an interface, for programs that are tested without the library: they take an IGraphicsBoard, which is
// an InstalledBoard in use and a class of the test's own in a test.
using System.Collections.Generic;
#if NET5_0_OR_GREATER
using System.Diagnostics.CodeAnalysis;
#endif

namespace Gputune
{
    /// <summary>What <see cref="GraphicsBoard"/> can do, which says of each member what it does.</summary>
    public interface IGraphicsBoard
    {
        /// <summary>See <see cref="GraphicsBoard.Start"/>.</summary>
        void Start(LogMode log = LogMode.None);
        /// <summary>See <see cref="GraphicsBoard.TryStart"/>.</summary>
        bool TryStart(LogMode log = LogMode.None);
        /// <summary>See <see cref="GraphicsBoard.IsReady"/>.</summary>
        bool IsReady { get; }
        /// <summary>See <see cref="GraphicsBoard.Vendor"/>.</summary>
        Vendor Vendor { get; }
        /// <summary>See <see cref="GraphicsBoard.Api"/>.</summary>
        ApiType Api { get; }
        /// <summary>See <see cref="GraphicsBoard.ActiveAdapter"/>.</summary>
        int? ActiveAdapter { get; }
        /// <summary>See <see cref="GraphicsBoard.TrySelectAdapter"/>.</summary>
        bool TrySelectAdapter(int index);
        /// <summary>See <see cref="GraphicsBoard.GetIdentity"/>.</summary>
        Identity? GetIdentity();

        /// <summary>See <see cref="GraphicsBoard.Fetch"/>.</summary>
        void Fetch();
        /// <summary>See <see cref="GraphicsBoard.GetReading"/>.</summary>
        Reading? GetReading(HwmKey key);
        /// <summary>See <see cref="GraphicsBoard.ReadSensors"/>.</summary>
        IList<Reading> ReadSensors();
        /// <summary>See <see cref="GraphicsBoard.FrameRate"/>.</summary>
        int? FrameRate { get; }

        /// <summary>See <see cref="GraphicsBoard.TrySetFanSpeed"/>.</summary>
        bool TrySetFanSpeed(int percent);
        /// <summary>See <see cref="GraphicsBoard.TrySetFanAutomatic"/>.</summary>
        bool TrySetFanAutomatic();
        /// <summary>See <see cref="GraphicsBoard.TrySetFanCurve"/>.</summary>
        bool TrySetFanCurve(params FanTablePoint[] points);
        /// <summary>See <see cref="GraphicsBoard.GetFan"/>.</summary>
#if NET5_0_OR_GREATER
        [return: MaybeNull]
#endif
        IList<FanPoint> GetFan();

        /// <summary>See <see cref="GraphicsBoard.TrySetPowerLimit"/>.</summary>
        bool TrySetPowerLimit(int percent, int temperature);
        /// <summary>See <see cref="GraphicsBoard.TryRestorePowerLimit"/>.</summary>
        bool TryRestorePowerLimit();
        /// <summary>See <see cref="GraphicsBoard.GetPowerLimit"/>.</summary>
        PowerLimit? GetPowerLimit();

        /// <summary>See <see cref="GraphicsBoard.TrySetClocks"/>.</summary>
        bool TrySetClocks(int gpu, int memory, int gpuVoltage = 0, int memoryVoltage = 0);
        /// <summary>See <see cref="GraphicsBoard.TryApplyOverclock"/>.</summary>
        bool TryApplyOverclock();
        /// <summary>See <see cref="GraphicsBoard.TryApplySilent"/>.</summary>
        bool TryApplySilent();
        /// <summary>See <see cref="GraphicsBoard.TryRestoreDefaults"/>.</summary>
        bool TryRestoreDefaults();
        /// <summary>See <see cref="GraphicsBoard.GetGpuClock"/>.</summary>
        ClockRange? GetGpuClock();
        /// <summary>See <see cref="GraphicsBoard.GetMemoryClock"/>.</summary>
        ClockRange? GetMemoryClock();
        /// <summary>See <see cref="GraphicsBoard.GetProfile"/>.</summary>
        Profile? GetProfile(uint subsystemId);
    }

    /// <summary>
    /// The machine's board. All objects of this class are the same one, as the library's state is the process's.
    /// </summary>
    public sealed class InstalledBoard : IGraphicsBoard
    {
#pragma warning disable 1591 // The interface has the comments.
        public void Start(LogMode log = LogMode.None) => GraphicsBoard.Start(log);
        public bool TryStart(LogMode log = LogMode.None) => GraphicsBoard.TryStart(log);
        public bool IsReady => GraphicsBoard.IsReady;
        public Vendor Vendor => GraphicsBoard.Vendor;
        public ApiType Api => GraphicsBoard.Api;
        public int? ActiveAdapter => GraphicsBoard.ActiveAdapter;
        public bool TrySelectAdapter(int index) => GraphicsBoard.TrySelectAdapter(index);
        public Identity? GetIdentity() => GraphicsBoard.GetIdentity();

        public void Fetch() => GraphicsBoard.Fetch();
        public Reading? GetReading(HwmKey key) => GraphicsBoard.GetReading(key);
        public IList<Reading> ReadSensors() => GraphicsBoard.ReadSensors();
        public int? FrameRate => GraphicsBoard.FrameRate;

        public bool TrySetFanSpeed(int percent) => GraphicsBoard.TrySetFanSpeed(percent);
        public bool TrySetFanAutomatic() => GraphicsBoard.TrySetFanAutomatic();
        public bool TrySetFanCurve(params FanTablePoint[] points) => GraphicsBoard.TrySetFanCurve(points);
#if NET5_0_OR_GREATER
        [return: MaybeNull]
#endif
        public IList<FanPoint> GetFan() => GraphicsBoard.GetFan();

        public bool TrySetPowerLimit(int percent, int temperature) => GraphicsBoard.TrySetPowerLimit(percent, temperature);
        public bool TryRestorePowerLimit() => GraphicsBoard.TryRestorePowerLimit();
        public PowerLimit? GetPowerLimit() => GraphicsBoard.GetPowerLimit();

        public bool TrySetClocks(int gpu, int memory, int gpuVoltage = 0, int memoryVoltage = 0) =>
            GraphicsBoard.TrySetClocks(gpu, memory, gpuVoltage, memoryVoltage);
        public bool TryApplyOverclock() => GraphicsBoard.TryApplyOverclock();
        public bool TryApplySilent() => GraphicsBoard.TryApplySilent();
        public bool TryRestoreDefaults() => GraphicsBoard.TryRestoreDefaults();
        public ClockRange? GetGpuClock() => GraphicsBoard.GetGpuClock();
        public ClockRange? GetMemoryClock() => GraphicsBoard.GetMemoryClock();
        public Profile? GetProfile(uint subsystemId) => GraphicsBoard.GetProfile(subsystemId);
#pragma warning restore 1591
    }
}
