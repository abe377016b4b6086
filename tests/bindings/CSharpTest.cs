// CSharpTest table: what Gputune.cs declares, in the form of header_table.py.
// CSharpTest calls: every function of Gputune.cs, called for real on this machine; the library is the one of echo.c.
using System;
using System.Collections.Generic;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using Gputune;

internal static class CSharpTest
{
    // ---- table ------------------------------------------------------------------------------------------------------

    private static readonly Dictionary<Type, string> TypeNames = new Dictionary<Type, string>
    {
        { typeof(void), "void" }, { typeof(bool), "bool" }, { typeof(byte), "uint8_t" }, { typeof(int), "int32_t" },
        { typeof(uint), "uint32_t" }, { typeof(ulong), "uint64_t" }, { typeof(float), "float" },
        { typeof(double), "double" },
    };

    private static string NameOf(Type type)
    {
        string name;
        return TypeNames.TryGetValue(type, out name) ? name : type.Name;
    }

    // A bool is one byte only when it is marshalled as that.
    private static void RequireByteSized(Type type, MarshalAsAttribute marshalling, string what)
    {
        if (type == typeof(bool) && (marshalling == null || marshalling.Value != UnmanagedType.I1))
            throw new Exception(what + " is not marshalled as one byte");
    }

    private static string FieldType(FieldInfo field)
    {
        var marshalling = field.GetCustomAttribute<MarshalAsAttribute>();
        RequireByteSized(field.FieldType, marshalling, field.DeclaringType.Name + "." + field.Name);
        if (field.FieldType == typeof(string))
            return "char[" + marshalling.SizeConst + "]";
        if (field.FieldType.IsArray)
            return NameOf(field.FieldType.GetElementType()) + "[" + marshalling.SizeConst + "]";
        return NameOf(field.FieldType);
    }

    private static string ArgumentName(Type type)
    {
        if (type.IsArray)
            return ArgumentName(type.GetElementType()) + "*";
        return type == typeof(int) ? "int" : NameOf(type);
    }

    private static string Signature(MethodInfo method)
    {
        var import = method.GetCustomAttribute<DllImportAttribute>();
        if (import.CallingConvention != CallingConvention.Cdecl || !import.ExactSpelling
            || import.Value != "gputune.dll")
            throw new Exception(method.Name + " is imported in another way");
        var marshalling = (MarshalAsAttribute)method.ReturnParameter
            .GetCustomAttributes(typeof(MarshalAsAttribute), false).SingleOrDefault();
        RequireByteSized(method.ReturnType, marshalling, method.Name);
        List<Type> types = method.GetParameters().Select(parameter => parameter.ParameterType).ToList();
        Type result = method.ReturnType;
        if (result == typeof(IntPtr))
        {
            // The storage of a record.
            result = types[0].GetElementType();
            types.RemoveAt(0);
        }
        return ArgumentName(result) + " " + method.Name + "(" + string.Join(", ", types.Select(ArgumentName)) + ")";
    }

    private static void PrintTable()
    {
        var records = new List<Type>(typeof(Native).GetNestedTypes(BindingFlags.NonPublic)) { typeof(FanTablePoint) };
        foreach (Type type in records)
        {
            Console.WriteLine("record {0} {1}", type.Name, Marshal.SizeOf(type));
            foreach (FieldInfo field in type.GetFields(BindingFlags.Instance | BindingFlags.Public))
                Console.WriteLine("field {0}.{1} {2} {3}", type.Name, field.Name, Marshal.OffsetOf(type, field.Name),
                    FieldType(field));
        }
        foreach (Type type in new[] { typeof(LogMode), typeof(Vendor), typeof(ApiType), typeof(HwmKey) })
            foreach (object value in Enum.GetValues(type))
                Console.WriteLine("enum {0}.{1} {2}", type.Name, value.ToString().ToUpperInvariant(), (int)value);
        foreach (MethodInfo method in typeof(Native).GetMethods(BindingFlags.Static | BindingFlags.NonPublic))
            Console.WriteLine("function " + Signature(method));
    }

    // ---- calls ------------------------------------------------------------------------------------------------------

    [DllImport("gputune.dll")]
    private static extern IntPtr LastCall();
    [DllImport("gputune.dll")]
    private static extern void Answer(int whether);
    [DllImport("gputune.dll")]
    private static extern void SetVendorInfo(int vendor, int api);

    private static int failures;

    private static void Expect(object found, object expected, string what)
    {
        if (!Equals(found, expected))
        {
            Console.WriteLine("{0}: expected {1}, found {2}", what, expected ?? "null", found ?? "null");
            ++failures;
        }
    }

    private static void ExpectCall(bool found, bool done, string call)
    {
        Expect(found, done, call);
        Expect(Marshal.PtrToStringAnsi(LastCall()), call, "last call");
    }

    private static void ExpectThrown<T>(Action action, string message) where T : Exception
    {
        try
        {
            action();
            Expect(null, message, "exception");
        }
        catch (T exception)
        {
            Expect(exception.Message.Contains(message), true, exception.Message);
        }
    }

    private static string Text(FanPoint point)
    {
        return string.Join(" ", new[] { point.DefaultSpeed, point.DefaultTemperature, point.MaxSpeed, point.MinSpeed,
            point.MaxTemperature, point.MinTemperature, point.CurrentSpeed, point.CurrentTemperature }
            .Select(value => value.HasValue ? value.ToString() : "-"));
    }

    private static string Text(ClockRange? range)
    {
        return string.Join(" ", new[] { range.Value.DefaultClock, range.Value.DefaultVoltage, range.Value.MaxClock,
            range.Value.MinClock, range.Value.MaxVoltage, range.Value.MinVoltage, range.Value.CurrentClock,
            range.Value.CurrentVoltage }.Select(value => value.HasValue ? value.ToString() : "-"));
    }

    private static void CallSetters(bool done)
    {
        ExpectCall(GraphicsBoard.TrySelectAdapter(5), done, "SetActiveAdapterIndex 5");
        ExpectCall(GraphicsBoard.TrySetFanSpeed(60), done, "SetFanSpeed 60");
        ExpectCall(GraphicsBoard.TrySetFanAutomatic(), done, "SetFanSpeed -1");
        ExpectCall(GraphicsBoard.TrySetFanCurve(new FanTablePoint(40, 20), new FanTablePoint(60, 45)), done,
            "SetFanSpeedTable 2 40:20 60:45");
        ExpectCall(GraphicsBoard.TrySetPowerLimit(10, 80), done, "SetPowerLimit 80 10");
        ExpectCall(GraphicsBoard.TryRestorePowerLimit(), done, "SetPowerLimitDefault");
        ExpectCall(GraphicsBoard.TrySetClocks(1400, 2000, 1100, 950), done, "SetPerformanceUser 1400 1100 2000 950");
        ExpectCall(GraphicsBoard.TryApplyOverclock(), done, "SetPerformanceOC");
        ExpectCall(GraphicsBoard.TryApplySilent(), done, "SetPerformanceSilent");
        ExpectCall(GraphicsBoard.TryRestoreDefaults(), done, "SetPerformanceDefault");
        ExpectCall(Native.InitVGAHelper(2), done, "InitVGAHelper 2");
        Expect(GraphicsBoard.IsReady, done, "IsReady");
    }

    private static void CallGetters()
    {
        Expect(GraphicsBoard.Vendor, Vendor.Amd, "vendor");
        Expect(GraphicsBoard.Api, ApiType.OverdriveN, "api");
        Expect(GraphicsBoard.ActiveAdapter, 3, "adapter");
        Expect(GraphicsBoard.FrameRate, 144, "frame rate");
        Identity identity = GraphicsBoard.GetIdentity().Value;
        Expect(identity.Name, "Echo", "name");
        Expect(identity.SubsystemId, 0x70011002U, "subsystem");
        Expect(identity.BusNumber, 7, "bus");

        IList<Reading> readings = GraphicsBoard.ReadSensors();
        Expect(Marshal.PtrToStringAnsi(LastCall()), "FetchHwmValues", "last call");
        Expect(readings.Count, 20, "readings");
        Expect(readings[2].Name, "Key 2", "name of reading");
        Expect(readings[2].Value, 2.5, "value of reading");
        Expect(readings[2].Unit, "\u00b0C", "unit of reading");
        Expect(readings[19].Key, HwmKey.TdpLimit, "last reading");
        Expect(GraphicsBoard.GetReading(HwmKey.TemperatureLimit).HasValue, false, "sensor without a reading");

        IList<FanPoint> fan = GraphicsBoard.GetFan();
        Expect(fan.Count, 2, "points");
        Expect(Text(fan[0]), "20 21 22 23 24 25 26 27", "first point");
        Expect(Text(fan[1]), "- - - - - - 30 -", "second point");

        PowerLimit limit = GraphicsBoard.GetPowerLimit().Value;
        Expect(limit.Default + " " + limit.Max + " " + limit.Min, "40 41 42", "power limit");
        Expect(limit.Current, null, "power limit in effect");
        Expect(Text(GraphicsBoard.GetGpuClock()), "50 51 52 53 54 55 56 -", "GPU clock");
        Expect(Text(GraphicsBoard.GetMemoryClock()), "60 61 62 63 64 65 66 67", "memory clock");

        Profile profile = GraphicsBoard.GetProfile(0xFFFF1002).Value;
        Expect(Marshal.PtrToStringAnsi(LastCall()), "GetExternalPerformanceParameter FFFF1002", "last call");
        Expect(string.Join(" ", profile.GpuOverclock, profile.GpuOverclockGiven, profile.MemoryOverclock,
            profile.MemoryOverclockGiven, profile.PowerOverclock, profile.GpuSilent, profile.MemorySilent,
            profile.PowerSilent, profile.Watt, profile.NewestVbios),
            "70.25 71.25 72.25 73.25 74.25 75.25 76.25 77.25 78 79", "profile");
    }

    private static void CallOnOtherBoards()
    {
        SetVendorInfo((int)Vendor.Amd, (int)ApiType.Overdrive8);
        Expect(GraphicsBoard.GetPowerLimit().Value.Current, -1, "power limit of -1 percent");
        var curve = new FanTablePoint[5];
        ExpectThrown<ArgumentException>(() => GraphicsBoard.TrySetFanCurve(curve.Take(4).ToArray()),
            "number of points");
        ExpectCall(GraphicsBoard.TrySetFanCurve(curve), true, "SetFanSpeedTable 5 0:0 0:0 0:0 0:0 0:0");
        ExpectThrown<ArgumentException>(() => GraphicsBoard.TrySetFanCurve(), "number of points");
        ExpectThrown<ArgumentNullException>(() => GraphicsBoard.TrySetFanCurve(null), "points");
        ExpectThrown<ArgumentOutOfRangeException>(() => GraphicsBoard.TrySetFanSpeed(-1), "0 to 100");
        ExpectThrown<ArgumentOutOfRangeException>(() => GraphicsBoard.TrySetFanSpeed(101), "0 to 100");
        Expect(GraphicsBoard.GetReading(HwmKey.GpuLoad).Value.Unit, "%", "unit of load");
        SetVendorInfo((int)Vendor.Intel, (int)ApiType.Igcl);
        Expect(GraphicsBoard.GetReading(HwmKey.GpuLoad).Value.Unit, "", "unit of an Intel board's load");
        SetVendorInfo((int)Vendor.Amd, (int)ApiType.OverdriveN);
    }

    private static void CallWithoutAnswers()
    {
        Answer(0);
        CallSetters(false);
        Expect(GraphicsBoard.ActiveAdapter, null, "adapter");
        Expect(GraphicsBoard.FrameRate, null, "frame rate");
        Expect(GraphicsBoard.GetIdentity().HasValue, false, "identity");
        Expect(GraphicsBoard.ReadSensors().Count, 0, "readings");
        Expect(GraphicsBoard.GetFan(), null, "fan");
        Expect(GraphicsBoard.GetPowerLimit().HasValue, false, "power limit");
        Expect(GraphicsBoard.GetGpuClock().HasValue, false, "GPU clock");
        Expect(GraphicsBoard.GetMemoryClock().HasValue, false, "memory clock");
        Expect(GraphicsBoard.GetProfile(1).HasValue, false, "profile");
    }

    // The file that a process of this width loads when these are there.
    private static string Chosen(int pointerSize, params string[] there)
    {
        string chosen = null;
        LibraryFile.Load("folder", pointerSize, file => Array.IndexOf(there, file) >= 0, file =>
        {
            chosen = file;
            return "";
        });
        return chosen;
    }

    private static void ChooseLibrary()
    {
        string beside = System.IO.Path.Combine("folder", "gputune.dll");
        string forX64 = System.IO.Path.Combine("folder", "x64", "gputune.dll");
        string packed32 = System.IO.Path.Combine("folder", "runtimes", "win-x86", "native", "gputune.dll");
        string packed64 = System.IO.Path.Combine("folder", "runtimes", "win-x64", "native", "gputune.dll");
        Expect(Chosen(4, beside, forX64), beside, "the library of a 32-bit process");
        Expect(Chosen(8, beside, forX64), forX64, "the library of a 64-bit process");
        Expect(Chosen(8, beside), beside, "the library of a 64-bit process, beside it");
        Expect(Chosen(4, packed32, packed64), packed32, "the library of a 32-bit process, from a package");
        Expect(Chosen(8, packed32, packed64), packed64, "the library of a 64-bit process, from a package");
        ExpectThrown<DllNotFoundException>(() => Chosen(4, forX64, packed64),
            "There is no 32-bit gputune.dll for this 32-bit process: " + packed32 + " or " + beside + ".");
        ExpectThrown<DllNotFoundException>(() => Chosen(8, packed32),
            "There is no 64-bit gputune.dll for this 64-bit process: " + forX64 + " or " + packed64 + " or " + beside + ".");
        ExpectThrown<DllNotFoundException>(() => LibraryFile.Load("folder", 8, file => true, file => "wrong width"),
            forX64 + " cannot be loaded by this 64-bit process, which needs the 64-bit gputune.dll: wrong width");
    }

    // The interface has every member of the static class but the check of the process, and the installed board is that class.
    private static void CompareInterface()
    {
        const BindingFlags statics = BindingFlags.Static | BindingFlags.Public;
        string[] expected = typeof(GraphicsBoard).GetMethods(statics).Where(method => method.Name != "CheckProcess")
            .Select(Describe).OrderBy(text => text).ToArray();
        string[] found = typeof(IGraphicsBoard).GetMethods().Select(Describe).OrderBy(text => text).ToArray();
        Expect(string.Join("\n", found), string.Join("\n", expected), "members of the interface");
        IGraphicsBoard board = new InstalledBoard();
        Expect(board.ReadSensors()[0].Name, "Key 0", "reading of the installed board");
        ExpectCall(board.TrySetPowerLimit(1, 2), true, "SetPowerLimit 2 1");
        ExpectCall(board.TrySetClocks(1, 2, 3, 4), true, "SetPerformanceUser 1 3 2 4");
        ExpectCall(board.TryApplySilent(), true, "SetPerformanceSilent");
    }

    private static string Describe(MethodInfo method)
    {
        return method.ReturnType + " " + method.Name + "("
            + string.Join(", ", method.GetParameters().Select(parameter => parameter + "=" + parameter.RawDefaultValue)) + ")";
    }

    private static int Main(string[] arguments)
    {
        if (arguments[0] == "table")
        {
            PrintTable();
            return 0;
        }
        ExpectThrown<PlatformNotSupportedException>(() => GraphicsBoard.Start(), "for Windows");
        ChooseLibrary();
        CallSetters(true);
        CallGetters();
        CallOnOtherBoards();
        CompareInterface();
        CallWithoutAnswers();
        Console.WriteLine("{0} failures", failures);
        return failures == 0 ? 0 : 1;
    }
}
