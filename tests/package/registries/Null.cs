// Null: which functions say that they may return null, where the framework has a word for it.
using System;
using System.Linq;
using Gputune;

namespace System.Diagnostics.CodeAnalysis
{
    // .NET's own, which Mono's framework lacks.
    [AttributeUsage(AttributeTargets.ReturnValue)]
    internal sealed class MaybeNullAttribute : Attribute
    {
    }
}

internal static class Null
{
    private static void Main()
    {
        var found = new[] { typeof(GraphicsBoard), typeof(IGraphicsBoard) }.SelectMany(type => type.GetMethods()).Where(method =>
            method.ReturnTypeCustomAttributes.GetCustomAttributes(false).Any(attribute =>
                attribute.GetType().Name == "MaybeNullAttribute")).Select(method => method.Name);
        Console.WriteLine(string.Join(" ", found));
    }
}
