// A program that reads the temperature, and a test of it without the library.
using System;
using System.Collections.Generic;
using Gputune;

internal static class Program
{
    private static string Temperature(IGraphicsBoard board)
    {
        board.Start();
        board.Fetch();
        Reading? reading = board.GetReading(HwmKey.GpuTemperature);
        return reading.HasValue ? reading.Value.Name + ": " + reading.Value.Value : "none";
    }

    private static void Main()
    {
        try
        {
            Console.WriteLine(Temperature(new InstalledBoard()));
        }
        catch (PlatformNotSupportedException failure)
        {
            Console.WriteLine(failure.Message);
        }
        Console.WriteLine(Temperature(new Mock()));
    }

    private sealed class Mock : IGraphicsBoard
    {
        public bool IsReady => true;
        public Vendor Vendor => Vendor.Amd;
        public ApiType Api => ApiType.Overdrive8;
        public int? ActiveAdapter => 0;
        public int? FrameRate => null;
        public void Start(LogMode log) { }
        public bool TryStart(LogMode log) => true;
        public bool TrySelectAdapter(int index) => false;
        public Identity? GetIdentity() => new Identity { Name = "mock", BusNumber = 1 };
        public void Fetch() { }
        public Reading? GetReading(HwmKey key) => new Reading { Key = key, Name = "mock", Value = 41.5, Unit = "°C" };
        public IList<Reading> ReadSensors() => new List<Reading>();
        public bool TrySetFanSpeed(int percent) => false;
        public bool TrySetFanAutomatic() => false;
        public bool TrySetFanCurve(params FanTablePoint[] points) => false;
        public IList<FanPoint> GetFan() => null;
        public bool TrySetPowerLimit(int percent, int temperature) => false;
        public bool TryRestorePowerLimit() => false;
        public PowerLimit? GetPowerLimit() => null;
        public bool TrySetClocks(int gpu, int memory, int gpuVoltage, int memoryVoltage) => false;
        public bool TryApplyOverclock() => false;
        public bool TryApplySilent() => false;
        public bool TryRestoreDefaults() => false;
        public ClockRange? GetGpuClock() => null;
        public ClockRange? GetMemoryClock() => null;
        public Profile? GetProfile(uint subsystemId) => null;
    }
}
