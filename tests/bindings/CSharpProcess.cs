// CSharpProcess: what a program is told that uses the library without a start, in a process that cannot load it.
using System;
using Gputune;

internal static class CSharpProcess
{
    private static void Main()
    {
        try
        {
            Console.WriteLine("loaded: {0}", GraphicsBoard.IsReady);
        }
        catch (TypeInitializationException failure)
        {
            Console.WriteLine("{0}: {1}", failure.InnerException.GetType().Name, failure.InnerException.Message);
        }
        try
        {
            GraphicsBoard.CheckProcess();
        }
        catch (PlatformNotSupportedException failure)
        {
            Console.WriteLine(failure.Message);
        }
    }
}
