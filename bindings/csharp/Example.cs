// Shows the board and its sensors and, when a speed is given, sets the fan. With a board file, on a simulated board.
//
//     csc Gputune.cs Example.cs
//     Example.exe [fan speed in percent] [board file]
using System;
using System.Globalization;
using System.Runtime.InteropServices;
using System.Text;
using Gputune;

internal static class Example
{
    // gputune_sim.dll and its folders, beside the program.
    [DllImport("gputune_sim.dll", CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    private static extern int GputuneSim_Start(byte[] boardFile, byte[] error, int errorSize);

    private static void Simulate(string boardFile)
    {
        var error = new byte[512];
        if (GputuneSim_Start(Encoding.UTF8.GetBytes(boardFile + "\0"), error, error.Length) == 0)
            throw new ArgumentException(Encoding.UTF8.GetString(error).TrimEnd('\0'));
    }

    private static int Main(string[] arguments)
    {
        try
        {
            GraphicsBoard.CheckProcess();
            if (arguments.Length > 1)
                Simulate(arguments[1]);
            GraphicsBoard.Start();

            Identity? identity = GraphicsBoard.GetIdentity();
            Console.WriteLine(identity.HasValue ? identity.Value.Name : GraphicsBoard.Vendor + " graphics board");
            foreach (Reading reading in GraphicsBoard.ReadSensors())
                Console.WriteLine("  {0,-25} {1,9:F2} {2}", reading.Name, reading.Value, reading.Unit);

            if (arguments.Length > 0)
            {
                int percent = int.Parse(arguments[0], CultureInfo.InvariantCulture);
                if (!GraphicsBoard.TrySetFanSpeed(percent))
                    throw new Exception("the board refuses a fan speed of " + percent + " %");
                Console.WriteLine("Fan speed set to {0} %.", percent);
            }
            return 0;
        }
        catch (Exception failure)
        {
            Console.Error.WriteLine("error: " + failure.Message);
            return 1;
        }
    }
}
